#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "mat/IGraphNode.h"
#include "mat/IParameter.h"
#include "mat/IPortPath.h"
#include "mat/IType.h"
#include "resolution/NestedGraphs.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

using test::resolver::NestedGraphs;
using test::resolver::OwnedResolver;

OwnedResolver oneLevel(const IGraph& graph) {
  return OwnedResolver(createGraphResolver(&graph, false));
}

// One input of a node of one graph of NestedGraphs.h, seen one level deep.
struct Connection {
  const char* why;
  std::shared_ptr<const IGraph> NestedGraphs::*graph;
  size_t node;
  size_t input;
  size_t sourceNode;
  size_t sourceOutput;
};
const Connection connections[] = {
    {"a nested-graph node is the source", &NestedGraphs::outer, 4, 0, 3, 0},
    {"the graph's input node is the source", &NestedGraphs::outer, 2, 0, 0, 1},
    {"an ordinary node is the source", &NestedGraphs::outer, 7, 0, 6, 0},
    {"a graph output fed by a nested-graph node", &NestedGraphs::outer, 1, 1, 2, 2},
    {"a nested graph as the root, from its input node", &NestedGraphs::inner, 2, 2, 0, 1},
};

class SingleGraphResolverOnNestedGraphs : public ::testing::Test {
 protected:
  NestedGraphs graphs_ = test::resolver::makeNestedGraphs();
};

TEST_F(SingleGraphResolverOnNestedGraphs, ReportsTheSourceOneLevelUpNeverSteppingInside) {
  ASSERT_TRUE(graphs_.outer);
  for (const Connection& row : connections) {
    SCOPED_TRACE(row.why);
    const IGraph& graph = *(graphs_.*row.graph);
    OwnedResolver resolver = oneLevel(graph);
    NodeKey source{9, 9};
    size_t output = 9;
    const IValue* defaultValue = nullptr;
    EXPECT_TRUE(resolver->ResolveInput({0, row.node}, row.input, &source, &output, &defaultValue));
    EXPECT_EQ(source.instance, 0u);
    EXPECT_EQ(source.node, row.sourceNode);
    EXPECT_EQ(output, row.sourceOutput);
    EXPECT_EQ(defaultValue, nullptr);
    // Either out-pointer may be null.
    EXPECT_TRUE(resolver->ResolveInput({0, row.node}, row.input, nullptr, nullptr, &defaultValue));
    EXPECT_TRUE(resolver->ResolveInput({0, row.node}, row.input, &source, nullptr, &defaultValue));
    EXPECT_EQ(source.node, row.sourceNode);
    output = 9;
    EXPECT_TRUE(resolver->ResolveInput({0, row.node}, row.input, nullptr, &output, &defaultValue));
    EXPECT_EQ(output, row.sourceOutput);
  }
}

TEST_F(SingleGraphResolverOnNestedGraphs, UnconnectedInputsFallBackNodeClassType) {
  ASSERT_TRUE(graphs_.outer);
  struct Fallback {
    const char* why;
    const IGraph* graph;
    size_t node;
    size_t input;
    const IValue* expected;
  };
  const IGraph& inner = *graphs_.inner;
  const IGraph& outer = *graphs_.outer;
  const IGraph& middle = *graphs_.middle;
  // The order of the fallbacks is the flattened resolver's too, and is tested there.
  const Fallback fallbacks[] = {
      {"the node's own default", &inner, 3, 0, inner.GetNode(3)->GetInputDefault(0)},
      {"the graph input's default, for a nested-graph node", &outer, 3, 1,
       middle.GetInput(1)->GetDefault()},
      {"no default anywhere", &outer, 6, 0, nullptr},
      // One level deep, the input node's own record is just a node default.
      {"an input of the input node", &inner, 0, 1, graphs_.innerAmountRecord},
  };
  for (const Fallback& row : fallbacks) {
    SCOPED_TRACE(row.why);
    OwnedResolver resolver = oneLevel(*row.graph);
    NodeKey source{9, 9};
    size_t output = 9;
    const IValue* defaultValue = nullptr;
    EXPECT_FALSE(resolver->ResolveInput({0, row.node}, row.input, &source, &output, &defaultValue));
    EXPECT_EQ(defaultValue, row.expected);
    EXPECT_EQ(source, (NodeKey{9, 9}));
    EXPECT_EQ(output, 9u);
  }
}

TEST_F(SingleGraphResolverOnNestedGraphs, KnowsOneInstanceAndNoPaths) {
  ASSERT_TRUE(graphs_.outer);
  OwnedResolver resolver = oneLevel(*graphs_.outer);
  for (size_t node = 0; node < graphs_.outer->GetNodeCount(); ++node) {
    EXPECT_EQ(resolver->GetKeyFromNodeIndex(node), (NodeKey{0, node}));
    EXPECT_EQ(resolver->GetFlatIndex({0, node}), node);
    EXPECT_TRUE(resolver->IsInRootGraph({0, node}));
  }
  // The instance word is ignored: a nested-graph node stays a node of this graph.
  EXPECT_EQ(resolver->GetNode({5, 3}), graphs_.outer->GetNode(3));
  EXPECT_EQ(resolver->GetNodeKind({5, 3}), NestedGraphNode);
  EXPECT_EQ(resolver->GetNodeClass({0, 3}), graphs_.middle);
  EXPECT_EQ(resolver->GetFlatIndex({5, 3}), 3u);
  EXPECT_TRUE(resolver->IsInRootGraph({5, 3}));

  IPortPath* path = createPortPath();
  EXPECT_THROW_MSG(resolver->GetKeyFromPath(*path), std::runtime_error,
                   "GetKeyFromPath not implemented for non-flattened graphs!");
  path->AppendNodeIndex(2);
  EXPECT_THROW_MSG(resolver->GetKeyFromPath(*path), std::runtime_error,
                   "GetKeyFromPath not implemented for non-flattened graphs!");
  releasePortPath(path);

  const IValue* defaultValue = nullptr;
  EXPECT_THROW_MSG(resolver->GetNode({0, 8}), InvalidDataAccess,
                   "Index out of Range: Node key {0, 8} out of range");
  EXPECT_THROW_MSG(resolver->GetFlatIndex({1, 8}), InvalidDataAccess,
                   "Index out of Range: Node key {1, 8} out of range");
  EXPECT_THROW_MSG(resolver->ResolveInput({0, 8}, 0, nullptr, nullptr, &defaultValue),
                   InvalidDataAccess, "Index out of Range: Node key {0, 8} out of range");
  releaseGraphResolver(nullptr);
}

}  // namespace
}  // namespace mat
