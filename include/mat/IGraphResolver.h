#pragma once

/// @file
/// IGraphResolver: follows node inputs upstream, through nested graphs or one level.

#include <cstddef>
#include <memory>

#include "mat/Common.h"

namespace mat {

class IGraphNode;
class INodeClass;
class IPortPath;
class IValue;

/// Answers questions about the nodes of one graph. A flattening resolver treats every
/// nested graph as expanded in place: each instance of a nested graph comes into being
/// the first time an operation reaches it and keeps its number and its range of flat
/// node numbers for the resolver's life. A one-level resolver treats a nested-graph
/// node like any other node and uses instance 0 only.
///
/// Made by createGraphResolver(), released by releaseGraphResolver(). The graph, and
/// every graph nested in it, must outlive the resolver. A flattening resolver changes
/// its own tables as it works: use one resolver from one thread at a time.
///
/// Keys whose instance or node is out of range throw InvalidDataAccess naming the key.
class IGraphResolver {
 public:
  virtual ~IGraphResolver() = default;
  /// @return {0, @p node}: a node of the resolver's own graph.
  virtual NodeKey GetKeyFromNodeIndex(size_t node) const = 0;
  /// Turns the node indices of @p path into a key (its port is ignored); a path without
  /// indices gives {0, 0}.
  /// @throws std::runtime_error "Can't drill into non-graph node!" when a position after
  ///     the first follows a node whose class is not a graph;
  ///     std::runtime_error "GetKeyFromPath not implemented for non-flattened graphs!"
  ///     on a one-level resolver; InvalidDataAccess for an index beyond a graph's nodes.
  virtual NodeKey GetKeyFromPath(const IPortPath& path) = 0;
  /// @return The node's number in the flattened view (one-level: @p key.node).
  ///     Cost: O(1).
  virtual size_t GetFlatIndex(NodeKey key) const = 0;
  /// Follows input @p input of the node @p key upstream until it reaches an output of an
  /// ordinary node (or, one-level, of any node) or an input of the resolver's own graph.
  /// A connection from a graph's output node continues at whatever feeds that output.
  /// @return True with @p *sourceKey and @p *sourceOutput set when a source is found
  ///     (one-level: either pointer may be null). False when the chain ends at an
  ///     unconnected input; @p *defaultValue is then the default that applies, or null.
  ///     @p *defaultValue is null whenever the result is true.
  /// @throws std::runtime_error "Connection cycle at node key {i, n}" for a ring of
  ///     connections through graph boundaries.
  virtual bool ResolveInput(NodeKey key, size_t input, NodeKey* sourceKey, size_t* sourceOutput,
                            const IValue** defaultValue) = 0;
  /// @return The node that @p key names, owned by its graph.
  virtual const IGraphNode* GetNode(NodeKey key) const = 0;
  /// @return True when @p key names a node of the resolver's own graph.
  virtual bool IsInRootGraph(NodeKey key) const = 0;
  /// @return GetNode(@p key)->GetNodeKind().
  virtual NodeKind GetNodeKind(NodeKey key) const = 0;
  /// @return GetNode(@p key)->GetNodeClass().
  virtual std::shared_ptr<const INodeClass> GetNodeClass(NodeKey key) const = 0;
};

}  // namespace mat
