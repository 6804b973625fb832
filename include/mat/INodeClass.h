#pragma once

/// @file
/// INodeClass: the signature of a kind of node. Graphs are node classes too.

#include <cstddef>
#include <memory>

#include "mat/Common.h"

namespace mat {

class IGraph;
class IGraphLibrary;
class IParameter;

/// An ordered list of named, typed inputs and an ordered list of named, typed outputs.
///
/// Node classes and graphs are handed out as shared pointers; a node class outlives its
/// library while the host holds it, but its GetLibrary() and the types it refers to do not.
/// Every operation is const and safe to call from several threads at once.
class INodeClass : public std::enable_shared_from_this<INodeClass> {
 public:
  virtual ~INodeClass() = default;
  /// @return The library the class was read into (for a graph: the library that holds
  ///     it). Not owned; valid while that library lives.
  virtual const IGraphLibrary* GetLibrary() const = 0;
  /// @return The class's identity.
  virtual const UUID& GetUUID() const = 0;
  /// @return The class's name; the empty text when it has none.
  virtual const char* GetName() const = 0;

  /// @name Inputs
  /// @{

  /// @return The number of inputs.
  virtual size_t GetInputCount() const = 0;
  /// @return The input at @p index, owned by the class.
  /// @throws InvalidDataAccess "Input Index out of range" when @p index >= GetInputCount().
  virtual const IParameter* GetInput(size_t index) const = 0;
  /// Finds an input by its exact, case-sensitive name; with repeated names, the last.
  /// @return True when found; then its position is stored through @p index unless
  ///     @p index is null. False (and @p index untouched) when not found or @p name is null.
  virtual bool FindInput(const char* name, size_t* index) const = 0;
  /// @}

  /// @name Outputs
  /// @{

  /// @return The number of outputs.
  virtual size_t GetOutputCount() const = 0;
  /// @return The output at @p index, owned by the class.
  /// @throws InvalidDataAccess "Output Index out of range" when @p index >= GetOutputCount().
  virtual const IParameter* GetOutput(size_t index) const = 0;
  /// As FindInput(), among the outputs.
  virtual bool FindOutput(const char* name, size_t* index) const = 0;
  /// @}

  /// @return True only for graphs; false for node classes read from files and for the
  ///     classes of a graph's own input and output nodes.
  virtual bool IsGraph() const = 0;
  /// @return For a graph, a shared pointer to itself; otherwise an empty pointer.
  /// @throws std::bad_weak_ptr for a graph that no shared pointer holds.
  virtual std::shared_ptr<const IGraph> AsGraph() const = 0;
};

}  // namespace mat
