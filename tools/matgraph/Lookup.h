#pragma once

// Finding what a user names on the command line: a graph by name or UUID, a node by name,
// UUID or index (a path of them through nested graphs, separated by "/"), an input by name
// or index. What is not found is a ToolError MG306 that lists what there is.

#include <memory>
#include <string>
#include <vector>

#include "Inputs.h"
#include "mat/IGraph.h"

namespace mat {
class IGraphResolver;
}

namespace matgraph {

// The graph that `nameOrUUID` names: a UUID is looked up along the chain; a name in the
// library first, then in the parents, nearest first.
std::shared_ptr<const mat::IGraph> findGraph(const mat::IGraphLibrary& library,
                                             const ParentChain& parents,
                                             const std::string& nameOrUUID);

// A node reached from `graph` through nested graphs: the index of each node on the way,
// the last one the node itself, and the graph that holds it.
struct NodePath {
  std::vector<size_t> indices;
  const mat::IGraph* graph = nullptr;  // holds the last node; kept alive by `root`
};
// `path` is "name", "name/inner" and so on; each step a node name, UUID or index.
NodePath findNode(const mat::IGraph& root, const std::string& path);

// The index of the input of `nodeClass` that `nameOrIndex` names.
size_t findInput(const mat::INodeClass& nodeClass, const std::string& nameOrIndex);

// The resolver's key of the node at `indices` (one index per nesting level).
mat::NodeKey keyOf(mat::IGraphResolver& resolver, const std::vector<size_t>& indices);

}  // namespace matgraph
