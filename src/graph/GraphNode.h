#pragma once

#include <picojson.h>

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "mat/IGraphNode.h"
#include "mat/INodeClass.h"
#include "model/Value.h"

namespace mat {

class Graph;
class IGraphLibrary;
class IType;

// The default of one input of a node. Most inputs have none, so the value lives apart
// from the input's record and the records of a node stay small: walks over a graph read
// every record.
class InputDefault {
 public:
  InputDefault() = default;
  InputDefault(const InputDefault& other) : value_(copy(other.value_)) {}
  InputDefault(InputDefault&&) noexcept = default;
  InputDefault& operator=(const InputDefault& other) {
    if (this != &other) value_ = copy(other.value_);
    return *this;
  }
  InputDefault& operator=(InputDefault&&) noexcept = default;
  // The value itself; a value of no kind clears the default.
  InputDefault& operator=(const Value& value) {
    value_ = value.IsNone() ? nullptr : std::make_unique<Value>(value);
    return *this;
  }

  // The default, or null when there is none.
  const Value* Get() const { return value_.get(); }
  bool IsNone() const { return value_ == nullptr; }
  // Reads a value object in place of the default.
  void Read(const picojson::object& object, const IGraphLibrary* library) {
    auto value = std::make_unique<Value>(object, library);
    value_ = value->IsNone() ? nullptr : std::move(value);
  }

 private:
  static std::unique_ptr<Value> copy(const std::unique_ptr<Value>& value) {
    return value ? std::make_unique<Value>(*value) : nullptr;
  }

  std::unique_ptr<Value> value_;
};

// The state of one input of a node: its default and the output that feeds it. Node and
// output indices fit 32 bits, which keeps the record at 24 bytes.
struct NodeInput {
  InputDefault defaultValue;
  uint32_t sourceNode = 0;    // index of the source node in the graph
  uint32_t sourceOutput = 0;  // index of the output in the source node's class
  bool connected = false;

  void Disconnect() {
    connected = false;
    sourceNode = 0;
    sourceOutput = 0;
  }
};

// The members of a node object that the reader uses, found in one walk over the object.
struct NodeMembers {
  using Member = picojson::object::value_type;
  const Member* desc = nullptr;
  const Member* editorpos = nullptr;
  const Member* input = nullptr;
  const Member* nodeClass = nullptr;  // "node"
  const Member* uuid = nullptr;

  static NodeMembers Collect(const picojson::object& node);
};

// The classes that nodes name, found once per UUID during one load: the library chain
// does not change while connections are read, and many nodes share a class.
class NodeClassCache {
 public:
  std::shared_ptr<const INodeClass> Find(const IGraphLibrary& library, const UUID& uuid);

 private:
  struct UUIDHash {
    size_t operator()(const UUID& uuid) const;
  };
  std::unordered_map<UUID, std::shared_ptr<const INodeClass>, UUIDHash> classes_;
};

// The one implementation of IGraphNode. A node does not know its graph; the operations
// that need it take it as an argument.
class GraphNode final : public IGraphNode {
 public:
  // Reads a node object's "desc" and "editorpos"; the class and the inputs are read in
  // later passes (ReadNodeClass, ReadInputs). Throws InputFileParsingException for
  // members of the wrong JSON type.
  GraphNode(const UUID& uuid, const picojson::object& node);
  GraphNode(const UUID& uuid, const NodeMembers& members);
  // A node of `kind` and `nodeClass` with one empty record per input of the class.
  GraphNode(const UUID& uuid, NodeKind kind, std::shared_ptr<const INodeClass> nodeClass);

  const UUID& GetUUID() const override { return uuid_; }
  const char* GetName() const override { return name_.c_str(); }
  NodeKind GetNodeKind() const override { return kind_; }
  bool GetInputConnection(size_t index, size_t* sourceNode, size_t* sourceOutput) const override;
  std::shared_ptr<const INodeClass> GetNodeClass() const override { return nodeClass_; }
  // The class without a new reference to it, for readers that visit every node.
  const INodeClass* NodeClass() const { return nodeClass_.get(); }
  const IValue* GetInputDefault(size_t index) const override;
  void GetEditorPosition(float* x, float* y) const override;

  // Finds the class that "node" names in `library` and its parents (graphs first).
  // Throws InputFileParsingException when "node" is missing or finds nothing.
  void ReadNodeClass(const picojson::object& node, const IGraphLibrary* library);
  void ReadNodeClass(const NodeMembers& members, const IGraphLibrary* library,
                     NodeClassCache* cache = nullptr);
  // Reads the defaults and connections of "input" (array or object form).
  void ReadInputs(const picojson::object& node, const Graph& graph);
  void ReadInputs(const NodeMembers& members, const Graph& graph);
  // Output node only: reads the "from" of each graph output entry into its record.
  void ReadOutputConnections(const picojson::array& outputs, const Graph& graph);
  // Feeds input `inputName` from output `outputName` of `source`.
  ConnectionResult Connect(const char* inputName, const IGraphNode& source, const char* outputName,
                           const Graph& graph);
  void Disconnect(size_t index) { inputs_[index].Disconnect(); }
  void SetName(const char* name) { name_ = name != nullptr ? name : ""; }
  void SetEditorPosition(float x, float y) {
    editorX_ = x;
    editorY_ = y;
  }
  void SetInputDefault(size_t index, const Value& value) { inputs_[index].defaultValue = value; }
  // One record per input of the class: missing ones appended, surplus ones dropped.
  void ResizeInputs();
  void CopyInputsFrom(const GraphNode& other) { inputs_ = other.inputs_; }
  // A node with a new UUID and the same kind, class, records and name, at 0, 0.
  std::shared_ptr<GraphNode> Clone() const;

  std::vector<NodeInput>& Inputs() { return inputs_; }
  const std::vector<NodeInput>& Inputs() const { return inputs_; }

 private:
  float editorX_ = 0;
  float editorY_ = 0;
  NodeKind kind_;
  std::vector<NodeInput> inputs_;
  std::shared_ptr<const INodeClass> nodeClass_;
  UUID uuid_;
  std::string name_;
};

// Points `input` at output `outputName` of the node `source` of `graph` (the nil UUID
// standing for the graph's input node, whose outputs are the graph inputs) when the
// output exists and its type is `expectedType`; otherwise leaves `input` as it was.
// Throws InvalidDataAccess "Node not present" when no node of `graph` has `source`.
ConnectionResult resolveConnection(const UUID& source, const std::string& outputName,
                                   const Graph& graph, NodeInput& input, const IType* expectedType);

class JsonTextWriter;

// Writes the JSON object of a node of `graph`: "desc", "editorpos", "input", "node" and
// "uuid". Inputs with neither a connection nor a default have no entry.
void writeGraphNode(JsonTextWriter& writer, const IGraphNode* node, const IGraph* graph);
picojson::object saveGraphNode(const IGraphNode* node, const IGraph* graph);

}  // namespace mat
