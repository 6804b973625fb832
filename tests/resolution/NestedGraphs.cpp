#include "resolution/NestedGraphs.h"

#include <gtest/gtest.h>

#include <cctype>

#include "graph/Graph.h"
#include "graph/GraphNode.h"
#include "model/Value.h"

namespace mat::test::resolver {
namespace {

const char* const baseText = R"([
{"content":"type","uuid":"$a1","desc":"float","default":{"component":"float","value":0.125}},
{"content":"type","uuid":"$a2","desc":"color",
 "default":{"component":"float","value":[0.5,0.5,0.5]}},
{"content":"type","uuid":"$a3","desc":"bare"},
{"content":"nodeclass","uuid":"$c1","desc":"mix",
 "input":[{"name":"a","type":"$a2"},
          {"name":"b","type":"$a2","default":{"component":"float","value":[1,1,1]}},
          {"name":"amount","type":"$a1","default":{"component":"float","value":0.5}}],
 "output":[{"name":"out","type":"$a2"}]},
{"content":"nodeclass","uuid":"$c2","desc":"constant",
 "input":[{"name":"value","type":"$a1"}],"output":[{"name":"out","type":"$a1"}]},
{"content":"nodeclass","uuid":"$c3","desc":"bare",
 "input":[{"name":"x","type":"$a3"}],"output":[{"name":"y","type":"$a3"}]}
])";

// Graph $b<g> holds the nodes $d<g><index>. Each graph uses one that stands later in the
// file, so the loader must read every graph before it connects any.
const char* const graphText = R"([
{"content":"graph","uuid":"$b3","desc":"outer",
 "input":[{"name":"amount","type":"$a1"},{"name":"tint","type":"$a2"}],
 "output":[{"name":"color","type":"$a2","from":["$d34","out"]},
           {"name":"amount","type":"$a1","from":["$d32","amount"]}],
 "nodes":[
  {"uuid":"$d32","desc":"middleA","node":"$b2",
   "input":[{"name":"tint","from":["","tint"]},{"name":"amount","from":["$d35","out"]}]},
  {"uuid":"$d33","desc":"middleB","node":"$b2",
   "input":[{"name":"tint","from":["$d32","passthrough"]}]},
  {"uuid":"$d34","desc":"mix","node":"$c1",
   "input":[{"name":"a","from":["$d33","result"]},{"name":"b","from":["$d32","passthrough"]}]},
  {"uuid":"$d35","desc":"constant","node":"$c2"},
  {"uuid":"$d36","desc":"bare","node":"$c3"},
  {"uuid":"$d37","desc":"bare fed","node":"$c3","input":[{"name":"x","from":["$d36","y"]}]}]},
{"content":"graph","uuid":"$b2","desc":"middle",
 "input":[{"name":"tint","type":"$a2"},
          {"name":"amount","type":"$a1","default":{"component":"float","value":0.375}}],
 "output":[{"name":"result","type":"$a2","from":["$d22","out"]},
           {"name":"passthrough","type":"$a2","from":["","tint"]},
           {"name":"amount","type":"$a1","from":["$d23","amount"]}],
 "nodes":[
  {"uuid":"$d22","desc":"innerA","node":"$b1",
   "input":[{"name":"tint","from":["","tint"]},{"name":"amount","from":["","amount"]}]},
  {"uuid":"$d23","desc":"innerB","node":"$b1",
   "input":[{"name":"tint","from":["$d22","out"]},
            {"name":"amount","default":{"component":"float","value":0.75}}]}]},
{"content":"graph","uuid":"$b1","desc":"inner",
 "input":[{"name":"tint","type":"$a2"},
          {"name":"amount","type":"$a1","default":{"component":"float","value":0.25}}],
 "output":[{"name":"out","type":"$a2","from":["$d12","out"]},
           {"name":"amount","type":"$a1","from":["","amount"]}],
 "nodes":[
  {"uuid":"$d12","desc":"mix","node":"$c1",
   "input":[{"name":"a","from":["","tint"]},{"name":"amount","from":["","amount"]}]},
  {"uuid":"$d13","desc":"constant","node":"$c2",
   "input":[{"name":"value","default":{"component":"float","value":2}}]}]}
])";

UUID uuidOf(const char* token) { return makeUUID(withUUIDs(token).c_str()); }

// Stores `value` on the record of input `input` of the input node of `graph`, where a
// graph factory keeps the defaults of the graph inputs; a file cannot hold them.
const IValue* storeOnInputNode(const IGraph& graph, size_t input, float value) {
  GraphNode& inputNode =
      const_cast<Graph&>(dynamic_cast<const Graph&>(graph)).MutableNode(graph.GetInputNodeIndex());
  inputNode.ResizeInputs();
  inputNode.SetInputDefault(input, Value::CopyOf(*floatValue(value)));
  return inputNode.GetInputDefault(input);
}

}  // namespace

OwnedValue floatValue(float value) { return OwnedValue(createValueFloat(&value, 1)); }

std::string withUUIDs(const std::string& text) {
  std::string result;
  for (size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '$') {
      result.push_back(text[at]);
      continue;
    }
    size_t end = at + 1;
    while (end < text.size() && std::isxdigit(static_cast<unsigned char>(text[end]))) ++end;
    const std::string digits = text.substr(at + 1, end - at - 1);
    result += "00000000-0000-0000-0000-" + std::string(12 - digits.size(), '0') + digits;
    at = end - 1;
  }
  return result;
}

OwnedLibrary loadLibraryText(const std::string& text, const IGraphLibrary* parent) {
  const std::string expanded = withUUIDs(text);
  OwnedLibrary library(loadGraphLibrary(expanded.c_str(), expanded.size(), parent, "test"));
  EXPECT_NE(library, nullptr) << "the test library does not load";
  return library;
}

const IGraphLibrary& baseLibrary() {
  static const OwnedLibrary base = loadLibraryText(baseText, nullptr);
  return *base;
}

NestedGraphs makeNestedGraphs() {
  NestedGraphs graphs;
  graphs.library = loadLibraryText(graphText, &baseLibrary());
  if (!graphs.library) return graphs;
  graphs.outer = graphs.library->FindGraph(uuidOf("$b3"), false);
  graphs.middle = graphs.library->FindGraph(uuidOf("$b2"), false);
  graphs.inner = graphs.library->FindGraph(uuidOf("$b1"), false);
  // A step out of "inner" picks these up, and a later connected hop must drop them again.
  storeOnInputNode(*graphs.inner, 0, 0.625f);
  graphs.innerAmountRecord = storeOnInputNode(*graphs.inner, 1, 0.875f);
  return graphs;
}

}  // namespace mat::test::resolver
