#include "resolution/NestedGraphs.h"

#include <gtest/gtest.h>

#include <cctype>

#include "mat/IGraphFactory.h"
#include "mat/IGraphNode.h"

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

struct FactoryReleaser {
  void operator()(IGraphFactory* factory) const { releaseGraphFactory(factory); }
};

// A factory with checked edits: every failed one fails the test.
class Builder {
 public:
  Builder(const IGraphLibrary& library, const char* name, const char* uuid)
      : factory_(createNewGraphFactory(&library, name, uuidOf(uuid))) {}

  void Input(const char* type, const char* name, const IValue* defaultValue = nullptr) {
    const IType* found = baseLibrary().FindType(uuidOf(type), false);
    EXPECT_EQ(factory_->AddInput(found, name, defaultValue), ConnectionOk) << name;
  }
  void Output(const char* type, const char* name) {
    const IType* found = baseLibrary().FindType(uuidOf(type), false);
    EXPECT_EQ(factory_->AddOutput(found, name), ConnectionOk) << name;
  }
  const IGraphNode* Node(const std::shared_ptr<const INodeClass>& nodeClass, const char* name) {
    const IGraphNode* node = nullptr;
    EXPECT_EQ(factory_->AddNode(nodeClass, name, &node), ConnectionOk) << name;
    return node;
  }
  const IGraphNode* Node(const char* nodeClass, const char* name) {
    return Node(baseLibrary().FindNodeClass(uuidOf(nodeClass), false), name);
  }
  void Connect(const IGraphNode* source, const char* output, const IGraphNode* target,
               const char* input) {
    EXPECT_EQ(factory_->Connect(source, output, target, input), ConnectionOk)
        << output << " -> " << input;
  }
  void Default(const IGraphNode* node, size_t input, float value) {
    factory_->SetInputDefault(node, input, floatValue(value).get());
  }
  const IGraphNode* In() { return factory_->GetInputNode(); }
  const IGraphNode* Out() { return factory_->GetOutputNode(); }
  std::shared_ptr<const IGraph> Finish() { return factory_->FinishGraph(); }

 private:
  std::unique_ptr<IGraphFactory, FactoryReleaser> factory_;
};

void buildWithFactories(NestedGraphs& graphs) {
  const IGraphLibrary& library = *graphs.library;

  Builder inner(library, "inner", "$b1");
  inner.Input("$a2", "tint");
  inner.Input("$a1", "amount", floatValue(0.25f).get());
  inner.Output("$a2", "out");
  inner.Output("$a1", "amount");
  const IGraphNode* innerMix = inner.Node("$c1", "mix");
  const IGraphNode* innerConstant = inner.Node("$c2", "constant");
  inner.Connect(inner.In(), "tint", innerMix, "a");
  inner.Connect(inner.In(), "amount", innerMix, "amount");
  inner.Default(innerConstant, 0, 2.0f);
  inner.Connect(innerMix, "out", inner.Out(), "out");
  inner.Connect(inner.In(), "amount", inner.Out(), "amount");
  // Defaults on the input node's records: a step out of "inner" picks them up, and a
  // later connected hop must drop them again.
  inner.Default(inner.In(), 0, 0.625f);
  inner.Default(inner.In(), 1, 0.875f);
  graphs.inner = inner.Finish();

  Builder middle(library, "middle", "$b2");
  middle.Input("$a2", "tint");
  middle.Input("$a1", "amount", floatValue(0.375f).get());
  middle.Output("$a2", "result");
  middle.Output("$a2", "passthrough");
  middle.Output("$a1", "amount");
  const IGraphNode* innerA = middle.Node(graphs.inner, "innerA");
  const IGraphNode* innerB = middle.Node(graphs.inner, "innerB");
  middle.Connect(middle.In(), "tint", innerA, "tint");
  middle.Connect(middle.In(), "amount", innerA, "amount");
  middle.Connect(innerA, "out", innerB, "tint");
  middle.Default(innerB, 1, 0.75f);
  middle.Connect(innerA, "out", middle.Out(), "result");
  middle.Connect(middle.In(), "tint", middle.Out(), "passthrough");
  middle.Connect(innerB, "amount", middle.Out(), "amount");
  graphs.middle = middle.Finish();

  Builder outer(library, "outer", "$b3");
  outer.Input("$a1", "amount");
  outer.Input("$a2", "tint");
  outer.Output("$a2", "color");
  outer.Output("$a1", "amount");
  const IGraphNode* middleA = outer.Node(graphs.middle, "middleA");
  const IGraphNode* middleB = outer.Node(graphs.middle, "middleB");
  const IGraphNode* mix = outer.Node("$c1", "mix");
  const IGraphNode* constant = outer.Node("$c2", "constant");
  const IGraphNode* bare = outer.Node("$c3", "bare");
  const IGraphNode* bareFed = outer.Node("$c3", "bare fed");
  outer.Connect(outer.In(), "tint", middleA, "tint");
  outer.Connect(constant, "out", middleA, "amount");
  outer.Connect(middleA, "passthrough", middleB, "tint");
  outer.Connect(middleB, "result", mix, "a");
  outer.Connect(middleA, "passthrough", mix, "b");
  outer.Connect(bare, "y", bareFed, "x");
  outer.Connect(mix, "out", outer.Out(), "color");
  outer.Connect(middleA, "amount", outer.Out(), "amount");
  graphs.outer = outer.Finish();

  graphs.innerAmountRecord = graphs.inner->GetNode(0)->GetInputDefault(1);
  EXPECT_NE(graphs.innerAmountRecord, nullptr);
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

NestedGraphs makeNestedGraphs(BuiltBy builtBy) {
  NestedGraphs graphs;
  if (builtBy == BuiltBy::File) {
    graphs.library = loadLibraryText(graphText, &baseLibrary());
    if (!graphs.library) return graphs;
    graphs.outer = graphs.library->FindGraph(uuidOf("$b3"), false);
    graphs.middle = graphs.library->FindGraph(uuidOf("$b2"), false);
    graphs.inner = graphs.library->FindGraph(uuidOf("$b1"), false);
  } else {
    graphs.library.reset(createGraphLibrary(&baseLibrary(), "factory"));
    buildWithFactories(graphs);
  }
  return graphs;
}

}  // namespace mat::test::resolver
