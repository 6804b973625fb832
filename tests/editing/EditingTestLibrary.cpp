#include "editing/EditingTestLibrary.h"

#include <gtest/gtest.h>
#include <picojson.h>

#include <functional>
#include <sstream>

#include "model/Value.h"

namespace mat::test {

namespace uuids {
const char* const floatType = "00000000-0000-4000-8000-000000000001";
const char* const intType = "00000000-0000-4000-8000-000000000002";
const char* const colorType = "00000000-0000-4000-8000-000000000003";
const char* const add = "00000000-0000-4000-8000-000000000101";
const char* const multiply = "00000000-0000-4000-8000-000000000102";
const char* const mix = "00000000-0000-4000-8000-000000000103";
const char* const offset = "00000000-0000-4000-8000-000000000104";
const char* const round = "00000000-0000-4000-8000-000000000105";
const char* const doubler = "00000000-0000-4000-8000-000000000201";
const char* const material = "00000000-0000-4000-8000-000000000202";
}  // namespace uuids

const char* const baseLibraryText = R"([{"datasources": [], "fileversion": 1}, [
  {"content": "type", "uuid": "00000000-0000-4000-8000-000000000001", "desc": "float",
   "default": {"component": "float", "value": 0}},
  {"content": "type", "uuid": "00000000-0000-4000-8000-000000000002", "desc": "int"},
  {"content": "type", "uuid": "00000000-0000-4000-8000-000000000003", "desc": "color",
   "default": {"component": "float", "value": [0, 0, 0]}},
  {"content": "nodeclass", "uuid": "00000000-0000-4000-8000-000000000101", "desc": "add",
   "input": [{"name": "a", "type": "00000000-0000-4000-8000-000000000001"},
             {"name": "b", "type": "00000000-0000-4000-8000-000000000001"}],
   "output": [{"name": "out", "type": "00000000-0000-4000-8000-000000000001"}]},
  {"content": "nodeclass", "uuid": "00000000-0000-4000-8000-000000000102", "desc": "multiply",
   "input": [{"name": "a", "type": "00000000-0000-4000-8000-000000000001"},
             {"name": "b", "type": "00000000-0000-4000-8000-000000000001"}],
   "output": [{"name": "out", "type": "00000000-0000-4000-8000-000000000001"}]},
  {"content": "nodeclass", "uuid": "00000000-0000-4000-8000-000000000103", "desc": "mix",
   "input": [{"name": "a", "type": "00000000-0000-4000-8000-000000000001"},
             {"name": "b", "type": "00000000-0000-4000-8000-000000000001"},
             {"name": "t", "type": "00000000-0000-4000-8000-000000000001"}],
   "output": [{"name": "out", "type": "00000000-0000-4000-8000-000000000001"}]},
  {"content": "nodeclass", "uuid": "00000000-0000-4000-8000-000000000104", "desc": "offset",
   "input": [{"name": "a", "type": "00000000-0000-4000-8000-000000000002"},
             {"name": "b", "type": "00000000-0000-4000-8000-000000000001"}],
   "output": [{"name": "out", "type": "00000000-0000-4000-8000-000000000001"}]},
  {"content": "nodeclass", "uuid": "00000000-0000-4000-8000-000000000105", "desc": "round",
   "input": [{"name": "a", "type": "00000000-0000-4000-8000-000000000001"}],
   "output": [{"name": "out", "type": "00000000-0000-4000-8000-000000000002"}]}
]])";

const char* const graphLibraryText = R"([{"datasources": [], "fileversion": 1}, [
  {"content": "graph", "uuid": "00000000-0000-4000-8000-000000000201", "desc": "doubler",
   "input": [{"name": "x", "type": "00000000-0000-4000-8000-000000000001",
              "default": {"component": "float", "value": 1}}],
   "output": [{"name": "y", "type": "00000000-0000-4000-8000-000000000001",
               "from": ["00000000-0000-4000-8000-000000000211", "out"]}],
   "nodes": [
     {"uuid": "00000000-0000-4000-8000-000000000211", "desc": "sum",
      "node": "00000000-0000-4000-8000-000000000101",
      "input": [{"name": "a", "from": ["", "x"]}, {"name": "b", "from": ["", "x"]}]}]},
  {"content": "graph", "uuid": "00000000-0000-4000-8000-000000000202", "desc": "material",
   "input": [{"name": "base", "type": "00000000-0000-4000-8000-000000000001",
              "default": {"component": "float", "value": 0.25}},
             {"name": "gain", "type": "00000000-0000-4000-8000-000000000001"}],
   "output": [{"name": "result", "type": "00000000-0000-4000-8000-000000000001",
               "from": ["00000000-0000-4000-8000-000000000222", "out"]},
              {"name": "raw", "type": "00000000-0000-4000-8000-000000000001",
               "from": ["00000000-0000-4000-8000-000000000221", "y"]}],
   "nodes": [
     {"uuid": "00000000-0000-4000-8000-000000000221", "desc": "twice",
      "node": "00000000-0000-4000-8000-000000000201",
      "input": [{"name": "x", "from": ["", "base"]}]},
     {"uuid": "00000000-0000-4000-8000-000000000222", "desc": "gained",
      "node": "00000000-0000-4000-8000-000000000102", "editorpos": [10, 20],
      "input": [{"name": "a", "from": ["00000000-0000-4000-8000-000000000221", "y"]},
                {"name": "b", "from": ["", "gain"],
                 "default": {"component": "float", "value": 2}}]},
     {"uuid": "00000000-0000-4000-8000-000000000223", "desc": "loop",
      "node": "00000000-0000-4000-8000-000000000101",
      "input": [{"name": "a", "from": ["00000000-0000-4000-8000-000000000223", "out"]},
                {"name": "b", "default": {"component": "float", "value": 3}}]},
     {"uuid": "00000000-0000-4000-8000-000000000224", "desc": "steps",
      "node": "00000000-0000-4000-8000-000000000105",
      "input": [{"name": "a", "from": ["", "gain"]}]}]}
]])";

LibraryPtr loadLibrary(const std::string& text, const IGraphLibrary* parent, const char* name) {
  LibraryPtr library(loadGraphLibrary(text.c_str(), text.size(), parent, name));
  EXPECT_NE(library, nullptr) << "library " << name << " does not load";
  return library;
}

std::string saveLibrary(const IGraphLibrary& library) {
  std::ostringstream out;
  saveGraphLibrary(&library, out);
  return out.str();
}

TestLibraries::TestLibraries()
    : base(loadLibrary(baseLibraryText, nullptr, "base")),
      graphs(loadLibrary(graphLibraryText, base.get(), "graphs")) {}

const IType* TestLibraries::Type(const char* uuid) const {
  const IType* type = base->FindType(makeUUID(uuid), false);
  EXPECT_NE(type, nullptr) << uuid;
  return type;
}

std::shared_ptr<const INodeClass> TestLibraries::Class(const char* uuid) const {
  auto nodeClass = graphs->FindAnyNodeClass(makeUUID(uuid), true);
  EXPECT_NE(nodeClass, nullptr) << uuid;
  return nodeClass;
}

std::shared_ptr<const IGraph> TestLibraries::Graph(const char* uuid) const {
  auto graph = graphs->FindGraph(makeUUID(uuid), false);
  EXPECT_NE(graph, nullptr) << uuid;
  return graph;
}

const IGraphNode* nodeAt(IGraphFactory& factory, size_t index) {
  const IGraphNode* node = nullptr;
  EXPECT_EQ(factory.GetNode(index, &node), ConnectionOk) << "no node " << index;
  return node;
}

ValuePtr floatValue(float element) { return ValuePtr(createValueFloat(&element, 1)); }

std::string connectionText(const IGraphNode* node, size_t input) {
  size_t sourceNode = 0;
  size_t sourceOutput = 0;
  if (!node->GetInputConnection(input, &sourceNode, &sourceOutput)) return "-";
  return std::to_string(sourceNode) + "." + std::to_string(sourceOutput);
}

std::string valueText(const IValue* value) {
  return value != nullptr ? picojson::value(saveValue(*value)).serialize() : "-";
}

std::string defaultText(const IGraphNode* node, size_t input) {
  return valueText(node->GetInputDefault(input));
}

std::string uuidString(const UUID& uuid) {
  char text[37];
  UUIDToString(uuid, text);
  return text;
}

std::string replaceAll(std::string text, const std::string& from, const std::string& to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

namespace {

void describeParameters(std::ostream& out, const char* label, const INodeClass& side) {
  out << label << ":";
  for (size_t i = 0; i < side.GetInputCount(); ++i) {
    const IParameter* parameter = side.GetInput(i);
    out << ' ' << parameter->GetName() << ':'
        << (parameter->GetType() ? parameter->GetType()->GetName() : "?") << '='
        << valueText(parameter->GetDefault());
  }
  out << '\n';
}

std::string describeNodes(size_t count, bool nodeUUIDs,
                          const std::function<const IGraphNode*(size_t)>& nodeAt) {
  std::ostringstream out;
  describeParameters(out, "inputs", *nodeAt(0)->GetNodeClass());
  describeParameters(out, "outputs", *nodeAt(1)->GetNodeClass());
  for (size_t index = 0; index < count; ++index) {
    const IGraphNode* node = nodeAt(index);
    const auto nodeClass = node->GetNodeClass();
    float x = 0;
    float y = 0;
    node->GetEditorPosition(&x, &y);
    out << index << ' '
        << (index < 2 || !nodeUUIDs ? std::string("node") : uuidString(node->GetUUID())) << " \""
        << node->GetName() << "\" kind " << node->GetNodeKind() << " class " << nodeClass->GetName()
        << " at " << x << ',' << y;
    for (size_t input = 0; input < nodeClass->GetInputCount(); ++input) {
      out << " | " << nodeClass->GetInput(input)->GetName() << " from "
          << connectionText(node, input) << " default " << defaultText(node, input);
    }
    out << '\n';
  }
  return out.str();
}

}  // namespace

std::string describe(IGraphFactory& factory, bool nodeUUIDs) {
  return describeNodes(factory.GetNodeCount(), nodeUUIDs,
                       [&factory](size_t index) { return nodeAt(factory, index); });
}

std::string describe(const IGraph& graph, bool nodeUUIDs) {
  return "graph \"" + std::string(graph.GetName()) + "\"\n" +
         describeNodes(graph.GetNodeCount(), nodeUUIDs,
                       [&graph](size_t index) { return graph.GetNode(index); });
}

}  // namespace mat::test
