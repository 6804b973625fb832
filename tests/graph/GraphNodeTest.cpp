#include "graph/GraphNode.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "graph/Graph.h"
#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "mat/IGraph.h"
#include "mat/IGraphLibrary.h"
#include "mat/INodeClass.h"
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
using test::files::roundTripProblem;
using test::files::saveLibrary;
using test::files::uuidOf;
using test::files::withUUIDs;

// A library whose graph "g" has the inputs tint (color) and weight (float) and the
// given "nodes"; the class "mix" has inputs a, b (color) and amount (float) and outputs
// out (color) and alpha (float); "nested" is a graph to use as a class.
std::string libraryWithNodes(const std::string& nodes) {
  return withUUIDs(R"([
      {"content":"type","uuid":"$t1","desc":"float"},
      {"content":"type","uuid":"$t2","desc":"color"},
      {"content":"nodeclass","uuid":"$c1","desc":"mix",
       "input":[{"name":"a","type":"$t2"},{"name":"b","type":"$t2"},
                {"name":"amount","type":"$t1"}],
       "output":[{"name":"out","type":"$t2"},{"name":"alpha","type":"$t1"}]},
      {"content":"graph","uuid":"$g1","desc":"g",
       "input":[{"name":"tint","type":"$t2"},{"name":"weight","type":"$t1"}],
       "nodes":)" + nodes +
                   R"(},
      {"content":"graph","uuid":"$g2","desc":"nested"}])");
}

// The graph "g" of a library made by libraryWithNodes().
std::shared_ptr<const IGraph> graphOf(const LibraryHandle& library) {
  return library ? library->FindGraphByName("g") : nullptr;
}

picojson::value savedNode(const IGraph& graph, size_t index) {
  return picojson::value(saveGraphNode(graph.GetNode(index), &graph));
}

TEST(GraphNode, ReadsNameClassAndKindAndWritesOnlyWhatItCarries) {
  const LibraryHandle library = loadLibrary(libraryWithNodes(R"([
      {"uuid":"$n1","desc":"first","node":"$c1"},
      {"uuid":"$n2","node":"$g2","desc":""},
      {"uuid":"$n3","node":"$c1","input":[],"unknown":{"a":1}}])"));
  const auto graph = graphOf(library);
  ASSERT_NE(graph, nullptr);
  ASSERT_EQ(graph->GetNodeCount(), 5u);
  const IGraphNode* first = graph->GetNode(2);
  EXPECT_EQ(first->GetUUID(), makeUUID(uuidOf("$n1").c_str()));
  EXPECT_STREQ(first->GetName(), "first");
  EXPECT_EQ(first->GetNodeKind(), ClassNode);
  EXPECT_EQ(first->GetNodeClass(), library->FindNodeClassByName("mix"));
  const IGraphNode* nested = graph->GetNode(3);
  EXPECT_STREQ(nested->GetName(), "");
  EXPECT_EQ(nested->GetNodeKind(), NestedGraphNode);
  EXPECT_EQ(nested->GetNodeClass(), library->FindGraphByName("nested"));
  for (size_t index : {0, 3}) {  // 3 is beyond the inputs of the class
    size_t sourceNode = 7;
    EXPECT_FALSE(first->GetInputConnection(index, &sourceNode, nullptr));
    EXPECT_EQ(sourceNode, 7u);
    EXPECT_EQ(first->GetInputDefault(index), nullptr);
  }
  // Written without "input" or "editorpos": no record is set and the position is 0, 0.
  EXPECT_EQ(savedNode(*graph, 2),
            parseJson(withUUIDs(R"({"desc":"first","node":"$c1","uuid":"$n1"})")));
  EXPECT_EQ(savedNode(*graph, 3), parseJson(withUUIDs(R"({"node":"$g2","uuid":"$n2"})")));
  EXPECT_EQ(savedNode(*graph, 4), parseJson(withUUIDs(R"({"node":"$c1","uuid":"$n3"})")));
}

TEST(GraphNode, EditorPositionIsRoundedToFloatAndWrittenWidened) {
  constexpr float infinity = std::numeric_limits<float>::infinity();
  const struct {
    const char* position;
    float x, y;
    const char* written;  // the "editorpos" line of the saved file, or null for none
  } positions[] = {
      {"[0.1,0.2]", 0.1f, 0.2f, "[0.10000000149011612,0.20000000298023224]"},
      {"[3,-4.5]", 3.0f, -4.5f, "[3,-4.5]"},
      {"[0,2]", 0.0f, 2.0f, "[0,2]"},
      {"[0,0]", 0.0f, 0.0f, nullptr},
      {"[-0.0,0]", 0.0f, 0.0f, nullptr},
      {"[16777217,1e-50]", 16777216.0f, 0.0f, "[16777216,0]"},
      {"[1e39,-1e39]", infinity, -infinity, "[9.9999999999999994e+38,-9.9999999999999994e+38]"},
  };
  for (const auto& position : positions) {
    SCOPED_TRACE(position.position);
    const std::string text = libraryWithNodes(
        std::string(R"([{"uuid":"$n1","node":"$c1","editorpos":)") + position.position + "}]");
    const LibraryHandle library = loadLibrary(text);
    const auto graph = graphOf(library);
    ASSERT_NE(graph, nullptr);
    float x = 0;
    float y = 0;
    graph->GetNode(2)->GetEditorPosition(&x, &y);
    EXPECT_EQ(x, position.x);
    EXPECT_EQ(y, position.y);
    const std::string saved = saveLibrary(*library);
    const size_t member = saved.find("\"editorpos\" : ");
    if (position.written == nullptr) {
      EXPECT_EQ(member, std::string::npos);
    } else {
      ASSERT_NE(member, std::string::npos);
      EXPECT_EQ(saved.substr(member + 14, saved.find('\n', member) - member - 15),
                position.written);
    }
    EXPECT_EQ(roundTripProblem(text), "");
  }
}

// The node $n1 (class mix, index 2) receives the entry; $n2 (class mix, index 3) is a
// later node it may name.
struct ConnectionCase {
  const char* why;
  const char* entry;
  size_t input;
  bool connected;
  size_t sourceNode, sourceOutput;
  const char* writtenFrom;  // the "from" written for the input, when connected
};

const ConnectionCase connectionCases[] = {
    {"graph input", R"({"name":"a","from":["","tint"]})", 0, true, 0, 0, R"(["","tint"])"},
    {"second graph input", R"({"name":"amount","from":["","weight"]})", 2, true, 0, 1,
     R"(["","weight"])"},
    {"nil UUID text for the input node",
     R"({"name":"a","from":["00000000-0000-0000-0000-000000000000","tint"]})", 0, true, 0, 0,
     R"(["","tint"])"},
    {"unreadable UUID text reads as the input node", R"({"name":"a","from":["x","tint"]})", 0, true,
     0, 0, R"(["","tint"])"},
    {"later node", R"({"name":"b","from":["$n2","out"]})", 1, true, 3, 0, R"(["$n2","out"])"},
    {"second output of a later node", R"({"name":"amount","from":["$n2","alpha"]})", 2, true, 3, 1,
     R"(["$n2","alpha"])"},
    {"the node itself", R"({"name":"a","from":["$n1","out"]})", 0, true, 2, 0, R"(["$n1","out"])"},
    {"graph input of another type", R"({"name":"a","from":["","weight"]})", 0, false, 0, 0,
     nullptr},
    {"graph input that does not exist", R"({"name":"a","from":["","nope"]})", 0, false, 0, 0,
     nullptr},
    {"output of another type", R"({"name":"a","from":["$n2","alpha"]})", 0, false, 0, 0, nullptr},
    {"output that does not exist", R"({"name":"a","from":["$n2","nope"]})", 0, false, 0, 0,
     nullptr},
    {"input the class lacks, its entry not read further",
     R"({"name":"zzz","from":["","tint"],"default":5})", 0, false, 0, 0, nullptr},
};

TEST(GraphNode, ConnectionResolvesOrLeavesTheInputUnconnectedAndTheFileLoads) {
  for (const ConnectionCase& connection : connectionCases) {
    SCOPED_TRACE(connection.why);
    WideErrorCapture errors;
    const std::string text =
        libraryWithNodes(std::string(R"([{"uuid":"$n1","node":"$c1","input":[)") +
                         connection.entry + R"(]},{"uuid":"$n2","node":"$c1"}])");
    const LibraryHandle library = loadLibrary(text);
    const auto graph = graphOf(library);
    ASSERT_NE(graph, nullptr);
    EXPECT_EQ(errors.text(), L"");
    size_t sourceNode = 99;
    size_t sourceOutput = 99;
    const IGraphNode* node = graph->GetNode(2);
    ASSERT_EQ(node->GetInputConnection(connection.input, &sourceNode, &sourceOutput),
              connection.connected);
    picojson::value expected = parseJson(withUUIDs(R"({"node":"$c1","uuid":"$n1"})"));
    if (connection.connected) {
      EXPECT_EQ(sourceNode, connection.sourceNode);
      EXPECT_EQ(sourceOutput, connection.sourceOutput);
      const char* inputNames[] = {"a", "b", "amount"};
      expected.get<picojson::object>()["input"] =
          parseJson(withUUIDs(std::string(R"([{"name":")") + inputNames[connection.input] +
                              R"(","from":)" + connection.writtenFrom + "}]"));
    }
    EXPECT_EQ(savedNode(*graph, 2), expected);
    EXPECT_EQ(roundTripProblem(text), "");
  }
}

// Input entries of node $n1 and how the node is written back, which is what its records
// hold: saving reads them through GetInputConnection() and GetInputDefault().
struct InputEntries {
  const char* why;
  const char* input;
  const char* written;
};

const InputEntries inputEntries[] = {
    {"object form: connections only, unknown inputs skipped, written as an array",
     R"({"amount":["$n2","alpha"],"a":["","tint"],"b":["","weight"],"zzz":5})",
     R"([{"name":"a","from":["","tint"]},{"name":"amount","from":["$n2","alpha"]}])"},
    {"a later entry for the same input overwrites what it sets",
     R"([{"name":"a","from":["","tint"],"default":{"component":"float","value":[1,1,1]}},
         {"name":"a","from":["$n2","out"]},
         {"name":"a","default":{"component":"float","value":[0,0.5,0]}},
         {"name":"b","from":["","tint"]},
         {"name":"b","from":["","weight"]}])",
     R"([{"name":"a","from":["$n2","out"],"default":{"component":"float","value":[0,0.5,0]}},
         {"name":"b","from":["","tint"]}])"},
    {"an input keeps both its connection and its default",
     R"([{"name":"amount","default":{"component":"float","value":0.25},"from":["","weight"]}])",
     R"([{"default":{"component":"float","value":0.25},"from":["","weight"],"name":"amount"}])"},
};

TEST(GraphNode, InputEntriesSetConnectionsAndDefaults) {
  for (const InputEntries& entries : inputEntries) {
    SCOPED_TRACE(entries.why);
    const LibraryHandle library =
        loadLibrary(libraryWithNodes(std::string(R"([{"uuid":"$n1","node":"$c1","input":)") +
                                     entries.input + R"(},{"uuid":"$n2","node":"$c1"}])"));
    const auto graph = graphOf(library);
    ASSERT_NE(graph, nullptr);
    EXPECT_EQ(savedNode(*graph, 2),
              parseJson(withUUIDs(std::string(R"({"node":"$c1","uuid":"$n1","input":)") +
                                  entries.written + "}")));
  }
}

struct BadNode {
  const char* why;
  const char* nodes;
  const char* errorLine;  // UUID tokens are expanded
};

const BadNode badNodes[] = {
    {"no node member", R"([{"uuid":"$n1"}])",
     "InputFileParsingException: Node $n1: member \"node\" is missing\n"},
    {"class found nowhere", R"([{"uuid":"$n1","node":"$c9"}])",
     "InputFileParsingException: Node $n1: node class $c9 not found\n"},
    {"empty class text", R"([{"uuid":"$n1","node":""}])",
     "InputFileParsingException: Node $n1: node class 00000000-0000-0000-0000-000000000000 not "
     "found\n"},
    {"node not a string", R"([{"uuid":"$n1","node":5}])",
     "InputFileParsingException: Invalid type for node\n"},
    {"desc not a string", R"([{"uuid":"$n1","node":"$c1","desc":["x"]}])",
     "InputFileParsingException: Invalid type for desc\n"},
    {"editorpos of one number", R"([{"uuid":"$n1","node":"$c1","editorpos":[1]}])",
     "InputFileParsingException: Invalid type for editorpos\n"},
    {"editorpos of three numbers", R"([{"uuid":"$n1","node":"$c1","editorpos":[1,2,3]}])",
     "InputFileParsingException: Invalid type for editorpos\n"},
    {"editorpos with a string", R"([{"uuid":"$n1","node":"$c1","editorpos":[1,"2"]}])",
     "InputFileParsingException: Invalid type for editorpos\n"},
    {"editorpos an object", R"([{"uuid":"$n1","node":"$c1","editorpos":{"x":1,"y":2}}])",
     "InputFileParsingException: Invalid type for editorpos\n"},
    {"input a number", R"([{"uuid":"$n1","node":"$c1","input":5}])",
     "InputFileParsingException: Invalid type for input\n"},
    {"input entry not an object", R"([{"uuid":"$n1","node":"$c1","input":[["a"]]}])",
     "InputFileParsingException: Invalid type for input\n"},
    {"input entry without name", R"([{"uuid":"$n1","node":"$c1","input":[{"from":["","tint"]}]}])",
     "InputFileParsingException: Value not found in object\n"},
    {"input entry name not a string", R"([{"uuid":"$n1","node":"$c1","input":[{"name":1}]}])",
     "InputFileParsingException: Value not found in object\n"},
    {"from a string", R"([{"uuid":"$n1","node":"$c1","input":[{"name":"a","from":"tint"}]}])",
     "InputFileParsingException: Invalid type for from\n"},
    {"from of one element", R"([{"uuid":"$n1","node":"$c1","input":[{"name":"a","from":[""]}]}])",
     "InputFileParsingException: Invalid type for from\n"},
    {"from of three elements",
     R"([{"uuid":"$n1","node":"$c1","input":[{"name":"a","from":["","tint","x"]}]}])",
     "InputFileParsingException: Invalid type for from\n"},
    {"from with a number", R"([{"uuid":"$n1","node":"$c1","input":[{"name":"a","from":["",0]}]}])",
     "InputFileParsingException: Invalid type for from\n"},
    {"object form with a string", R"([{"uuid":"$n1","node":"$c1","input":{"a":"tint"}}])",
     "InputFileParsingException: Invalid type for from\n"},
    {"from naming no node",
     R"([{"uuid":"$n1","node":"$c1","input":[{"name":"a","from":["$n7","out"]}]}])",
     "Index out of Range: Node not present\n"},
    {"object form naming no node", R"([{"uuid":"$n1","node":"$c1","input":{"b":["$n7","out"]}}])",
     "Index out of Range: Node not present\n"},
    {"default not an object", R"([{"uuid":"$n1","node":"$c1","input":[{"name":"a","default":1}]}])",
     "InputFileParsingException: Invalid type for default\n"},
    {"default without value",
     R"([{"uuid":"$n1","node":"$c1","input":[{"name":"a","default":{"component":"float"}}]}])",
     "InputFileParsingException: Value has no value setting!\n"},
    {"default without component",
     R"([{"uuid":"$n1","node":"$c1","input":[{"name":"a","default":{"value":1}}]}])",
     "InputFileParsingException: Value not found in object\n"},
};

TEST(GraphNode, RefusesMalformedNodesWithOneExactLine) {
  for (const BadNode& node : badNodes) {
    SCOPED_TRACE(node.why);
    WideErrorCapture errors;
    EXPECT_EQ(loadLibrary(libraryWithNodes(node.nodes)), nullptr);
    const std::string expected = withUUIDs(node.errorLine);
    EXPECT_EQ(errors.text(), std::wstring(expected.begin(), expected.end()));
  }
}

// The graph factory edits copies of graphs through Connect and Disconnect.
class EditedNode : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(library, nullptr);
    graph = std::make_shared<Graph>(dynamic_cast<const Graph&>(*graphOf(library)));
  }
  std::vector<NodeInput> records() const { return graph->GetGraphNode(2).Inputs(); }

  LibraryHandle library = loadLibrary(libraryWithNodes(R"([
      {"uuid":"$n1","desc":"target","node":"$c1","editorpos":[5,6],"input":[
        {"name":"b","from":["","tint"],"default":{"component":"float","value":[1,2,3]}}]},
      {"uuid":"$n2","node":"$c1"}])"));
  std::shared_ptr<Graph> graph;
};

TEST_F(EditedNode, ConnectReportsWhatFailsAndThenChangesNothing) {
  GraphNode& target = graph->MutableNode(2);
  const IGraphNode& source = *graph->GetNode(3);
  const struct {
    const char* input;
    const char* output;
    ConnectionResult result;
  } failures[] = {
      {"zzz", "out", ConnectionNotFound},
      {"a", "nope", ConnectionNotFound},
      {"a", "alpha", ConnectionTypeMismatch},
      {"b", "alpha", ConnectionTypeMismatch},
  };
  for (const auto& failure : failures) {
    SCOPED_TRACE(std::string(failure.input) + " from " + failure.output);
    EXPECT_EQ(target.Connect(failure.input, source, failure.output, *graph), failure.result);
    const std::vector<NodeInput> now = records();
    EXPECT_FALSE(now[0].connected);
    EXPECT_TRUE(now[1].connected);
    EXPECT_EQ(now[1].sourceNode, 0u);
  }
}

TEST_F(EditedNode, ConnectingToTheInputNodeEndsAsTheNilPathDoes) {
  GraphNode& target = graph->MutableNode(2);
  EXPECT_EQ(target.Connect("amount", *graph->GetNode(0), "weight", *graph), ConnectionOk);
  EXPECT_EQ(target.Connect("b", *graph->GetNode(3), "out", *graph), ConnectionOk);
  size_t sourceNode = 9;
  size_t sourceOutput = 9;
  ASSERT_TRUE(target.GetInputConnection(2, &sourceNode, &sourceOutput));
  EXPECT_EQ(sourceNode, 0u);
  EXPECT_EQ(sourceOutput, 1u);
  ASSERT_TRUE(target.GetInputConnection(1, &sourceNode, &sourceOutput));
  EXPECT_EQ(sourceNode, 3u);
  EXPECT_EQ(sourceOutput, 0u);
  target.Disconnect(1);
  EXPECT_FALSE(target.GetInputConnection(1, nullptr, nullptr));
  ASSERT_NE(target.GetInputDefault(1), nullptr);
  EXPECT_EQ(target.GetInputDefault(1)->GetFloat(2), 3.0f);
}

}  // namespace
}  // namespace mat
