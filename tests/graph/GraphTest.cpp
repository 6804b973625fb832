#include "graph/Graph.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "mat/IGraph.h"
#include "mat/IGraphLibrary.h"
#include "mat/IGraphNode.h"
#include "mat/INodeClass.h"
#include "mat/IParameter.h"
#include "mat/IPortPath.h"
#include "mat/IValue.h"
#include "model/Value.h"
#include "support/JsonText.h"
#include "support/LibraryText.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

using test::parseJson;
using test::WideErrorCapture;
using test::files::LibraryHandle;
using test::files::loadLibrary;
using test::files::saveLibrary;
using test::files::uuidOf;
using test::files::withUUIDs;

UUID uuid(const char* token) { return makeUUID(uuidOf(token).c_str()); }

size_t inputIndex(const INodeClass& nodeClass, const char* name) {
  size_t index = 99;
  EXPECT_TRUE(nodeClass.FindInput(name, &index)) << name;
  return index;
}

// The sample library: "outer" (nodes: middle instance, wood, scale, an unnamed tagged
// node) uses "middle", which uses "inner"; each stands before the graph it uses.
class SampleGraphs : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(library, nullptr); }
  std::shared_ptr<const IGraph> graph(const char* name) const {
    return library->FindGraphByName(name);
  }

  LibraryHandle library = loadLibrary(test::files::sampleLibraryText());
};

TEST(Graph, GraphWithoutMembersHasOnlyItsSpecialNodesAndIsWrittenWithEmptyNodes) {
  const LibraryHandle library = loadLibrary(withUUIDs(R"([{"content":"graph","uuid":"$g1"}])"));
  ASSERT_NE(library, nullptr);
  const auto graph = library->GetGraph(0);
  EXPECT_STREQ(graph->GetName(), "");
  EXPECT_EQ(graph->GetNodeCount(), 2u);
  EXPECT_EQ(graph->GetLibrary(), library.get());
  EXPECT_EQ(picojson::value(saveGraph(graph.get())),
            parseJson(withUUIDs(R"({"content":"graph","uuid":"$g1","nodes":[]})")));
}

TEST_F(SampleGraphs, SpecialNodesComeFirstAndFileNodesFollowFromIndexTwo) {
  const auto outer = graph("outer");
  ASSERT_EQ(outer->GetNodeCount(), 6u);
  EXPECT_EQ(outer->GetInputNodeIndex(), 0u);
  EXPECT_EQ(outer->GetOutputNodeIndex(), 1u);
  const struct {
    const char* name;
    NodeKind kind;
  } expected[] = {{"GraphInputs", GraphInputNode},
                  {"GraphOutputs", GraphOutputNode},
                  {"middle instance", NestedGraphNode},
                  {"wood", ClassNode},
                  {"scale", ClassNode},
                  {"", ClassNode}};
  for (size_t i = 0; i < outer->GetNodeCount(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_STREQ(outer->GetNode(i)->GetName(), expected[i].name);
    EXPECT_EQ(outer->GetNode(i)->GetNodeKind(), expected[i].kind);
  }
  for (size_t special : {0, 1}) {
    float x = 1;
    float y = 1;
    outer->GetNode(special)->GetEditorPosition(&x, &y);
    EXPECT_EQ(x, 0.0f);
    EXPECT_EQ(y, 0.0f);
  }
}

TEST_F(SampleGraphs, SpecialNodeClassesPresentTheGraphSignatureOnBothSides) {
  const auto outer = graph("outer");
  const auto inputClass = outer->GetNode(0)->GetNodeClass();
  const auto outputClass = outer->GetNode(1)->GetNodeClass();
  EXPECT_STREQ(inputClass->GetName(), "GraphInputs");
  EXPECT_STREQ(outputClass->GetName(), "GraphOutputs");
  ASSERT_EQ(inputClass->GetInputCount(), 1u);
  ASSERT_EQ(inputClass->GetOutputCount(), 1u);
  EXPECT_EQ(inputClass->GetInput(0), outer->GetInput(0));
  EXPECT_EQ(inputClass->GetOutput(0), outer->GetInput(0));
  ASSERT_EQ(outputClass->GetInputCount(), 2u);
  ASSERT_EQ(outputClass->GetOutputCount(), 2u);
  EXPECT_EQ(outputClass->GetInput(1), outer->GetOutput(1));
  EXPECT_EQ(outputClass->GetOutput(1), outer->GetOutput(1));
  size_t index = 9;
  EXPECT_TRUE(inputClass->FindOutput("tint", &index));
  EXPECT_EQ(index, 0u);
  EXPECT_TRUE(outputClass->FindInput("alpha", &index));
  EXPECT_EQ(index, 1u);
  EXPECT_FALSE(inputClass->FindInput("color", &index));
  EXPECT_THROW_MSG(inputClass->GetInput(1), InvalidDataAccess,
                   "Index out of Range: Input Index out of range");
  EXPECT_THROW_MSG(outputClass->GetOutput(2), InvalidDataAccess,
                   "Index out of Range: Output Index out of range");
  for (const auto& special : {inputClass, outputClass}) {
    EXPECT_FALSE(special->IsGraph());
    EXPECT_EQ(special->AsGraph(), nullptr);
    EXPECT_EQ(special->GetLibrary(), library.get());
  }
  // The input node of a graph read from a file has one empty record per graph input.
  EXPECT_FALSE(outer->GetNode(0)->GetInputConnection(0, nullptr, nullptr));
  EXPECT_EQ(outer->GetNode(0)->GetInputDefault(0), nullptr);
}

TEST(Graph, SpecialUUIDsAreNewOnEveryLoadWhileTheSavedTextStaysTheSame) {
  const LibraryHandle first = loadLibrary(test::files::sampleLibraryText());
  const LibraryHandle second = loadLibrary(test::files::sampleLibraryText());
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  std::vector<UUID> seen;
  for (const auto& library : {first.get(), second.get()}) {
    for (size_t g = 0; g < library->GetGraphCount(); ++g) {
      const auto graph = library->GetGraph(g);
      for (size_t special : {0, 1}) {
        seen.push_back(graph->GetNode(special)->GetUUID());
        seen.push_back(graph->GetNode(special)->GetNodeClass()->GetUUID());
      }
    }
  }
  for (size_t i = 0; i < seen.size(); ++i) {
    EXPECT_NE(seen[i], UUID{});
    for (size_t j = i + 1; j < seen.size(); ++j) EXPECT_NE(seen[i], seen[j]) << i << ", " << j;
  }
  EXPECT_EQ(saveLibrary(*first), saveLibrary(*second));
}

TEST_F(SampleGraphs, ConnectionsNameLaterNodesAndGraphInputs) {
  const struct {
    const char* graph;
    size_t node;  // the output node's records are the graph outputs
    const char* input;
    size_t sourceNode, sourceOutput;
  } connections[] = {
      {"outer", 3, "scale", 4, 0},         // from the later node "scale"
      {"outer", 2, "tint", 0, 0},          // from the graph input
      {"outer", 1, "color", 2, 0},         // graph output from a nested graph's output
      {"outer", 1, "alpha", 3, 1},         // graph output from a class node's second output
      {"middle", 1, "passthrough", 0, 0},  // graph output straight from a graph input
      {"inner", 2, "b", 3, 0},             // from the later node "texture"
      {"inner", 2, "amount", 0, 1},        // from the second graph input
      {"inner", 1, "amount", 0, 1},        // graph output from the second graph input
  };
  for (const auto& connection : connections) {
    SCOPED_TRACE(std::string(connection.graph) + " " + connection.input);
    const IGraphNode* node = graph(connection.graph)->GetNode(connection.node);
    size_t sourceNode = 99;
    size_t sourceOutput = 99;
    ASSERT_TRUE(node->GetInputConnection(inputIndex(*node->GetNodeClass(), connection.input),
                                         &sourceNode, &sourceOutput));
    EXPECT_EQ(sourceNode, connection.sourceNode);
    EXPECT_EQ(sourceOutput, connection.sourceOutput);
  }
}

TEST_F(SampleGraphs, GraphOutputsAreWrittenWithTheirSources) {
  EXPECT_EQ(picojson::value(saveGraph(graph("middle").get())), parseJson(withUUIDs(R"({
      "content":"graph","uuid":"$g2","desc":"middle",
      "input":[{"name":"tint","type":"$t2"}],
      "output":[{"name":"result","type":"$t2","from":["$n1","out"]},
                {"name":"passthrough","type":"$t2","from":["","tint"]}],
      "nodes":[{"uuid":"$n1","desc":"inner instance","node":"$g1",
                "input":[{"name":"tint","from":["","tint"]},
                         {"name":"amount","default":{"component":"float","value":0.75}}]}]})")));
}

TEST(Graph, GraphOutputWhoseSourceDoesNotFitStaysUnconnectedAndTheFileLoads) {
  const char* const sources[] = {R"(["","weight"])", R"(["","nope"])", R"(["$n1","alpha"])",
                                 R"(["$n1","nope"])"};
  for (const char* source : sources) {
    SCOPED_TRACE(source);
    const LibraryHandle library = loadLibrary(withUUIDs(std::string(R"([
        {"content":"type","uuid":"$t1"},{"content":"type","uuid":"$t2"},
        {"content":"nodeclass","uuid":"$c1",
         "output":[{"name":"out","type":"$t2"},{"name":"alpha","type":"$t1"}]},
        {"content":"graph","uuid":"$g1",
         "input":[{"name":"tint","type":"$t2"},{"name":"weight","type":"$t1"}],
         "output":[{"name":"result","type":"$t2","from":)") +
                                                        source + R"(}],
         "nodes":[{"uuid":"$n1","node":"$c1"}]}])"));
    ASSERT_NE(library, nullptr);
    const auto graph = library->GetGraph(0);
    EXPECT_FALSE(graph->GetNode(1)->GetInputConnection(0, nullptr, nullptr));
    EXPECT_EQ(saveLibrary(*library).find("\"from\""), std::string::npos);
  }
}

struct BadGraph {
  const char* why;
  const char* members;    // after "content" and "uuid" of graph $g1
  const char* errorLine;  // UUID tokens are expanded
};

const BadGraph badGraphs[] = {
    {"desc not a string", R"("desc":5)", "InputFileParsingException: Invalid type for desc\n"},
    {"input not an array", R"("input":{})", "InputFileParsingException: Invalid type for inputs\n"},
    {"output not an array", R"("output":"x")",
     "InputFileParsingException: Invalid type for output\n"},
    {"output entry not an object", R"("output":[5])",
     "InputFileParsingException: Invalid type for output\n"},
    {"output entry without name", R"("output":[{"type":"$t1"}])",
     "InputFileParsingException: Value not found in object\n"},
    {"output from not a pair", R"("output":[{"name":"o","type":"$t1","from":[""]}])",
     "InputFileParsingException: Invalid type for from\n"},
    {"output from naming no node", R"("output":[{"name":"o","type":"$t1","from":["$n5","o"]}])",
     "Index out of Range: Node not present\n"},
    {"nodes not an array", R"("nodes":{})",
     "InputFileParsingException: Graph $g1: member \"nodes\" is not an array\n"},
    {"nodes null", R"("nodes":null)",
     "InputFileParsingException: Graph $g1: member \"nodes\" is not an array\n"},
    {"node not an object", R"("nodes":[[]])", "InputFileParsingException: Expected object\n"},
    {"node without uuid", R"("nodes":[{"node":"$c1"}])",
     "InputFileParsingException: Value not found in object\n"},
    {"node uuid not a string", R"("nodes":[{"uuid":5,"node":"$c1"}])",
     "InputFileParsingException: Value not found in object\n"},
    {"two nodes with one UUID", R"("nodes":[{"uuid":"$n1","node":"$c1"},{"uuid":"$n1"}])",
     "InputFileParsingException: Graph $g1: two nodes with UUID $n1\n"},
    {"graph nesting itself", R"("nodes":[{"uuid":"$n1","node":"$g1"}])",
     "InputFileParsingException: Recursive graph nesting: graph $g1 contains itself\n"},
    {"graph nesting itself through another",
     R"("nodes":[{"uuid":"$n1","node":"$g2"}]},
        {"content":"graph","uuid":"$g2","nodes":[{"uuid":"$n1","node":"$g3"}]},
        {"content":"graph","uuid":"$g3","nodes":[{"uuid":"$n1","node":"$g1"}])",
     "InputFileParsingException: Recursive graph nesting: graph $g1 contains itself\n"},
};

TEST(Graph, RefusesMalformedGraphsWithOneExactLine) {
  for (const BadGraph& bad : badGraphs) {
    SCOPED_TRACE(bad.why);
    const std::string text = withUUIDs(std::string(R"([
        {"content":"type","uuid":"$t1"},{"content":"nodeclass","uuid":"$c1"},
        {"content":"graph","uuid":"$g1",)") +
                                       bad.members + "}]");
    WideErrorCapture errors;
    EXPECT_EQ(loadLibrary(text), nullptr);
    const std::string expected = withUUIDs(bad.errorLine);
    EXPECT_EQ(errors.text(), std::wstring(expected.begin(), expected.end()));
  }
}

TEST_F(SampleGraphs, IndexBeyondTheCountsThrowsInvalidDataAccess) {
  const auto middle = graph("middle");
  EXPECT_THROW_MSG(middle->GetNode(3), InvalidDataAccess,
                   "Index out of Range: Node index 3 out of range (count 3)");
  EXPECT_THROW_MSG(middle->GetInput(1), InvalidDataAccess,
                   "Index out of Range: Input Index out of range");
  EXPECT_THROW_MSG(middle->GetOutput(2), InvalidDataAccess,
                   "Index out of Range: Output Index out of range");
  const auto& readable = dynamic_cast<const Graph&>(*middle);
  EXPECT_EQ(readable.FindNodeIndex(uuid("$n1")), 2u);
  EXPECT_EQ(readable.FindNodeIndex(middle->GetNode(1)->GetUUID()), 1u);
  EXPECT_THROW_MSG(readable.FindNodeIndex(uuid("$n2")), InvalidDataAccess,
                   "Index out of Range: Node not present");
  EXPECT_THROW_MSG(readable.FindNodeIndex(UUID{}), InvalidDataAccess,
                   "Index out of Range: Node not present");
}

TEST_F(SampleGraphs, CopyHasNewUUIDsAndTheSameNodesConnectionsAndDefaults) {
  for (const char* name : {"outer", "middle", "inner", "empty"}) {
    SCOPED_TRACE(name);
    const auto& original = dynamic_cast<const Graph&>(*graph(name));
    const auto copy = std::make_shared<Graph>(original);
    EXPECT_NE(copy->GetUUID(), original.GetUUID());
    EXPECT_STREQ(copy->GetName(), original.GetName());
    EXPECT_EQ(copy->GetLibrary(), original.GetLibrary());
    ASSERT_EQ(copy->GetInputCount(), original.GetInputCount());
    ASSERT_EQ(copy->GetOutputCount(), original.GetOutputCount());
    for (size_t i = 0; i < copy->GetOutputCount(); ++i) {
      EXPECT_STREQ(copy->GetOutput(i)->GetName(), original.GetOutput(i)->GetName());
      EXPECT_EQ(copy->GetOutput(i)->GetType(), original.GetOutput(i)->GetType());
    }
    ASSERT_EQ(copy->GetNodeCount(), original.GetNodeCount());
    for (size_t n = 0; n < copy->GetNodeCount(); ++n) {
      SCOPED_TRACE(n);
      const IGraphNode* node = copy->GetNode(n);
      const IGraphNode* source = original.GetNode(n);
      EXPECT_NE(node->GetUUID(), source->GetUUID());
      EXPECT_EQ(copy->FindNodeIndex(node->GetUUID()), n);
      EXPECT_STREQ(node->GetName(), source->GetName());
      EXPECT_EQ(node->GetNodeKind(), source->GetNodeKind());
      float x = 1;
      float y = 1;
      node->GetEditorPosition(&x, &y);  // positions are not copied
      EXPECT_EQ(x, 0.0f);
      EXPECT_EQ(y, 0.0f);
      if (n >= 2) {
        EXPECT_EQ(node->GetNodeClass(), source->GetNodeClass());
      }
      for (size_t i = 0; i < node->GetNodeClass()->GetInputCount(); ++i) {
        size_t fromNode = 99, fromOutput = 99, sourceFromNode = 98, sourceFromOutput = 98;
        EXPECT_EQ(node->GetInputConnection(i, &fromNode, &fromOutput),
                  source->GetInputConnection(i, &sourceFromNode, &sourceFromOutput));
        if (source->GetInputConnection(i, nullptr, nullptr)) {
          EXPECT_EQ(fromNode, sourceFromNode);
          EXPECT_EQ(fromOutput, sourceFromOutput);
        }
        ASSERT_EQ(node->GetInputDefault(i) != nullptr, source->GetInputDefault(i) != nullptr);
        if (source->GetInputDefault(i) != nullptr) {
          EXPECT_NE(node->GetInputDefault(i), source->GetInputDefault(i));
          EXPECT_EQ(picojson::value(saveValue(*node->GetInputDefault(i))),
                    picojson::value(saveValue(*source->GetInputDefault(i))));
        }
      }
    }
    // The special node classes are the copy's own.
    EXPECT_NE(copy->GetNode(0)->GetNodeClass(), original.GetNode(0)->GetNodeClass());
    if (copy->GetOutputCount() > 0) {
      EXPECT_EQ(copy->GetNode(1)->GetNodeClass()->GetInput(0), copy->GetOutput(0));
    }
  }
}

TEST_F(SampleGraphs, CopyLeavesTheDefaultsOfTheSpecialNodesBehind) {
  auto edited = std::make_shared<Graph>(dynamic_cast<const Graph&>(*graph("middle")));
  const Value defaultValue(Value::Storage(std::vector<float>{1, 2, 3}));
  edited->MutableNode(0).SetInputDefault(0, defaultValue);
  edited->MutableNode(1).SetInputDefault(1, defaultValue);
  ASSERT_NE(edited->GetNode(0)->GetInputDefault(0), nullptr);
  const Graph copy(*edited);
  EXPECT_EQ(copy.GetNode(0)->GetInputDefault(0), nullptr);
  EXPECT_EQ(copy.GetNode(1)->GetInputDefault(1), nullptr);
  EXPECT_TRUE(copy.GetNode(1)->GetInputConnection(1, nullptr, nullptr));
}

// The node indices of a path written as text, e.g. "2 2".
std::vector<size_t> nodeIndices(const char* text) {
  std::istringstream in(text);
  std::vector<size_t> indices;
  for (size_t index = 0; in >> index;) indices.push_back(index);
  return indices;
}

// A port path through the node indices `nodes` to the input or output `port`; the caller
// releases it.
IPortPath* portPath(const char* nodes, bool input, const char* port) {
  IPortPath* path = createPortPath();
  for (size_t index : nodeIndices(nodes)) path->AppendNodeIndex(index);
  if (input) {
    path->SetInputPort(port);
  } else {
    path->SetOutputPort(port);
  }
  return path;
}

struct PathCase {
  const char* why;
  const char* nodes;
  bool input;
  const char* port;
  const char* graph;  // the graph that holds the node reached (ignored without nodes)
  const char* owner;  // the class of the parameter: a graph, a class or "" for special
};

// Every path starts at "outer": node 2 is its "middle instance", whose node 2 is the
// "inner instance", whose node 2 is a "mix" node; outer's node 3 is a "texture" node.
const PathCase pathCases[] = {
    {"graph's own input", "", true, "tint", "", "outer"},
    {"graph's own output", "", false, "alpha", "", "outer"},
    {"input of a nested graph", "2", true, "tint", "outer", "middle"},
    {"output of a nested graph", "2", false, "passthrough", "outer", "middle"},
    {"two levels down", "2 2", false, "out", "middle", "inner"},
    {"three levels down to a class", "2 2 2", true, "amount", "inner", "mix"},
    {"output of a class node", "3", false, "alpha", "outer", "texture"},
    {"input node offers graph inputs as outputs", "0", false, "tint", "outer", ""},
    {"input node offers graph inputs as inputs", "0", true, "tint", "outer", ""},
    {"output node offers graph outputs", "1", true, "color", "outer", ""},
    {"input node of a nested graph", "2 0", false, "tint", "middle", ""},
};

TEST_F(SampleGraphs, ParameterFromPathFollowsNodesDownThroughNestedGraphs) {
  const auto outer = graph("outer");
  for (const PathCase& path : pathCases) {
    SCOPED_TRACE(path.why);
    IPortPath* port = portPath(path.nodes, path.input, path.port);
    const IGraphNode* node = outer->GetNode(5);  // no path below ends there
    const IParameter* parameter = outer->GetParameterFromPath(*port, &node);
    releasePortPath(port);
    ASSERT_NE(parameter, nullptr);
    EXPECT_STREQ(parameter->GetName(), path.port);
    const std::vector<size_t> nodes = nodeIndices(path.nodes);
    EXPECT_EQ(node, nodes.empty() ? nullptr : graph(path.graph)->GetNode(nodes.back()));
    // The parameter is the very object of the class that owns it.
    std::shared_ptr<const INodeClass> owner = graph(path.owner);
    if (!owner) owner = library->FindNodeClassByName(path.owner);
    if (!owner) owner = node->GetNodeClass();
    size_t index = 0;
    if (path.input) {
      ASSERT_TRUE(owner->FindInput(path.port, &index));
      EXPECT_EQ(parameter, owner->GetInput(index));
    } else {
      ASSERT_TRUE(owner->FindOutput(path.port, &index));
      EXPECT_EQ(parameter, owner->GetOutput(index));
    }
  }
}

struct BadPath {
  const char* why;
  const char* nodes;
  bool input;
  const char* port;
  const char* message;
};

const BadPath badPaths[] = {
    {"through a class node", "3 0", false, "alpha",
     "Index out of Range: Can only move on to nodes within a graph!"},
    {"through the input node", "0 0", false, "tint",
     "Index out of Range: Can only move on to nodes within a graph!"},
    {"missing input", "", true, "alpha",
     "Index out of Range: Node does not have input of that name!"},
    {"missing output", "2", false, "tint",
     "Index out of Range: Node does not have output of that name!"},
    {"empty port name", "2 2", false, "",
     "Index out of Range: Node does not have output of that name!"},
    {"index beyond the outer graph", "9", true, "tint",
     "Index out of Range: Path position 0: node index 9 out of range (count 6)"},
    {"index beyond a nested graph", "2 7", true, "tint",
     "Index out of Range: Path position 1: node index 7 out of range (count 3)"},
};

TEST_F(SampleGraphs, ParameterFromPathThrowsAndLeavesTheNodeAlone) {
  const auto outer = graph("outer");
  for (const BadPath& path : badPaths) {
    SCOPED_TRACE(path.why);
    IPortPath* port = portPath(path.nodes, path.input, path.port);
    const IGraphNode* untouched = outer->GetNode(4);
    const IGraphNode* node = untouched;
    EXPECT_THROW_MSG(outer->GetParameterFromPath(*port, &node), InvalidDataAccess, path.message);
    EXPECT_EQ(node, untouched);
    releasePortPath(port);
  }
}

TEST_F(SampleGraphs, AsGraphSharesOwnershipOfAGraphHeldByASharedPointer) {
  const auto middle = graph("middle");
  const long held = middle.use_count();
  const std::shared_ptr<const IGraph> same = middle->AsGraph();
  EXPECT_EQ(same, middle);
  EXPECT_EQ(middle.use_count(), held + 1);
  const auto nested = middle->GetNode(2)->GetNodeClass();
  EXPECT_TRUE(nested->IsGraph());
  EXPECT_EQ(nested->AsGraph(), graph("inner"));
}

TEST(Graph, AsGraphOfAGraphNoSharedPointerHoldsThrowsBadWeakPtr) {
  const Graph local("local", UUID{}, nullptr);
  EXPECT_THROW(local.AsGraph(), std::bad_weak_ptr);
  const Graph copy(local);
  EXPECT_THROW(copy.AsGraph(), std::bad_weak_ptr);
}

TEST(Graph, NewGraphTakesItsUUIDOrARandomOneForNil) {
  const UUID given = uuid("$g7");
  const Graph named("named", given, nullptr);
  EXPECT_EQ(named.GetUUID(), given);
  EXPECT_STREQ(named.GetName(), "named");
  const Graph first(nullptr, UUID{}, nullptr);
  const Graph second(nullptr, UUID{}, nullptr);
  EXPECT_NE(first.GetUUID(), UUID{});
  EXPECT_NE(first.GetUUID(), second.GetUUID());
  EXPECT_STREQ(first.GetName(), "");
  EXPECT_EQ(first.GetNodeCount(), 2u);
}

}  // namespace
}  // namespace mat
