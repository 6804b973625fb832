#pragma once

/// @file
/// IPortPath: names an input or output somewhere inside nested graphs.

#include <cstddef>

namespace mat {

/// A list of node indices leading from a graph down through nested graphs (outermost
/// first), and the input or output reached at the end. Made by createPortPath(),
/// released by releasePortPath(). The path checks nothing; its consumers do.
class IPortPath {
 public:
  virtual ~IPortPath() = default;
  /// Appends a node index; any value is accepted.
  virtual void AppendNodeIndex(size_t index) = 0;
  /// The path ends at the input @p name (copied). @pre @p name is not null.
  virtual void SetInputPort(const char* name) = 0;
  /// The path ends at the output @p name (copied). @pre @p name is not null.
  virtual void SetOutputPort(const char* name) = 0;
  /// @return True when the path ends at an input.
  virtual bool IsInputPort() const = 0;
  /// @return True when the path ends at an output (the state of a new path).
  virtual bool IsOutputPort() const = 0;
  /// @return The port name, never null; valid until the next SetInputPort() or
  ///     SetOutputPort() or the path's release.
  virtual const char* GetPortName() const = 0;
  /// @return The number of node indices.
  virtual size_t GetNodeIndexCount() const = 0;
  /// @return The node index at @p position (0 is the outermost).
  /// @pre @p position < GetNodeIndexCount().
  virtual size_t GetNodeIndex(size_t position) const = 0;
};

}  // namespace mat
