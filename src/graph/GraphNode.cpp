#include "graph/GraphNode.h"

#include <cstring>

#include "core/JsonMembers.h"
#include "core/JsonTextWriter.h"
#include "core/LoadTrail.h"
#include "graph/Graph.h"
#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "mat/IGraphLibrary.h"
#include "mat/IParameter.h"
#include "model/Type.h"

namespace mat {
namespace {

// A "from" pair: [source node UUID text, output name].
struct ConnectionSource {
  UUID node;
  const std::string& output;
};

ConnectionSource readConnectionSource(const picojson::value& from) {
  if (from.is<picojson::array>()) {
    const picojson::array& pair = from.get<picojson::array>();
    if (pair.size() == 2 && pair[0].is<std::string>() && pair[1].is<std::string>()) {
      return {uuidFromText(pair[0].get<std::string>()), pair[1].get<std::string>()};
    }
  }
  throw InputFileParsingException("Invalid type for from");
}

}  // namespace

NodeMembers NodeMembers::Collect(const picojson::object& node) {
  NodeMembers members;
  for (const Member& member : node) {
    const std::string& key = member.first;
    if (key == "desc") {
      members.desc = &member;
    } else if (key == "editorpos") {
      members.editorpos = &member;
    } else if (key == "input") {
      members.input = &member;
    } else if (key == "node") {
      members.nodeClass = &member;
    } else if (key == "uuid") {
      members.uuid = &member;
    }
  }
  return members;
}

GraphNode::GraphNode(const UUID& uuid, const picojson::object& node)
    : GraphNode(uuid, NodeMembers::Collect(node)) {}

GraphNode::GraphNode(const UUID& uuid, const NodeMembers& members) : kind_(ClassNode), uuid_(uuid) {
  if (members.desc != nullptr) {
    TrailStep step(members.desc->first);
    name_ = readDesc(members.desc->second);
  }
  if (members.editorpos != nullptr) {
    TrailStep step(members.editorpos->first);
    const picojson::value& value = members.editorpos->second;
    const picojson::array* position =
        value.is<picojson::array>() ? &value.get<picojson::array>() : nullptr;
    if (position == nullptr || position->size() != 2 || !(*position)[0].is<double>() ||
        !(*position)[1].is<double>()) {
      throw InputFileParsingException("Invalid type for editorpos");
    }
    editorX_ = roundToFloat((*position)[0].get<double>());
    editorY_ = roundToFloat((*position)[1].get<double>());
  }
}

GraphNode::GraphNode(const UUID& uuid, NodeKind kind, std::shared_ptr<const INodeClass> nodeClass)
    : kind_(kind), nodeClass_(std::move(nodeClass)), uuid_(uuid) {
  if (kind == GraphInputNode) name_ = "GraphInputs";
  if (kind == GraphOutputNode) name_ = "GraphOutputs";
  ResizeInputs();
}

bool GraphNode::GetInputConnection(size_t index, size_t* sourceNode, size_t* sourceOutput) const {
  if (index >= inputs_.size() || !inputs_[index].connected) return false;
  if (sourceNode != nullptr) *sourceNode = inputs_[index].sourceNode;
  if (sourceOutput != nullptr) *sourceOutput = inputs_[index].sourceOutput;
  return true;
}

const IValue* GraphNode::GetInputDefault(size_t index) const {
  return index < inputs_.size() ? inputs_[index].defaultValue.Get() : nullptr;
}

void GraphNode::GetEditorPosition(float* x, float* y) const {
  *x = editorX_;
  *y = editorY_;
}

void GraphNode::ReadNodeClass(const picojson::object& node, const IGraphLibrary* library) {
  ReadNodeClass(NodeMembers::Collect(node), library);
}

size_t NodeClassCache::UUIDHash::operator()(const UUID& uuid) const {
  size_t hash = 0;  // identifiers are random: their first bytes spread well
  std::memcpy(&hash, uuid.bytes, sizeof hash);
  return hash;
}

std::shared_ptr<const INodeClass> NodeClassCache::Find(const IGraphLibrary& library,
                                                       const UUID& uuid) {
  const auto found = classes_.find(uuid);
  if (found != classes_.end()) return found->second;
  auto nodeClass = library.FindAnyNodeClass(uuid, true);
  if (nodeClass) classes_.emplace(uuid, nodeClass);
  return nodeClass;
}

void GraphNode::ReadNodeClass(const NodeMembers& members, const IGraphLibrary* library,
                              NodeClassCache* cache) {
  if (members.nodeClass == nullptr) {
    appendTrailStep("node");
    throw InputFileParsingException("Node " + uuidText(uuid_) + ": member \"node\" is missing");
  }
  TrailStep step(members.nodeClass->first);
  const picojson::value& value = members.nodeClass->second;
  if (!value.is<std::string>()) throw InputFileParsingException("Invalid type for node");
  const UUID classUUID = uuidFromText(value.get<std::string>());
  nodeClass_ = cache != nullptr ? cache->Find(*library, classUUID)
                                : library->FindAnyNodeClass(classUUID, true);
  if (!nodeClass_) {
    throw InputFileParsingException("Node " + uuidText(uuid_) + ": node class " +
                                    uuidText(classUUID) + " not found");
  }
  kind_ = nodeClass_->IsGraph() ? NestedGraphNode : ClassNode;
}

void GraphNode::ReadInputs(const picojson::object& node, const Graph& graph) {
  ReadInputs(NodeMembers::Collect(node), graph);
}

void GraphNode::ReadInputs(const NodeMembers& members, const Graph& graph) {
  ResizeInputs();
  if (members.input == nullptr) return;
  TrailStep step(members.input->first);
  const picojson::value& input = members.input->second;
  size_t index = 0;
  auto connect = [&](const picojson::value& from) {
    const ConnectionSource source = readConnectionSource(from);
    resolveConnection(source.node, source.output, graph, inputs_[index],
                      nodeClass_->GetInput(index)->GetType());
  };
  if (input.is<picojson::array>()) {
    const picojson::array& entries = input.get<picojson::array>();
    for (size_t position = 0; position < entries.size(); ++position) {
      TrailStep entryStep(position);
      const picojson::object& fields = objectMember(entries[position], "input");
      // One walk finds the entry's members; they are then read name first.
      const picojson::object::value_type* defaultValue = nullptr;
      const picojson::object::value_type* from = nullptr;
      const picojson::object::value_type* name = nullptr;
      for (const auto& member : fields) {
        if (member.first == "default") {
          defaultValue = &member;
        } else if (member.first == "from") {
          from = &member;
        } else if (member.first == "name") {
          name = &member;
        }
      }
      if (name == nullptr || !name->second.is<std::string>()) {
        appendTrailStep("name");
        throw InputFileParsingException("Value not found in object");
      }
      if (!nodeClass_->FindInput(name->second.get<std::string>().c_str(), &index)) continue;
      if (from != nullptr) {
        TrailStep fromStep(from->first);
        connect(from->second);
      }
      if (defaultValue != nullptr) {
        TrailStep defaultStep(defaultValue->first);
        inputs_[index].defaultValue.Read(objectMember(defaultValue->second, "default"),
                                         graph.GetLibrary());
      }
    }
  } else if (input.is<picojson::object>()) {
    for (const auto& [name, from] : input.get<picojson::object>()) {
      TrailStep entryStep(name);
      if (nodeClass_->FindInput(name.c_str(), &index)) connect(from);
    }
  } else {
    throw InputFileParsingException("Invalid type for input");
  }
}

void GraphNode::ReadOutputConnections(const picojson::array& outputs, const Graph& graph) {
  ResizeInputs();
  for (size_t index = 0; index < outputs.size() && index < inputs_.size(); ++index) {
    TrailStep entryStep(index);
    const picojson::object& fields = objectMember(outputs[index], "output");
    const auto from = fields.find("from");
    if (from == fields.end()) continue;
    TrailStep fromStep(from->first);
    const ConnectionSource source = readConnectionSource(from->second);
    resolveConnection(source.node, source.output, graph, inputs_[index],
                      graph.GetOutput(index)->GetType());
  }
}

ConnectionResult GraphNode::Connect(const char* inputName, const IGraphNode& source,
                                    const char* outputName, const Graph& graph) {
  size_t index = 0;
  if (!nodeClass_->FindInput(inputName, &index)) return ConnectionNotFound;
  if (inputs_.size() < nodeClass_->GetInputCount()) ResizeInputs();
  return resolveConnection(source.GetUUID(), outputName != nullptr ? outputName : "", graph,
                           inputs_[index], nodeClass_->GetInput(index)->GetType());
}

void GraphNode::ResizeInputs() { inputs_.resize(nodeClass_ ? nodeClass_->GetInputCount() : 0); }

std::shared_ptr<GraphNode> GraphNode::Clone() const {
  auto copy = std::make_shared<GraphNode>(generateUUID(), kind_, nodeClass_);
  copy->inputs_ = inputs_;
  copy->name_ = name_;
  return copy;
}

ConnectionResult resolveConnection(const UUID& source, const std::string& outputName,
                                   const Graph& graph, NodeInput& input,
                                   const IType* expectedType) {
  size_t sourceNode = graph.GetInputNodeIndex();
  size_t sourceOutput = 0;
  if (source == UUID{}) {
    if (!graph.FindInput(outputName.c_str(), &sourceOutput)) return ConnectionNotFound;
    if (graph.GetInput(sourceOutput)->GetType() != expectedType) return ConnectionTypeMismatch;
  } else {
    sourceNode = graph.FindNodeIndex(source);
    const auto& sourceClass = graph.GetGraphNode(sourceNode).GetNodeClass();
    if (!sourceClass->FindOutput(outputName.c_str(), &sourceOutput)) return ConnectionNotFound;
    if (sourceClass->GetOutput(sourceOutput)->GetType() != expectedType) {
      return ConnectionTypeMismatch;
    }
  }
  input.connected = true;
  input.sourceNode = static_cast<uint32_t>(sourceNode);
  input.sourceOutput = static_cast<uint32_t>(sourceOutput);
  return ConnectionOk;
}

void writeGraphNode(JsonTextWriter& writer, const IGraphNode* node, const IGraph* graph) {
  const auto nodeClass = node->GetNodeClass();
  writer.BeginObject();
  writeDesc(writer, node->GetName());
  float x = 0;
  float y = 0;
  node->GetEditorPosition(&x, &y);
  if (!(x == 0 && y == 0)) {
    const double jsonX = floatToJsonNumber(x);
    const double jsonY = floatToJsonNumber(y);
    writer.Key("editorpos");
    writer.BeginArray(false);
    writer.NextElement();
    writer.Number(jsonX);
    writer.NextElement();
    writer.Number(jsonY);
    writer.EndArray();
  }
  bool hasEntries = false;
  for (size_t i = 0; i < nodeClass->GetInputCount(); ++i) {
    size_t sourceNode = 0;
    size_t sourceOutput = 0;
    const bool connected = node->GetInputConnection(i, &sourceNode, &sourceOutput);
    const IValue* defaultValue = node->GetInputDefault(i);
    if (!connected && defaultValue == nullptr) continue;
    if (!hasEntries) {
      writer.Key("input");
      writer.BeginArray(true);
      hasEntries = true;
    }
    writer.NextElement();
    writer.BeginObject();
    if (defaultValue != nullptr) {
      writer.Key("default");
      writeValue(writer, *defaultValue);
    }
    if (connected) {
      writer.Key("from");
      writeConnectionSource(writer, *graph, sourceNode, sourceOutput);
    }
    writer.Key("name");
    writer.String(nodeClass->GetInput(i)->GetName());
    writer.EndObject();
  }
  if (hasEntries) writer.EndArray();
  writer.Key("node");
  writer.String(uuidText(nodeClass->GetUUID()));
  writer.Key("uuid");
  writer.String(uuidText(node->GetUUID()));
  writer.EndObject();
}

picojson::object saveGraphNode(const IGraphNode* node, const IGraph* graph) {
  return writtenObject([&](JsonTextWriter& writer) { writeGraphNode(writer, node, graph); });
}

}  // namespace mat
