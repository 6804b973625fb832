#include "graph/Graph.h"

#include "core/JsonMembers.h"
#include "core/JsonTextWriter.h"
#include "core/LoadTrail.h"
#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "mat/IPortPath.h"
#include "model/NodeClass.h"
#include "model/Type.h"

namespace mat {

GraphInputNodeClass::GraphInputNodeClass(const Graph& graph)
    : graph_(graph), uuid_(generateUUID()) {}
const IGraphLibrary* GraphInputNodeClass::GetLibrary() const { return graph_.GetLibrary(); }
size_t GraphInputNodeClass::GetInputCount() const { return graph_.GetInputCount(); }
const IParameter* GraphInputNodeClass::GetInput(size_t index) const {
  return graph_.GetInput(index);
}
bool GraphInputNodeClass::FindInput(const char* name, size_t* index) const {
  return graph_.FindInput(name, index);
}

GraphOutputNodeClass::GraphOutputNodeClass(const Graph& graph)
    : graph_(graph), uuid_(generateUUID()) {}
const IGraphLibrary* GraphOutputNodeClass::GetLibrary() const { return graph_.GetLibrary(); }
size_t GraphOutputNodeClass::GetInputCount() const { return graph_.GetOutputCount(); }
const IParameter* GraphOutputNodeClass::GetInput(size_t index) const {
  return graph_.GetOutput(index);
}
bool GraphOutputNodeClass::FindInput(const char* name, size_t* index) const {
  return graph_.FindOutput(name, index);
}

Graph::Graph(const UUID& uuid, const picojson::object& item, const IGraphLibrary* library)
    : library_(library), uuid_(uuid) {
  nodes_.resize(2);  // places of the input and output nodes
  for (const auto& [key, value] : item) {
    TrailStep step(key);
    if (key == "desc") {
      name_ = readDesc(value);
    } else if (key == "input") {
      if (!value.is<picojson::array>()) throw InputFileParsingException("Invalid type for inputs");
      readParameters(inputs_, value.get<picojson::array>(), library, "input");
    } else if (key == "nodes") {
      if (!value.is<picojson::array>()) {
        throw InputFileParsingException("Graph " + uuidText(uuid_) +
                                        ": member \"nodes\" is not an array");
      }
      const picojson::array& nodes = value.get<picojson::array>();
      // The nodes read from a file share one block, in file order, so that a walk over the
      // graph reads memory in order; each entry of nodes_ shares ownership of the block.
      auto block = std::make_shared<std::vector<GraphNode>>();
      block->reserve(nodes.size());
      nodes_.reserve(nodes.size() + 2);
      pendingNodes_.reserve(nodes.size());
      for (size_t k = 0; k < nodes.size(); ++k) {
        TrailStep nodeStep(k);
        const picojson::value& element = nodes[k];
        if (!element.is<picojson::object>()) throw InputFileParsingException("Expected object");
        const NodeMembers members = NodeMembers::Collect(element.get<picojson::object>());
        if (members.uuid == nullptr || !members.uuid->second.is<std::string>()) {
          appendTrailStep("uuid");
          throw InputFileParsingException("Value not found in object");
        }
        const UUID nodeUUID = uuidFromText(members.uuid->second.get<std::string>());
        if (!nodeIndex_.emplace(nodeUUID, nodes_.size()).second) {
          throw InputFileParsingException("Graph " + uuidText(uuid_) + ": two nodes with UUID " +
                                          uuidText(nodeUUID));
        }
        block->emplace_back(nodeUUID, members);
        nodes_.push_back(std::shared_ptr<GraphNode>(block, &block->back()));
        pendingNodes_.push_back(members);
      }
    } else if (key == "output") {
      if (!value.is<picojson::array>()) throw InputFileParsingException("Invalid type for output");
      readParameters(outputs_, value.get<picojson::array>(), library, "output");
    }
  }
  MakeSpecialNodes();
}

Graph::Graph(const char* name, const UUID& uuid, const IGraphLibrary* library)
    : library_(library), uuid_(uuid == UUID{} ? generateUUID() : uuid), name_(name ? name : "") {
  nodes_.resize(2);
  MakeSpecialNodes();
}

Graph::Graph(const Graph& other)
    : IGraph(),
      library_(other.library_),
      uuid_(generateUUID()),
      name_(other.name_),
      inputs_(other.inputs_),
      outputs_(other.outputs_) {
  nodes_.reserve(other.nodes_.size());
  nodes_.resize(2);
  for (size_t i = 2; i < other.nodes_.size(); ++i) nodes_.push_back(other.nodes_[i]->Clone());
  MakeSpecialNodes();
  // The graph outputs keep their connections by index; the output node's defaults are
  // its own and stay behind.
  const auto& sourceRecords = other.nodes_[GetOutputNodeIndex()]->Inputs();
  auto& records = nodes_[GetOutputNodeIndex()]->Inputs();
  for (size_t i = 0; i < records.size() && i < sourceRecords.size(); ++i) {
    if (!sourceRecords[i].connected) continue;
    records[i].connected = true;
    records[i].sourceNode = sourceRecords[i].sourceNode;
    records[i].sourceOutput = sourceRecords[i].sourceOutput;
  }
}

void Graph::MakeSpecialNodes() {
  outputNodeClass_ = std::make_shared<GraphOutputNodeClass>(*this);
  inputNodeClass_ = std::make_shared<GraphInputNodeClass>(*this);
  nodes_[0] = std::make_shared<GraphNode>(generateUUID(), GraphInputNode, inputNodeClass_);
  nodes_[1] = std::make_shared<GraphNode>(generateUUID(), GraphOutputNode, outputNodeClass_);
  RebuildNodeIndex();
}

void Graph::RebuildNodeIndex() {
  nodeIndex_.clear();
  for (size_t i = 0; i < nodes_.size(); ++i) nodeIndex_.emplace(nodes_[i]->GetUUID(), i);
}

size_t Graph::AppendNode(std::shared_ptr<GraphNode> node) {
  const size_t index = nodes_.size();
  nodeIndex_[node->GetUUID()] = index;
  nodes_.push_back(std::move(node));
  return index;
}

void Graph::EraseNode(size_t index) {
  nodeIndex_.erase(nodes_[index]->GetUUID());
  nodes_.erase(nodes_.begin() + static_cast<std::ptrdiff_t>(index));
  for (auto& [uuid, position] : nodeIndex_) {
    if (position > index) --position;
  }
}

void Graph::ReplaceNodeAt(size_t index, std::shared_ptr<GraphNode> node) {
  nodeIndex_.erase(nodes_[index]->GetUUID());
  nodeIndex_[node->GetUUID()] = index;
  nodes_[index] = std::move(node);
}

void Graph::ReadConnections(const picojson::object& item, NodeClassCache* cache) {
  // Node k of the file sits at index k + 2: the first pass refused repeated UUIDs.
  const auto nodesMember = item.find("nodes");
  if (nodesMember != item.end()) {
    TrailStep step(nodesMember->first);
    for (size_t k = 0; k < pendingNodes_.size(); ++k) {
      TrailStep nodeStep(k);
      nodes_[k + 2]->ReadNodeClass(pendingNodes_[k], library_, cache);
    }
  }
  // Every class is known before any input is read, so a connection may name a node that
  // comes later in the list.
  for (const auto& [key, value] : item) {
    TrailStep step(key);
    if (key == "nodes") {
      for (size_t k = 0; k < pendingNodes_.size(); ++k) {
        TrailStep nodeStep(k);
        nodes_[k + 2]->ReadInputs(pendingNodes_[k], *this);
      }
    } else if (key == "output") {
      nodes_[GetOutputNodeIndex()]->ReadOutputConnections(value.get<picojson::array>(), *this);
    }
  }
  pendingNodes_ = std::vector<NodeMembers>();
}

const IParameter* Graph::GetInput(size_t index) const {
  return parameterAt(inputs_, index, "Input Index out of range");
}

const IParameter* Graph::GetOutput(size_t index) const {
  return parameterAt(outputs_, index, "Output Index out of range");
}

std::shared_ptr<const IGraph> Graph::AsGraph() const {
  return std::static_pointer_cast<const IGraph>(shared_from_this());
}

const GraphNode& Graph::GetGraphNode(size_t index) const {
  if (index >= nodes_.size()) {
    throw InvalidDataAccess("Node index " + std::to_string(index) + " out of range (count " +
                            std::to_string(nodes_.size()) + ")");
  }
  return *nodes_[index];
}

size_t Graph::FindNodeIndex(const UUID& uuid) const {
  const auto found = nodeIndex_.find(uuid);
  if (found == nodeIndex_.end() || found->second >= nodes_.size()) {
    throw InvalidDataAccess("Node not present");
  }
  return found->second;
}

bool Graph::IndexOfNode(const IGraphNode* node, size_t* index) const {
  if (node == nullptr) return false;
  const auto found = nodeIndex_.find(node->GetUUID());
  if (found == nodeIndex_.end() || nodes_[found->second].get() != node) return false;
  *index = found->second;
  return true;
}

const IParameter* Graph::GetParameterFromPath(const IPortPath& path,
                                              const IGraphNode** node) const {
  const INodeClass* currentClass = this;
  std::shared_ptr<const INodeClass> holder;  // keeps the class reached alive meanwhile
  const IGraphNode* currentNode = nullptr;
  for (size_t position = 0; position < path.GetNodeIndexCount(); ++position) {
    if (!currentClass->IsGraph()) {
      throw InvalidDataAccess("Can only move on to nodes within a graph!");
    }
    const auto& graph = static_cast<const IGraph&>(*currentClass);
    const size_t index = path.GetNodeIndex(position);
    if (index >= graph.GetNodeCount()) {
      throw InvalidDataAccess("Path position " + std::to_string(position) + ": node index " +
                              std::to_string(index) + " out of range (count " +
                              std::to_string(graph.GetNodeCount()) + ")");
    }
    currentNode = graph.GetNode(index);
    holder = currentNode->GetNodeClass();
    currentClass = holder.get();
  }
  size_t index = 0;
  const IParameter* parameter = nullptr;
  if (path.IsInputPort()) {
    if (!currentClass->FindInput(path.GetPortName(), &index)) {
      throw InvalidDataAccess("Node does not have input of that name!");
    }
    parameter = currentClass->GetInput(index);
  } else {
    if (!currentClass->FindOutput(path.GetPortName(), &index)) {
      throw InvalidDataAccess("Node does not have output of that name!");
    }
    parameter = currentClass->GetOutput(index);
  }
  if (node != nullptr) *node = currentNode;
  return parameter;
}

void writeGraphNodes(JsonTextWriter& writer, const IGraph* graph) {
  writer.BeginArray(true);
  for (size_t i = 0; i < graph->GetNodeCount(); ++i) {
    if (i == graph->GetInputNodeIndex() || i == graph->GetOutputNodeIndex()) continue;
    writer.NextElement();
    writeGraphNode(writer, graph->GetNode(i), graph);
  }
  writer.EndArray();
}

void writeGraph(JsonTextWriter& writer, const IGraph* graph) {
  writer.BeginObject();
  writer.Key("content");
  writer.String("graph");
  writeDesc(writer, graph->GetName());
  if (graph->GetInputCount() > 0) {
    writer.Key("input");
    writeParameters(writer, graph, ParameterSide::Input);
  }
  writer.Key("nodes");
  writeGraphNodes(writer, graph);
  if (graph->GetOutputCount() > 0) {
    writer.Key("output");
    writeParameters(writer, graph, ParameterSide::Output);
  }
  writer.Key("uuid");
  writer.String(uuidText(graph->GetUUID()));
  writer.EndObject();
}

picojson::object saveGraph(const IGraph* graph) {
  return writtenObject([&](JsonTextWriter& writer) { writeGraph(writer, graph); });
}

}  // namespace mat
