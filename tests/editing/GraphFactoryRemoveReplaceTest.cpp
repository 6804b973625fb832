// The editing operations of a graph factory that renumber: removing inputs, outputs and
// nodes, and replacing nodes with and without a change of signature.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "editing/EditingTestLibrary.h"
#include "mat/mat.h"

namespace mat {
namespace {

using test::connectionText;
using test::defaultText;
using test::FactoryPtr;
using test::floatValue;
using test::nodeAt;
using test::valueText;
namespace uuids = test::uuids;

using GraphFactoryRemoveTest = test::FactoryTest;
using GraphFactoryReplaceTest = test::FactoryTest;

std::string floatText(float element) { return valueText(floatValue(element).get()); }

// The connection text of every input of `node`, in order.
std::vector<std::string> connections(const IGraphNode* node) {
  std::vector<std::string> texts;
  for (size_t i = 0; i < node->GetNodeClass()->GetInputCount(); ++i) {
    texts.push_back(connectionText(node, i));
  }
  return texts;
}

using Texts = std::vector<std::string>;

TEST_F(GraphFactoryRemoveTest, RemoveInputDropsItsConnectionsAndMovesLaterOnesDown) {
  FactoryPtr factory = NewFactory();
  const char* const names[] = {"a", "b", "c"};
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(factory->AddInput(Float(), names[i], floatValue(float(i + 1)).get()), ConnectionOk);
    ASSERT_EQ(factory->AddOutput(Float(), names[i]), ConnectionOk);
    // Defaults held by the input node's records, one per graph input.
    factory->SetInputDefault(factory->GetInputNode(), i, floatValue(float(10 * (i + 1))).get());
  }
  const IGraphNode* mix = nullptr;
  ASSERT_EQ(factory->AddNode(Class(uuids::mix), "mix", &mix), ConnectionOk);
  const IGraphNode* input = factory->GetInputNode();
  const IGraphNode* output = factory->GetOutputNode();
  ASSERT_EQ(factory->Connect(input, "a", mix, "a"), ConnectionOk);
  ASSERT_EQ(factory->Connect(input, "b", mix, "b"), ConnectionOk);
  ASSERT_EQ(factory->Connect(input, "c", mix, "t"), ConnectionOk);
  ASSERT_EQ(factory->Connect(input, "c", output, "a"), ConnectionOk);
  ASSERT_EQ(factory->Connect(input, "b", output, "b"), ConnectionOk);

  ASSERT_EQ(factory->RemoveInput("b"), ConnectionOk);
  EXPECT_EQ(connections(mix), (Texts{"0.0", "-", "0.1"}));
  EXPECT_EQ(connections(output), (Texts{"0.1", "-", "-"}));
  EXPECT_EQ(factory->RemoveInput("b"), ConnectionNotFound);

  const auto graph = factory->FinishGraph();
  ASSERT_EQ(graph->GetInputCount(), 2u);
  EXPECT_STREQ(graph->GetInput(1)->GetName(), "c");
  EXPECT_EQ(valueText(graph->GetInput(1)->GetDefault()), floatText(3));
  size_t index = 0;
  ASSERT_TRUE(graph->FindInput("c", &index));
  EXPECT_EQ(index, 1u);
  EXPECT_FALSE(graph->FindInput("b", nullptr));
  // The input node's defaults moved down with their inputs.
  EXPECT_EQ(defaultText(graph->GetNode(0), 0), floatText(10));
  EXPECT_EQ(defaultText(graph->GetNode(0), 1), floatText(30));
  EXPECT_EQ(defaultText(graph->GetNode(0), 2), "-");
}

TEST_F(GraphFactoryRemoveTest, RemoveOutputKeepsTheLaterOutputsConnectionsAndDefaults) {
  FactoryPtr factory = NewFactory();
  const IGraphNode* output = factory->GetOutputNode();
  std::vector<const IGraphNode*> nodes;
  for (const char* name : {"o1", "o2", "o3"}) {
    ASSERT_EQ(factory->AddOutput(Float(), name), ConnectionOk);
    const IGraphNode* node = nullptr;
    ASSERT_EQ(factory->AddNode(Class(uuids::add), name, &node), ConnectionOk);
    ASSERT_EQ(factory->Connect(node, "out", output, name), ConnectionOk);
    nodes.push_back(node);
  }
  factory->SetInputDefault(output, 2, floatValue(3).get());
  ASSERT_EQ(connections(output), (Texts{"2.0", "3.0", "4.0"}));

  ASSERT_EQ(factory->RemoveOutput("o2"), ConnectionOk);
  EXPECT_EQ(connections(output), (Texts{"2.0", "4.0"}));
  EXPECT_EQ(defaultText(output, 1), floatText(3));
  EXPECT_EQ(defaultText(output, 0), "-");
  EXPECT_EQ(factory->RemoveOutput("o2"), ConnectionNotFound);
  // The node that fed o2 stays.
  EXPECT_EQ(nodeAt(*factory, 3), nodes[1]);

  const auto graph = factory->FinishGraph();
  ASSERT_EQ(graph->GetOutputCount(), 2u);
  EXPECT_STREQ(graph->GetOutput(1)->GetName(), "o3");
}

TEST_F(GraphFactoryRemoveTest, RemoveNodeDropsItsConnectionsAndRenumbersTheLaterNodes) {
  FactoryPtr factory = NewFactory();
  ASSERT_EQ(factory->AddInput(Float(), "x", nullptr), ConnectionOk);
  ASSERT_EQ(factory->AddOutput(Float(), "o"), ConnectionOk);
  const IGraphNode* nodes[4] = {};
  const char* const classes[] = {uuids::add, uuids::add, uuids::add, uuids::mix};
  for (int i = 0; i < 4; ++i) {
    ASSERT_EQ(factory->AddNode(Class(classes[i]), nullptr, &nodes[i]), ConnectionOk);
  }
  const IGraphNode* input = factory->GetInputNode();
  ASSERT_EQ(factory->Connect(input, "x", nodes[0], "a"), ConnectionOk);
  ASSERT_EQ(factory->Connect(nodes[0], "out", nodes[1], "a"), ConnectionOk);
  ASSERT_EQ(factory->Connect(input, "x", nodes[1], "b"), ConnectionOk);
  ASSERT_EQ(factory->Connect(nodes[1], "out", nodes[2], "a"), ConnectionOk);
  ASSERT_EQ(factory->Connect(nodes[0], "out", nodes[3], "a"), ConnectionOk);
  ASSERT_EQ(factory->Connect(nodes[1], "out", nodes[3], "b"), ConnectionOk);
  ASSERT_EQ(factory->Connect(nodes[2], "out", nodes[3], "t"), ConnectionOk);
  ASSERT_EQ(factory->Connect(nodes[2], "out", factory->GetOutputNode(), "o"), ConnectionOk);
  factory->SetInputDefault(nodes[3], 0, floatValue(4).get());

  ASSERT_EQ(factory->RemoveNode(2), ConnectionOk);
  ASSERT_EQ(factory->GetNodeCount(), 5u);
  EXPECT_EQ(nodeAt(*factory, 2), nodes[1]);
  EXPECT_EQ(nodeAt(*factory, 3), nodes[2]);
  EXPECT_EQ(nodeAt(*factory, 4), nodes[3]);
  EXPECT_EQ(connections(nodes[1]), (Texts{"-", "0.0"}));
  EXPECT_EQ(connections(nodes[2]), (Texts{"2.0", "-"}));
  EXPECT_EQ(connections(nodes[3]), (Texts{"-", "2.0", "3.0"}));
  EXPECT_EQ(defaultText(nodes[3], 0), floatText(4));
  EXPECT_EQ(connections(factory->GetOutputNode()), (Texts{"3.0"}));
}

TEST_F(GraphFactoryReplaceTest, AnIdenticalSignatureKeepsIndexConnectionsAndDefaults) {
  // A graph with the signature of "add": a nested graph may take a node class's place.
  FactoryPtr adder = NewFactory("adder");
  ASSERT_EQ(adder->AddInput(Float(), "a", nullptr), ConnectionOk);
  ASSERT_EQ(adder->AddInput(Float(), "b", nullptr), ConnectionOk);
  ASSERT_EQ(adder->AddOutput(Float(), "out"), ConnectionOk);
  const auto adderGraph = adder->FinishGraph();

  FactoryPtr factory = CloneOf(uuids::material);
  const IGraphNode* gained = nodeAt(*factory, 3);
  const UUID oldUUID = gained->GetUUID();
  factory->SetEditorPosition(gained, 5, 6);
  const IGraphNode* summed = nullptr;
  ASSERT_EQ(factory->ReplaceNode(3, Class(uuids::add), false, "summed", &summed), ConnectionOk);
  ASSERT_EQ(factory->GetNodeCount(), 6u);
  EXPECT_EQ(nodeAt(*factory, 3), summed);
  EXPECT_NE(summed->GetUUID(), oldUUID);
  EXPECT_STREQ(summed->GetName(), "summed");
  EXPECT_EQ(summed->GetNodeClass(), Class(uuids::add));
  EXPECT_EQ(summed->GetNodeKind(), ClassNode);
  EXPECT_EQ(connections(summed), (Texts{"2.0", "0.1"}));
  EXPECT_EQ(defaultText(summed, 1), floatText(2));
  float x = 1;
  float y = 1;
  summed->GetEditorPosition(&x, &y);
  EXPECT_EQ(x, 0);
  EXPECT_EQ(y, 0);
  EXPECT_EQ(connections(factory->GetOutputNode()), (Texts{"3.0", "2.0"}));

  const IGraphNode* nested = nullptr;
  ASSERT_EQ(factory->ReplaceNode(4, adderGraph, false, nullptr, &nested), ConnectionOk);
  EXPECT_EQ(nodeAt(*factory, 4), nested);
  EXPECT_EQ(nested->GetNodeKind(), NestedGraphNode);
  EXPECT_STREQ(nested->GetName(), "");
  EXPECT_EQ(connections(nested), (Texts{"4.0", "-"}));  // still fed by itself
  EXPECT_EQ(defaultText(nested, 1), floatText(3));
}

// One node "target" between a source and three consumers, replaced by a class of
// another signature:
//   2 source: add                         a from x
//   3 target: add                         a and b from 2.out, default 5 on a
//   4 consumer: multiply                  a from 3.out
//   5 rounder: round                      a from 3.out
//   outputs o from 3.out, p from 2.out
struct SignatureChange {
  const char* why;
  const char* nodeClass;
  Texts replacementInputs;  // the new node's inputs, now node 5
  std::string consumerA;
  std::string rounderA;
  std::string outputO;
};

const SignatureChange signatureChanges[] = {
    {"more inputs: every input fed before is fed again, t stays open",
     uuids::mix,
     {"2.0", "2.0", "-"},
     "5.0",
     "5.0",
     "5.0"},
    {"a turns int: a stays open, b and the outputs carry on",
     uuids::offset,
     {"-", "2.0"},
     "5.0",
     "5.0",
     "5.0"},
    {"b disappears and out turns int: only a is fed again", uuids::round, {"2.0"}, "-", "-", "-"},
};

TEST_F(GraphFactoryReplaceTest, AChangedSignatureAppendsTheNodeAndReconnectsWhatStillFits) {
  for (const SignatureChange& row : signatureChanges) {
    SCOPED_TRACE(row.why);
    FactoryPtr factory = NewFactory();
    ASSERT_EQ(factory->AddInput(Float(), "x", nullptr), ConnectionOk);
    ASSERT_EQ(factory->AddOutput(Float(), "o"), ConnectionOk);
    ASSERT_EQ(factory->AddOutput(Float(), "p"), ConnectionOk);
    const IGraphNode *source = nullptr, *target = nullptr, *consumer = nullptr, *rounder = nullptr;
    ASSERT_EQ(factory->AddNode(Class(uuids::add), "source", &source), ConnectionOk);
    ASSERT_EQ(factory->AddNode(Class(uuids::add), "target", &target), ConnectionOk);
    ASSERT_EQ(factory->AddNode(Class(uuids::multiply), "consumer", &consumer), ConnectionOk);
    ASSERT_EQ(factory->AddNode(Class(uuids::round), "rounder", &rounder), ConnectionOk);
    const IGraphNode* output = factory->GetOutputNode();
    ASSERT_EQ(factory->Connect(factory->GetInputNode(), "x", source, "a"), ConnectionOk);
    ASSERT_EQ(factory->Connect(source, "out", target, "a"), ConnectionOk);
    ASSERT_EQ(factory->Connect(source, "out", target, "b"), ConnectionOk);
    ASSERT_EQ(factory->Connect(target, "out", consumer, "a"), ConnectionOk);
    ASSERT_EQ(factory->Connect(target, "out", rounder, "a"), ConnectionOk);
    ASSERT_EQ(factory->Connect(target, "out", output, "o"), ConnectionOk);
    ASSERT_EQ(factory->Connect(source, "out", output, "p"), ConnectionOk);
    factory->SetInputDefault(target, 0, floatValue(5).get());

    const IGraphNode* replacement = nullptr;
    ASSERT_EQ(factory->ReplaceNode(3, Class(row.nodeClass), true, "new", &replacement),
              ConnectionOk);
    ASSERT_EQ(factory->GetNodeCount(), 6u);
    EXPECT_EQ(nodeAt(*factory, 5), replacement);
    EXPECT_EQ(nodeAt(*factory, 3), consumer);
    EXPECT_EQ(nodeAt(*factory, 4), rounder);
    EXPECT_EQ(connections(replacement), row.replacementInputs);
    EXPECT_EQ(defaultText(replacement, 0), "-");  // defaults stay with the old node
    EXPECT_EQ(connectionText(consumer, 0), row.consumerA);
    EXPECT_EQ(connectionText(rounder, 0), row.rounderA);
    EXPECT_EQ(connections(output), (Texts{row.outputO, "2.0"}));
    EXPECT_EQ(connections(source), (Texts{"0.0", "-"}));
  }
}

}  // namespace
}  // namespace mat
