#pragma once

/// @file
/// IGraphNode: one use of a node class inside a graph.

#include <cstddef>
#include <memory>

#include "mat/Common.h"

namespace mat {

class INodeClass;
class IValue;

/// A node of a graph: a class, one record per input of that class (a connection and a
/// default), a name, a UUID and an editor position. A node does not know its graph:
/// connections are indices into the node list of the graph that holds it.
/// Nodes live as long as their graph.
class IGraphNode {
 public:
  virtual ~IGraphNode() = default;
  /// @return The node's identity.
  virtual const UUID& GetUUID() const = 0;
  /// @return The node's name; "GraphInputs" and "GraphOutputs" for the special nodes.
  virtual const char* GetName() const = 0;
  /// @return What the node is.
  virtual NodeKind GetNodeKind() const = 0;
  /// Reads the connection of input @p index.
  /// @return False when @p index has no record or the input is not connected. Otherwise
  ///     writes the source node's index in the graph and the source output's index in
  ///     that node's class through whichever pointer is not null, and returns true.
  virtual bool GetInputConnection(size_t index, size_t* sourceNode, size_t* sourceOutput) const = 0;
  /// @return The node's class, shared with its library (or, for the special nodes, with
  ///     the graph).
  virtual std::shared_ptr<const INodeClass> GetNodeClass() const = 0;
  /// @return The default set on input @p index of this node, or null when none is set or
  ///     @p index has no record. Owned by the node.
  virtual const IValue* GetInputDefault(size_t index) const = 0;
  /// Writes the editor position to @p *x and @p *y.
  /// @pre Both pointers are valid.
  virtual void GetEditorPosition(float* x, float* y) const = 0;
};

}  // namespace mat
