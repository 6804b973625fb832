// Editing sessions as a host runs them: build a graph, or copy one and change it step by
// step, finish it, save the library and load it back.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "editing/EditingTestLibrary.h"
#include "mat/mat.h"

namespace mat {
namespace {

using test::connectionText;
using test::defaultText;
using test::describe;
using test::FactoryPtr;
using test::floatValue;
using test::LibraryPtr;
using test::nodeAt;
namespace uuids = test::uuids;

using GraphFactorySessionTest = test::FactoryTest;

// The saved text of `library`, whose one graph is `graph`, with tabs shown as two spaces
// and the random UUIDs of the graph and its nodes replaced by "graph" and "node-<index>".
std::string savedWithNamedUUIDs(const IGraphLibrary& library, const IGraph& graph) {
  std::string text = test::saveLibrary(library);
  text = test::replaceAll(text, "\t", "  ");
  text = test::replaceAll(text, test::uuidString(graph.GetUUID()), "graph");
  for (size_t i = 2; i < graph.GetNodeCount(); ++i) {
    text = test::replaceAll(text, test::uuidString(graph.GetNode(i)->GetUUID()),
                            "node-" + std::to_string(i));
  }
  return text;
}

// The library holding the graph "brick" as built below, in the canonical file text with
// each tab shown as two spaces.
const char* const savedBrick = R"([
  {
    "datasources" : [],
    "fileversion" : 1
  },
  [
    {
      "content" : "graph",
      "desc" : "brick",
      "input" : [
        {
          "default" : {
            "component" : "float",
            "value" : 0.5
          },
          "name" : "roughness",
          "type" : "00000000-0000-4000-8000-000000000001"
        },
        {
          "name" : "tint",
          "type" : "00000000-0000-4000-8000-000000000003"
        }
      ],
      "nodes" : [
        {
          "desc" : "twice",
          "input" : [
            {
              "from" : ["","roughness"],
              "name" : "x"
            }
          ],
          "node" : "00000000-0000-4000-8000-000000000201",
          "uuid" : "node-2"
        },
        {
          "desc" : "surface",
          "input" : [
            {
              "from" : ["node-2","y"],
              "name" : "base"
            },
            {
              "default" : {
                "component" : "float",
                "value" : 0.75
              },
              "name" : "gain"
            }
          ],
          "node" : "00000000-0000-4000-8000-000000000202",
          "uuid" : "node-3"
        },
        {
          "desc" : "blend",
          "editorpos" : [100,-50.5],
          "input" : [
            {
              "from" : ["node-3","result"],
              "name" : "a"
            },
            {
              "from" : ["node-2","y"],
              "name" : "b"
            },
            {
              "default" : {
                "component" : "float",
                "value" : 0.5
              },
              "name" : "t"
            }
          ],
          "node" : "00000000-0000-4000-8000-000000000103",
          "uuid" : "node-4"
        }
      ],
      "output" : [
        {
          "from" : ["node-4","out"],
          "name" : "height",
          "type" : "00000000-0000-4000-8000-000000000001"
        },
        {
          "from" : ["","tint"],
          "name" : "albedo",
          "type" : "00000000-0000-4000-8000-000000000003"
        }
      ],
      "uuid" : "graph"
    }
  ]
])";

TEST_F(GraphFactorySessionTest, BuildsAGraphOfNestedGraphsThatSavesAndLoadsBack) {
  FactoryPtr factory = NewFactory("brick");
  const IType* color = libraries.Type(uuids::colorType);
  ASSERT_EQ(factory->AddInput(Float(), "roughness", floatValue(0.5f).get()), ConnectionOk);
  ASSERT_EQ(factory->AddInput(color, "tint", nullptr), ConnectionOk);
  ASSERT_EQ(factory->AddOutput(Float(), "height"), ConnectionOk);
  ASSERT_EQ(factory->AddOutput(color, "albedo"), ConnectionOk);

  const IGraphNode *twice = nullptr, *surface = nullptr, *blend = nullptr;
  ASSERT_EQ(factory->AddNode(Class(uuids::doubler), "twice", &twice), ConnectionOk);
  ASSERT_EQ(factory->AddNode(Class(uuids::material), "surface", &surface), ConnectionOk);
  ASSERT_EQ(factory->AddNode(Class(uuids::mix), "blend", &blend), ConnectionOk);
  EXPECT_EQ(twice->GetNodeKind(), NestedGraphNode);
  EXPECT_EQ(surface->GetNodeKind(), NestedGraphNode);
  EXPECT_EQ(blend->GetNodeKind(), ClassNode);

  const IGraphNode* input = factory->GetInputNode();
  const IGraphNode* output = factory->GetOutputNode();
  ASSERT_EQ(factory->Connect(input, "roughness", twice, "x"), ConnectionOk);
  ASSERT_EQ(factory->Connect(twice, "y", surface, "base"), ConnectionOk);
  factory->SetInputDefault(surface, 1, floatValue(0.75f).get());
  ASSERT_EQ(factory->Connect(surface, "result", blend, "a"), ConnectionOk);
  ASSERT_EQ(factory->Connect(twice, "y", blend, "b"), ConnectionOk);
  factory->SetInputDefault(blend, 2, floatValue(0.5f).get());
  factory->SetEditorPosition(blend, 100, -50.5f);
  ASSERT_EQ(factory->Connect(blend, "out", output, "height"), ConnectionOk);
  ASSERT_EQ(factory->Connect(input, "tint", output, "albedo"), ConnectionOk);

  // The saved text shows every connection and default made above.
  const auto brick = factory->FinishGraph();
  ASSERT_NE(brick, nullptr);
  EXPECT_EQ(edits->FindGraphByName("brick"), brick);
  EXPECT_EQ(savedWithNamedUUIDs(*edits, *brick), savedBrick);

  const std::string saved = test::saveLibrary(*edits);
  const LibraryPtr reloaded = test::loadLibrary(saved, libraries.graphs.get(), "edits");
  ASSERT_EQ(reloaded->GetGraphCount(), 1u);
  const auto brickBack = reloaded->GetGraph(0);
  EXPECT_EQ(brickBack->GetUUID(), brick->GetUUID());
  EXPECT_EQ(describe(*brickBack), describe(*brick));
  EXPECT_EQ(brickBack->GetNode(3)->GetNodeClass(), Class(uuids::material));
  EXPECT_EQ(test::saveLibrary(*reloaded), saved);
}

TEST_F(GraphFactorySessionTest, EditsACopyStepByStepAndLeavesTheSourceAlone) {
  const std::string sourceText = test::saveLibrary(*libraries.graphs);
  FactoryPtr factory = CloneOf(uuids::material);
  const IGraphNode* input = factory->GetInputNode();
  const IGraphNode* output = factory->GetOutputNode();
  const IGraphNode* twice = nodeAt(*factory, 2);
  const IGraphNode* loop = nodeAt(*factory, 4);
  const IGraphNode* steps = nodeAt(*factory, 5);

  factory->SetName("material v2");

  // A third input, then the first one goes: its one use (twice.x) is cut, gain moves to
  // index 0 and bias to 1. The removals' own tests check each step; here the final
  // graph, the untouched source and the round trip tell whether the steps add up.
  ASSERT_EQ(factory->AddInput(Float(), "bias", floatValue(0.25f).get()), ConnectionOk);
  ASSERT_EQ(factory->RemoveInput("base"), ConnectionOk);
  ASSERT_EQ(factory->Connect(input, "bias", twice, "x"), ConnectionOk);

  // A new output fed by loop, then the first output goes: raw and extra move down with
  // their sources.
  ASSERT_EQ(factory->AddOutput(Float(), "extra"), ConnectionOk);
  ASSERT_EQ(factory->Connect(loop, "out", output, "extra"), ConnectionOk);
  ASSERT_EQ(factory->RemoveOutput("result"), ConnectionOk);

  // gained (multiply) becomes an add in place, with its connections and its default.
  const IGraphNode* summed = nullptr;
  ASSERT_EQ(factory->ReplaceNode(3, Class(uuids::add), false, "summed", &summed), ConnectionOk);

  // loop (add, fed by itself) becomes a mix, appended last: it is still fed by itself
  // and still feeds extra; steps moves from 5 to 4.
  const IGraphNode* mixed = nullptr;
  ASSERT_EQ(factory->ReplaceNode(4, Class(uuids::mix), true, "mixed", &mixed), ConnectionOk);
  EXPECT_EQ(nodeAt(*factory, 4), steps);
  EXPECT_EQ(nodeAt(*factory, 5), mixed);
  EXPECT_EQ(connectionText(mixed, 0), "5.0");
  EXPECT_EQ(defaultText(mixed, 1), "-");
  EXPECT_EQ(connectionText(output, 1), "5.0");

  // Reconnect: the mix blends summed with twice, and its t takes a default.
  ASSERT_EQ(factory->Connect(summed, "out", mixed, "a"), ConnectionOk);
  ASSERT_EQ(factory->Connect(twice, "y", mixed, "b"), ConnectionOk);
  factory->SetInputDefault(mixed, 2, floatValue(0.5f).get());
  ASSERT_EQ(factory->RemoveNode(4), ConnectionOk);  // steps

  const auto edited = factory->FinishGraph();
  ASSERT_NE(edited, nullptr);
  const std::string described = describe(*edited);
  EXPECT_EQ(describe(*edited, false), R"(graph "material v2"
inputs: gain:float=- bias:float={"component":"float","value":0.25}
outputs: raw:float=- extra:float=-
0 node "GraphInputs" kind 0 class GraphInputs at 0,0 | gain from - default - | bias from - default -
1 node "GraphOutputs" kind 1 class GraphOutputs at 0,0 | raw from 2.0 default - | extra from 4.0 default -
2 node "twice" kind 2 class doubler at 0,0 | x from 0.1 default -
3 node "summed" kind 3 class add at 0,0 | a from 2.0 default - | b from 0.0 default {"component":"float","value":2}
4 node "mixed" kind 3 class mix at 0,0 | a from 3.0 default - | b from 2.0 default - | t from - default {"component":"float","value":0.5}
)");

  EXPECT_EQ(test::saveLibrary(*libraries.graphs), sourceText);
  EXPECT_EQ(describe(*libraries.Graph(uuids::material)),
            describe(*test::loadLibrary(sourceText, libraries.base.get(), "graphs")
                          ->FindGraph(makeUUID(uuids::material), false)));

  const std::string saved = test::saveLibrary(*edits);
  const LibraryPtr reloaded = test::loadLibrary(saved, libraries.graphs.get(), "edits");
  const auto editedBack = reloaded->FindGraphByName("material v2");
  ASSERT_NE(editedBack, nullptr);
  EXPECT_EQ(describe(*editedBack), described);
  EXPECT_EQ(test::saveLibrary(*reloaded), saved);
}

}  // namespace
}  // namespace mat
