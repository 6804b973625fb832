#pragma once

#include <picojson.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "graph/GraphNode.h"
#include "mat/IGraph.h"
#include "model/Parameter.h"

namespace mat {

class Graph;

// The class of a graph's input node: the graph's inputs are both its inputs and its
// outputs, so nodes inside connect to a graph input as to an output of the input node.
class GraphInputNodeClass final : public INodeClass {
 public:
  explicit GraphInputNodeClass(const Graph& graph);
  const IGraphLibrary* GetLibrary() const override;
  const UUID& GetUUID() const override { return uuid_; }
  const char* GetName() const override { return "GraphInputs"; }
  size_t GetInputCount() const override;
  const IParameter* GetInput(size_t index) const override;
  bool FindInput(const char* name, size_t* index) const override;
  size_t GetOutputCount() const override { return GetInputCount(); }
  const IParameter* GetOutput(size_t index) const override { return GetInput(index); }
  bool FindOutput(const char* name, size_t* index) const override { return FindInput(name, index); }
  bool IsGraph() const override { return false; }
  std::shared_ptr<const IGraph> AsGraph() const override { return nullptr; }

 private:
  const Graph& graph_;
  UUID uuid_;
};

// The class of a graph's output node: the graph's outputs are both its inputs and its
// outputs, so the connections into the output node are the graph's outputs.
class GraphOutputNodeClass final : public INodeClass {
 public:
  explicit GraphOutputNodeClass(const Graph& graph);
  const IGraphLibrary* GetLibrary() const override;
  const UUID& GetUUID() const override { return uuid_; }
  const char* GetName() const override { return "GraphOutputs"; }
  size_t GetInputCount() const override;
  const IParameter* GetInput(size_t index) const override;
  bool FindInput(const char* name, size_t* index) const override;
  size_t GetOutputCount() const override { return GetInputCount(); }
  const IParameter* GetOutput(size_t index) const override { return GetInput(index); }
  bool FindOutput(const char* name, size_t* index) const override { return FindInput(name, index); }
  bool IsGraph() const override { return false; }
  std::shared_ptr<const IGraph> AsGraph() const override { return nullptr; }

 private:
  const Graph& graph_;
  UUID uuid_;
};

// The one implementation of IGraph. Node 0 is the input node, node 1 the output node.
// Read from a file in two passes (the constructor, then ReadConnections), made empty or
// copied for a graph factory, which then edits it through the mutable accessors.
class Graph final : public IGraph {
 public:
  // First pass of reading: name, inputs, outputs and the nodes without their classes.
  // Throws InputFileParsingException.
  Graph(const UUID& uuid, const picojson::object& item, const IGraphLibrary* library);
  // A new empty graph; the nil UUID is replaced by a random one.
  Graph(const char* name, const UUID& uuid, const IGraphLibrary* library);
  // A copy with new UUIDs for the graph and its nodes; every node keeps its index, so
  // every connection stays valid. The defaults of the special nodes are not copied.
  Graph(const Graph& other);
  Graph& operator=(const Graph&) = delete;

  // Second pass of reading, with the same object the constructor read (the first pass
  // keeps pointers into it): the nodes' classes, then their inputs and the graph outputs'
  // connections. Throws InputFileParsingException or InvalidDataAccess.
  // `cache` may be shared by the graphs of one load.
  void ReadConnections(const picojson::object& item, NodeClassCache* cache = nullptr);

  const IGraphLibrary* GetLibrary() const override { return library_; }
  const UUID& GetUUID() const override { return uuid_; }
  const char* GetName() const override { return name_.c_str(); }
  size_t GetInputCount() const override { return inputs_.items.size(); }
  const IParameter* GetInput(size_t index) const override;
  bool FindInput(const char* name, size_t* index) const override {
    return inputs_.Find(name, index);
  }
  size_t GetOutputCount() const override { return outputs_.items.size(); }
  const IParameter* GetOutput(size_t index) const override;
  bool FindOutput(const char* name, size_t* index) const override {
    return outputs_.Find(name, index);
  }
  bool IsGraph() const override { return true; }
  std::shared_ptr<const IGraph> AsGraph() const override;
  size_t GetNodeCount() const override { return nodes_.size(); }
  const IGraphNode* GetNode(size_t index) const override { return &GetGraphNode(index); }
  size_t GetInputNodeIndex() const override { return 0; }
  size_t GetOutputNodeIndex() const override { return 1; }
  const IParameter* GetParameterFromPath(const IPortPath& path,
                                         const IGraphNode** node) const override;

  // The index of the node with `uuid`. Throws InvalidDataAccess "Node not present".
  size_t FindNodeIndex(const UUID& uuid) const;
  // The node at `index`. Throws InvalidDataAccess naming the index and the count.
  const GraphNode& GetGraphNode(size_t index) const;
  void SetName(const char* name) { name_ = name != nullptr ? name : ""; }

  // For a graph factory: the lists it edits, and the node list changes that keep the
  // index by UUID in step. Connections are the factory's to renumber.
  ParameterList& Inputs() { return inputs_; }
  ParameterList& Outputs() { return outputs_; }
  const std::vector<std::shared_ptr<GraphNode>>& Nodes() const { return nodes_; }
  GraphNode& MutableNode(size_t index) { return *nodes_[index]; }
  // Appends `node` and returns its index. Cost: O(log n).
  size_t AppendNode(std::shared_ptr<GraphNode> node);
  // Erases the node at `index`; later nodes move down by one. Cost: O(n).
  void EraseNode(size_t index);
  // Puts `node` in place of the node at `index`. Cost: O(log n).
  void ReplaceNodeAt(size_t index, std::shared_ptr<GraphNode> node);
  void RebuildNodeIndex();
  // Drops every node, the special ones included, for a load that is being refused: nodes
  // share ownership of their classes, so graphs that nest one another would otherwise
  // keep one another alive. The graph is unusable afterwards.
  void DropNodes() {
    nodes_.clear();
    nodeIndex_.clear();
  }
  // The index of the node behind a handle, or false when it is not a node of this graph.
  bool IndexOfNode(const IGraphNode* node, size_t* index) const;

 private:
  void MakeSpecialNodes();

  const IGraphLibrary* library_;
  std::shared_ptr<GraphOutputNodeClass> outputNodeClass_;
  std::shared_ptr<GraphInputNodeClass> inputNodeClass_;
  UUID uuid_;
  std::string name_;
  ParameterList inputs_;
  ParameterList outputs_;
  std::vector<std::shared_ptr<GraphNode>> nodes_;
  std::map<UUID, size_t> nodeIndex_;
  // Between the two passes of reading: the members of each node object of the file, in
  // file order, so that the second pass does not look them up again.
  std::vector<NodeMembers> pendingNodes_;
};

// Writes the JSON object of a graph item: "content", "desc", "input", "nodes", "output"
// (with the "from" of each connected output) and "uuid".
void writeGraph(JsonTextWriter& writer, const IGraph* graph);
picojson::object saveGraph(const IGraph* graph);

// Writes the "nodes" array of a graph: every node but the two special ones, in index order.
void writeGraphNodes(JsonTextWriter& writer, const IGraph* graph);

}  // namespace mat
