#pragma once

#include <cstddef>
#include <vector>

#include "mat/IGraph.h"
#include "mat/IGraphNode.h"
#include "mat/IGraphResolver.h"

namespace mat {

// The flattened view of a graph: nested graphs are expanded in place, each
// instance of a nested graph made the first time an operation reaches it.
// Instances keep their number and their range of flat node numbers for the
// resolver's life.
class GraphResolver final : public IGraphResolver {
 public:
  explicit GraphResolver(const IGraph& graph);

  NodeKey GetKeyFromNodeIndex(size_t node) const override { return {0, node}; }
  NodeKey GetKeyFromPath(const IPortPath& path) override;
  size_t GetFlatIndex(NodeKey key) const override;
  bool ResolveInput(NodeKey key, size_t input, NodeKey* sourceKey, size_t* sourceOutput,
                    const IValue** defaultValue) override;
  const IGraphNode* GetNode(NodeKey key) const override;
  bool IsInRootGraph(NodeKey key) const override { return key.instance == 0; }
  NodeKind GetNodeKind(NodeKey key) const override { return GetNode(key)->GetNodeKind(); }
  std::shared_ptr<const INodeClass> GetNodeClass(NodeKey key) const override {
    return GetNode(key)->GetNodeClass();
  }

  size_t GetInstanceCount() const { return instances_.size(); }

 private:
  struct GraphInstance {
    const IGraph* graph;
    size_t parentInstance;  // the instance holding the node it was entered through
    size_t parentNode;      // that node's index in the parent instance's graph
    size_t firstFlatIndex;  // flat number of the instance's node 0
  };

  // The instance entered through the nested-graph node `key`, made on first
  // use.
  size_t Enter(NodeKey key);
  // The instance of `key`, after checking that the key names a node.
  const GraphInstance& InstanceOf(NodeKey key) const;

  std::vector<GraphInstance> instances_;
  // For each flat node number, the instance entered through that node, or
  // noInstance. Positional, so a step into a nested graph that was entered
  // before costs one read.
  std::vector<size_t> enteredInstances_;
};

// One level only: a node whose class is a graph is a node like any other.
class SingleGraphResolver final : public IGraphResolver {
 public:
  explicit SingleGraphResolver(const IGraph& graph) : graph_(graph) {}

  NodeKey GetKeyFromNodeIndex(size_t node) const override { return {0, node}; }
  NodeKey GetKeyFromPath(const IPortPath& path) override;
  size_t GetFlatIndex(NodeKey key) const override;
  bool ResolveInput(NodeKey key, size_t input, NodeKey* sourceKey, size_t* sourceOutput,
                    const IValue** defaultValue) override;
  const IGraphNode* GetNode(NodeKey key) const override;
  bool IsInRootGraph(NodeKey) const override { return true; }
  NodeKind GetNodeKind(NodeKey key) const override { return GetNode(key)->GetNodeKind(); }
  std::shared_ptr<const INodeClass> GetNodeClass(NodeKey key) const override {
    return GetNode(key)->GetNodeClass();
  }

 private:
  const IGraph& graph_;
};

}  // namespace mat
