#include "editing/GraphFactory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "editing/EditingTestLibrary.h"
#include "mat/mat.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

using test::connectionText;
using test::defaultText;
using test::describe;
using test::FactoryPtr;
using test::floatValue;
using test::nodeAt;
using test::valueText;
namespace uuids = test::uuids;

using GraphFactoryTest = test::FactoryTest;

// A handle that no operation returns, to see that a failing one writes null over it.
const IGraphNode* const untouched = reinterpret_cast<const IGraphNode*>(std::uintptr_t{1});

// A new graph's own rules (special nodes, random UUID for nil) are the graph's; the
// factory hands out its special nodes and finishes the graph into the library given.
TEST_F(GraphFactoryTest, NewFactoryHandsOutTheSpecialNodesAndFinishesIntoItsLibrary) {
  FactoryPtr factory(createNewGraphFactory(edits.get(), nullptr, UUID{}));
  ASSERT_EQ(factory->GetNodeCount(), 2u);
  EXPECT_EQ(nodeAt(*factory, 0), factory->GetInputNode());
  EXPECT_EQ(nodeAt(*factory, 1), factory->GetOutputNode());
  EXPECT_EQ(factory->GetInputNode()->GetNodeKind(), GraphInputNode);
  EXPECT_EQ(factory->GetOutputNode()->GetNodeKind(), GraphOutputNode);

  const auto graph = factory->FinishGraph();
  EXPECT_STREQ(graph->GetName(), "");
  EXPECT_EQ(graph->GetLibrary(), edits.get());
  EXPECT_NE(graph->GetUUID(), UUID{});
  const UUID chosen = makeUUID("00000000-0000-4000-8000-00000000abcd");
  EXPECT_EQ(FactoryPtr(createNewGraphFactory(edits.get(), "x", chosen))->FinishGraph()->GetUUID(),
            chosen);
}

TEST_F(GraphFactoryTest, InputsAndOutputsAreSeparateNameSpacesAndInputsCopyTheirDefault) {
  FactoryPtr factory = NewFactory();
  test::ValuePtr half = floatValue(0.5f);
  EXPECT_EQ(factory->AddInput(Float(), "a", half.get()), ConnectionOk);
  half.reset();  // the input holds a copy
  EXPECT_EQ(factory->AddInput(Int(), "a", nullptr), ConnectionNameInUse);
  EXPECT_EQ(factory->AddOutput(Float(), "a"), ConnectionOk);
  EXPECT_EQ(factory->AddOutput(Int(), "a"), ConnectionNameInUse);
  EXPECT_EQ(factory->AddInput(Int(), nullptr, nullptr), ConnectionOk);  // the empty name
  EXPECT_EQ(factory->AddInput(Int(), "", nullptr), ConnectionNameInUse);

  const auto graph = factory->FinishGraph();
  ASSERT_EQ(graph->GetInputCount(), 2u);
  ASSERT_EQ(graph->GetOutputCount(), 1u);
  EXPECT_EQ(graph->GetInput(0)->GetType(), Float());
  EXPECT_EQ(valueText(graph->GetInput(0)->GetDefault()), R"({"component":"float","value":0.5})");
  EXPECT_STREQ(graph->GetInput(1)->GetName(), "");
  EXPECT_EQ(graph->GetInput(1)->GetDefault(), nullptr);
  EXPECT_EQ(graph->GetOutput(0)->GetType(), Float());
  EXPECT_EQ(graph->GetOutput(0)->GetDefault(), nullptr);
}

// The graphs "material" and one other factory's node at hand for a refused edit.
struct Session {
  IGraphFactory& factory;
  IGraphFactory& other;
  const test::TestLibraries& libraries;
  const IGraphNode* Node(size_t index) const { return nodeAt(factory, index); }
  const IType* Float() const { return libraries.Type(uuids::floatType); }
};

struct RefusedEdit {
  const char* why;
  ConnectionResult expected;
  std::function<ConnectionResult(const Session&)> edit;
};

// Runs an operation that reports a node through its argument, and expects null there.
template <typename Operation>
ConnectionResult expectNullNode(Operation operation) {
  const IGraphNode* node = untouched;
  const ConnectionResult result = operation(&node);
  EXPECT_EQ(node, nullptr);
  return result;
}

const RefusedEdit refusedEdits[] = {
    {"AddNode without a class", ConnectionInvalidNodes,
     [](const Session& s) {
       return expectNullNode(
           [&](const IGraphNode** node) { return s.factory.AddNode(nullptr, "x", node); });
     }},
    {"AddInput of an input's name", ConnectionNameInUse,
     [](const Session& s) { return s.factory.AddInput(s.Float(), "gain", nullptr); }},
    {"AddOutput of an output's name", ConnectionNameInUse,
     [](const Session& s) { return s.factory.AddOutput(s.Float(), "raw"); }},
    {"RemoveInput of an output's name", ConnectionNotFound,
     [](const Session& s) { return s.factory.RemoveInput("result"); }},
    {"RemoveInput of null", ConnectionNotFound,
     [](const Session& s) { return s.factory.RemoveInput(nullptr); }},
    {"RemoveOutput of an input's name", ConnectionNotFound,
     [](const Session& s) { return s.factory.RemoveOutput("gain"); }},
    {"RemoveOutput of null", ConnectionNotFound,
     [](const Session& s) { return s.factory.RemoveOutput(nullptr); }},
    {"RemoveNode of the input node", ConnectionNotFound,
     [](const Session& s) { return s.factory.RemoveNode(0); }},
    {"RemoveNode of the output node", ConnectionNotFound,
     [](const Session& s) { return s.factory.RemoveNode(1); }},
    {"RemoveNode at the node count", ConnectionNotFound,
     [](const Session& s) { return s.factory.RemoveNode(6); }},
    {"RemoveNode far out", ConnectionNotFound,
     [](const Session& s) { return s.factory.RemoveNode(SIZE_MAX); }},
    {"ReplaceNode of the input node", ConnectionNotFound,
     [](const Session& s) {
       return expectNullNode([&](const IGraphNode** node) {
         return s.factory.ReplaceNode(0, s.libraries.Class(uuids::add), true, "x", node);
       });
     }},
    {"ReplaceNode of the output node", ConnectionNotFound,
     [](const Session& s) {
       return expectNullNode([&](const IGraphNode** node) {
         return s.factory.ReplaceNode(1, s.libraries.Class(uuids::add), true, "x", node);
       });
     }},
    {"ReplaceNode at the node count", ConnectionNotFound,
     [](const Session& s) {
       return expectNullNode([&](const IGraphNode** node) {
         return s.factory.ReplaceNode(6, s.libraries.Class(uuids::add), true, "x", node);
       });
     }},
    {"ReplaceNode without a class", ConnectionInvalidNodes,
     [](const Session& s) {
       return expectNullNode([&](const IGraphNode** node) {
         return s.factory.ReplaceNode(3, nullptr, true, "x", node);
       });
     }},
    {"ReplaceNode with another signature, not allowed", ConnectionTypeMismatch,
     [](const Session& s) {
       return expectNullNode([&](const IGraphNode** node) {
         return s.factory.ReplaceNode(3, s.libraries.Class(uuids::mix), false, "x", node);
       });
     }},
    {"GetNode at the node count", ConnectionNotFound,
     [](const Session& s) {
       return expectNullNode([&](const IGraphNode** node) { return s.factory.GetNode(6, node); });
     }},
    {"Connect from null", ConnectionInvalidNodes,
     [](const Session& s) { return s.factory.Connect(nullptr, "out", s.Node(3), "a"); }},
    {"Connect into null", ConnectionInvalidNodes,
     [](const Session& s) { return s.factory.Connect(s.Node(4), "out", nullptr, "a"); }},
    {"Connect a node to itself", ConnectionInvalidNodes,
     [](const Session& s) { return s.factory.Connect(s.Node(4), "out", s.Node(4), "b"); }},
    {"Connect from the output node", ConnectionInvalidNodes,
     [](const Session& s) {
       return s.factory.Connect(s.factory.GetOutputNode(), "result", s.Node(3), "a");
     }},
    {"Connect into another graph's node", ConnectionInvalidNodes,
     [](const Session& s) { return s.factory.Connect(s.Node(4), "out", nodeAt(s.other, 2), "a"); }},
    {"Connect from an output the source lacks", ConnectionNotFound,
     [](const Session& s) { return s.factory.Connect(s.Node(4), "y", s.Node(3), "a"); }},
    {"Connect into an input the target lacks", ConnectionNotFound,
     [](const Session& s) { return s.factory.Connect(s.Node(4), "out", s.Node(3), "t"); }},
    {"Connect from a graph input that does not exist", ConnectionNotFound,
     [](const Session& s) {
       return s.factory.Connect(s.factory.GetInputNode(), "result", s.Node(3), "a");
     }},
    {"Connect into a graph output that does not exist", ConnectionNotFound,
     [](const Session& s) {
       return s.factory.Connect(s.Node(4), "out", s.factory.GetOutputNode(), "gain");
     }},
    {"Connect with a null output name", ConnectionNotFound,
     [](const Session& s) { return s.factory.Connect(s.Node(4), nullptr, s.Node(3), "a"); }},
    {"Connect with a null input name", ConnectionNotFound,
     [](const Session& s) { return s.factory.Connect(s.Node(4), "out", s.Node(3), nullptr); }},
    {"Connect an int output into a float input", ConnectionTypeMismatch,
     [](const Session& s) { return s.factory.Connect(s.Node(5), "out", s.Node(3), "a"); }},
    {"Connect an int output into a float graph output", ConnectionTypeMismatch,
     [](const Session& s) {
       return s.factory.Connect(s.Node(5), "out", s.factory.GetOutputNode(), "raw");
     }},
};

TEST_F(GraphFactoryTest, EveryRefusedEditReportsItsCodeAndLeavesTheGraphAsItWas) {
  FactoryPtr other = NewFactory();
  ASSERT_EQ(other->AddNode(Class(uuids::add), "elsewhere", nullptr), ConnectionOk);
  for (const RefusedEdit& row : refusedEdits) {
    SCOPED_TRACE(row.why);
    FactoryPtr factory = CloneOf(uuids::material);
    const std::string before = describe(*factory);
    EXPECT_EQ(row.edit(Session{*factory, *other, libraries}), row.expected);
    EXPECT_EQ(describe(*factory), before);
  }
}

TEST_F(GraphFactoryTest, ConnectFromANodeOfAnotherGraphThrowsBeforeAnyChange) {
  FactoryPtr factory = CloneOf(uuids::material);
  FactoryPtr other = CloneOf(uuids::material);
  const std::string before = describe(*factory);
  EXPECT_THROW_MSG(factory->Connect(nodeAt(*other, 4), "out", nodeAt(*factory, 3), "a"),
                   InvalidDataAccess, "Index out of Range: Node not present");
  EXPECT_EQ(describe(*factory), before);
}

TEST_F(GraphFactoryTest, ConnectReplacesTheEarlierSourceOfAnInput) {
  FactoryPtr factory = CloneOf(uuids::material);
  const IGraphNode* gained = nodeAt(*factory, 3);
  ASSERT_EQ(connectionText(gained, 0), "2.0");
  EXPECT_EQ(factory->Connect(nodeAt(*factory, 4), "out", gained, "a"), ConnectionOk);
  EXPECT_EQ(connectionText(gained, 0), "4.0");
  // A graph output fed straight from a graph input.
  EXPECT_EQ(factory->Connect(factory->GetInputNode(), "gain", factory->GetOutputNode(), "raw"),
            ConnectionOk);
  EXPECT_EQ(connectionText(factory->GetOutputNode(), 1), "0.1");
}

TEST_F(GraphFactoryTest, AConnectionIntoTheSecondOfTwoNewOutputsFeedsOnlyIt) {
  FactoryPtr factory = NewFactory();
  ASSERT_EQ(factory->AddOutput(Float(), "first"), ConnectionOk);
  ASSERT_EQ(factory->AddOutput(Float(), "second"), ConnectionOk);
  const IGraphNode* sum = nullptr;
  ASSERT_EQ(factory->AddNode(Class(uuids::add), "sum", &sum), ConnectionOk);
  ASSERT_EQ(factory->Connect(sum, "out", factory->GetOutputNode(), "second"), ConnectionOk);

  const auto graph = factory->FinishGraph();
  EXPECT_EQ(connectionText(graph->GetNode(1), 0), "-");
  EXPECT_EQ(connectionText(graph->GetNode(1), 1), "2.0");
  const test::LibraryPtr reloaded =
      test::loadLibrary(test::saveLibrary(*edits), libraries.graphs.get(), "reloaded");
  const auto graphBack = reloaded->FindGraph(graph->GetUUID(), false);
  ASSERT_NE(graphBack, nullptr);
  EXPECT_EQ(describe(*graphBack), describe(*graph));
}

TEST_F(GraphFactoryTest, SetInputDefaultCopiesTheValueAndNullRemovesIt) {
  FactoryPtr factory = CloneOf(uuids::material);
  const IGraphNode* loop = nodeAt(*factory, 4);
  ASSERT_EQ(defaultText(loop, 1), R"({"component":"float","value":3})");
  test::ValuePtr seven = floatValue(7);
  factory->SetInputDefault(loop, 0, seven.get());
  seven.reset();
  EXPECT_EQ(defaultText(loop, 0), R"({"component":"float","value":7})");
  EXPECT_EQ(connectionText(loop, 0), "4.0");  // the connection stays
  factory->SetInputDefault(loop, 1, nullptr);
  EXPECT_EQ(defaultText(loop, 1), "-");

  // Ignored: an input the class lacks, a null node, a node of another graph.
  FactoryPtr other = CloneOf(uuids::material);
  const test::ValuePtr eight = floatValue(8);
  const std::string before = describe(*factory);
  factory->SetInputDefault(loop, 2, eight.get());
  factory->SetInputDefault(nullptr, 0, eight.get());
  factory->SetInputDefault(nodeAt(*other, 4), 0, eight.get());
  factory->SetEditorPosition(nullptr, 1, 2);
  factory->SetEditorPosition(nodeAt(*other, 4), 1, 2);
  EXPECT_EQ(describe(*factory), before);
  EXPECT_EQ(defaultText(nodeAt(*other, 4), 0), "-");

  // The input node's records hold the defaults of the graph inputs for a resolver.
  factory->SetInputDefault(factory->GetInputNode(), 1, eight.get());
  EXPECT_EQ(defaultText(factory->GetInputNode(), 1), R"({"component":"float","value":8})");
}

// Which of several graphs with one UUID or name a lookup finds is the library's rule.
TEST_F(GraphFactoryTest, FinishGraphRegistersTheGraphUnderItsUUIDAndItsLastName) {
  const UUID chosen = makeUUID("00000000-0000-4000-8000-00000000f001");
  FactoryPtr factory(createNewGraphFactory(edits.get(), "wood", chosen));
  factory->SetName("oak");
  const auto oak = factory->FinishGraph();
  EXPECT_STREQ(oak->GetName(), "oak");
  EXPECT_EQ(edits->FindGraph(chosen, false), oak);
  EXPECT_EQ(edits->FindGraphByName("oak"), oak);
  EXPECT_EQ(edits->FindGraphByName("wood"), nullptr);
  EXPECT_EQ(edits->FindAnyNodeClass(chosen, false), oak);
}

TEST_F(GraphFactoryTest, AFinishedFactoryRefusesEverythingAndChangesNothing) {
  FactoryPtr factory = CloneOf(uuids::material);
  const IGraphNode* loop = nodeAt(*factory, 4);
  const auto graph = factory->FinishGraph();
  ASSERT_NE(graph, nullptr);
  const std::string before = describe(*graph);

  const IGraphNode* node = untouched;
  EXPECT_EQ(factory->AddNode(Class(uuids::add), "x", &node), ConnectionInvalidNodes);
  EXPECT_EQ(node, nullptr);
  EXPECT_EQ(factory->AddInput(Float(), "x", nullptr), ConnectionInvalidNodes);
  EXPECT_EQ(factory->AddOutput(Float(), "x"), ConnectionInvalidNodes);
  EXPECT_EQ(factory->RemoveInput("gain"), ConnectionInvalidNodes);
  EXPECT_EQ(factory->RemoveOutput("raw"), ConnectionInvalidNodes);
  EXPECT_EQ(factory->RemoveNode(2), ConnectionInvalidNodes);
  node = untouched;
  EXPECT_EQ(factory->ReplaceNode(2, Class(uuids::add), true, "x", &node), ConnectionInvalidNodes);
  EXPECT_EQ(node, nullptr);
  node = untouched;
  EXPECT_EQ(factory->GetNode(0, &node), ConnectionInvalidNodes);
  EXPECT_EQ(node, nullptr);
  EXPECT_EQ(factory->Connect(loop, "out", graph->GetNode(3), "a"), ConnectionInvalidNodes);
  EXPECT_EQ(factory->GetNodeCount(), 0u);
  EXPECT_EQ(factory->GetInputNode(), nullptr);
  EXPECT_EQ(factory->GetOutputNode(), nullptr);
  factory->SetName("renamed");
  factory->SetEditorPosition(loop, 1, 2);
  const test::ValuePtr one = floatValue(1);
  factory->SetInputDefault(loop, 1, one.get());
  EXPECT_EQ(factory->FinishGraph(), nullptr);

  EXPECT_EQ(describe(*graph), before);
  EXPECT_EQ(edits->GetGraphCount(), 1u);
}

// An IGraph of another implementation: the factory cannot copy it.
class ForeignGraph final : public IGraph {
 public:
  const IGraphLibrary* GetLibrary() const override { return nullptr; }
  const UUID& GetUUID() const override { return uuid_; }
  const char* GetName() const override { return "foreign"; }
  size_t GetInputCount() const override { return 0; }
  const IParameter* GetInput(size_t) const override { return nullptr; }
  bool FindInput(const char*, size_t*) const override { return false; }
  size_t GetOutputCount() const override { return 0; }
  const IParameter* GetOutput(size_t) const override { return nullptr; }
  bool FindOutput(const char*, size_t*) const override { return false; }
  bool IsGraph() const override { return true; }
  std::shared_ptr<const IGraph> AsGraph() const override { return nullptr; }
  size_t GetNodeCount() const override { return 2; }
  const IGraphNode* GetNode(size_t) const override { return nullptr; }
  size_t GetInputNodeIndex() const override { return 0; }
  size_t GetOutputNodeIndex() const override { return 1; }
  const IParameter* GetParameterFromPath(const IPortPath&, const IGraphNode**) const override {
    return nullptr;
  }

 private:
  UUID uuid_{};
};

TEST_F(GraphFactoryTest, CloneRefusesAnEmptyPointerAndAGraphOfAnotherImplementation) {
  EXPECT_EQ(cloneNewGraphFactory(edits.get(), nullptr), nullptr);
  EXPECT_EQ(cloneNewGraphFactory(edits.get(), std::make_shared<ForeignGraph>()), nullptr);
  releaseGraphFactory(nullptr);
}

// The copy itself (new UUIDs, the same nodes, no special-node defaults) is the graph's
// copy; the factory registers it where it was told while it stays the source's graph.
TEST_F(GraphFactoryTest, ACloneIsRegisteredInTheFactorysLibraryAndBelongsToTheSources) {
  const auto source = libraries.Graph(uuids::material);
  const auto copy = CloneOf(uuids::material)->FinishGraph();
  EXPECT_NE(copy->GetUUID(), source->GetUUID());
  EXPECT_EQ(copy->GetLibrary(), libraries.graphs.get());
  EXPECT_EQ(edits->FindGraph(copy->GetUUID(), false), copy);
  EXPECT_EQ(libraries.graphs->FindGraph(copy->GetUUID(), false), nullptr);
  // Same names, kinds, classes, connections and defaults; positions start at 0, 0.
  EXPECT_EQ(describe(*copy, false),
            test::replaceAll(describe(*source, false), " at 10,20 ", " at 0,0 "));
}

}  // namespace
}  // namespace mat
