#pragma once

/// @file
/// IGraph: a node class whose inner working is a set of connected nodes.

#include <cstddef>

#include "mat/INodeClass.h"

namespace mat {

class IGraphNode;
class IPortPath;

/// A graph: a node class with nodes. Node 0 is the input node (its outputs are the
/// graph's inputs), node 1 the output node (its inputs are the graph's outputs); other
/// nodes follow in the order in which they were read or added.
///
/// A finished graph never changes; every operation is const and may be called from
/// several threads at once. Nodes live as long as the graph.
class IGraph : public INodeClass {
 public:
  /// @return The number of nodes, the two special nodes included (at least 2).
  virtual size_t GetNodeCount() const = 0;
  /// @return The node at @p index, owned by the graph.
  /// @throws InvalidDataAccess when @p index >= GetNodeCount(), naming both.
  virtual const IGraphNode* GetNode(size_t index) const = 0;
  /// @return 0, the index of the input node.
  virtual size_t GetInputNodeIndex() const = 0;
  /// @return 1, the index of the output node.
  virtual size_t GetOutputNodeIndex() const = 0;
  /// Follows @p path from this graph down through nested graphs to the input or output
  /// it names.
  /// @param path The node indices to follow, outermost first, and the port at the end.
  /// @param node Receives the last node of the path (null for a path without node
  ///     indices); written only when a parameter is returned.
  /// @return The parameter, owned by the class reached.
  /// @throws InvalidDataAccess "Can only move on to nodes within a graph!" when the path
  ///     steps into a node whose class is not a graph; "Node does not have input of that
  ///     name!" / "Node does not have output of that name!" when the port is missing;
  ///     a message naming the path position when a node index is out of range.
  virtual const IParameter* GetParameterFromPath(const IPortPath& path,
                                                 const IGraphNode** node) const = 0;
};

}  // namespace mat
