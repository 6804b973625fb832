#include "resolution/GraphResolver.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "graph/Graph.h"
#include "graph/GraphNode.h"
#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "mat/IGraphFactory.h"
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

struct PathReleaser {
  void operator()(IPortPath* path) const { releasePortPath(path); }
};

NodeKey keyFromPath(IGraphResolver& resolver, std::initializer_list<size_t> indices) {
  std::unique_ptr<IPortPath, PathReleaser> path(createPortPath());
  for (size_t index : indices) path->AppendNodeIndex(index);
  return resolver.GetKeyFromPath(*path);
}

OwnedResolver flattened(const IGraph& graph) {
  return OwnedResolver(createGraphResolver(&graph, true));
}

size_t instanceCount(const IGraphResolver& resolver) {
  return dynamic_cast<const GraphResolver&>(resolver).GetInstanceCount();
}

// The defaults that an unconnected input can fall back on, beyond the node's own.
const IValue* classDefault(const IGraph& graph, size_t node, size_t input) {
  return graph.GetNode(node)->GetNodeClass()->GetInput(input)->GetDefault();
}
const IValue* typeDefault(const IGraph& graph, size_t node, size_t input) {
  return graph.GetNode(node)->GetNodeClass()->GetInput(input)->GetType()->GetDefault();
}
const IValue* innerAmountRecord(const NestedGraphs& g) { return g.innerAmountRecord; }

// Inputs of nodes of the flattened view of "outer" that are fed. Nodes are named by their
// port paths from "outer" (NestedGraphs.h draws the graphs).
struct Fed {
  const char* why;
  std::initializer_list<size_t> node;
  size_t input;
  std::initializer_list<size_t> source;
  size_t sourceOutput;
};
const Fed fedInputs[] = {
    {"by a node two graphs down, through two output nodes", {4}, 0, {3, 2, 2}, 0},
    {"through a graph output that passes a graph input on", {4}, 1, {0}, 1},
    {"from the root's input, two levels up", {2, 2, 2}, 0, {0}, 1},
    {"from a root node, two levels up", {2, 2, 2}, 2, {5}, 0},
    {"by a sibling instance of the same graph", {2, 3, 2}, 0, {2, 2, 2}, 0},
    {"a root output, by a root node", {1}, 0, {4}, 0},
    {"an output of a nested instance, from the root's input", {2, 1}, 1, {0}, 1},
};

// Inputs whose chain ends at an unconnected input, and the default that applies.
struct Unconnected {
  const char* why;
  std::initializer_list<size_t> node;
  size_t input;
  const IValue* (*expectedDefault)(const NestedGraphs&);
};
const Unconnected unconnectedInputs[] = {
    {"the node's own default, in a nested graph",
     {2, 2, 3},
     0,
     [](const NestedGraphs& g) { return g.inner->GetNode(3)->GetInputDefault(0); }},
    {"the class's default",
     {4},
     2,
     [](const NestedGraphs& g) { return classDefault(*g.outer, 4, 2); }},
    {"the type's default",
     {5},
     0,
     [](const NestedGraphs& g) { return typeDefault(*g.outer, 5, 0); }},
    {"no default anywhere", {6}, 0, [](const NestedGraphs&) -> const IValue* { return nullptr; }},
    {"a nested-graph node's input: the graph input's default",
     {3},
     1,
     [](const NestedGraphs& g) { return g.middle->GetInput(1)->GetDefault(); }},
    // Stepping out of "inner" takes the default stored on its input node, which comes
    // before the default of the unconnected input where the chain ends.
    {"one step out: the input node's record first", {2, 3, 2}, 2, innerAmountRecord},
    {"the same chain, entered through the root's output", {1}, 1, innerAmountRecord},
    // A record taken on an early step out is dropped when a later hop is connected: only
    // the last step out counts, and "middle" stores nothing for "amount".
    {"two steps out: the graph input's default two levels up",
     {3, 2, 2},
     2,
     [](const NestedGraphs& g) { return g.middle->GetInput(1)->GetDefault(); }},
};

class GraphResolverOnNestedGraphs : public ::testing::Test {
 protected:
  NestedGraphs graphs_ = test::resolver::makeNestedGraphs();
  const test::resolver::OwnedValue stale_ = test::resolver::floatValue(1.0f);  // never read
};

// Each row runs on a fresh resolver and on one shared by all rows: no answer may depend
// on which instances earlier calls made.
TEST_F(GraphResolverOnNestedGraphs, FollowsFedInputsThroughGraphBoundaries) {
  ASSERT_TRUE(graphs_.outer);
  OwnedResolver shared = flattened(*graphs_.outer);
  for (const Fed& row : fedInputs) {
    SCOPED_TRACE(row.why);
    OwnedResolver fresh = flattened(*graphs_.outer);
    for (IGraphResolver* resolver : {fresh.get(), shared.get()}) {
      NodeKey source{99, 99};
      size_t output = 99;
      const IValue* defaultValue = stale_.get();
      const NodeKey key = keyFromPath(*resolver, row.node);
      EXPECT_TRUE(resolver->ResolveInput(key, row.input, &source, &output, &defaultValue));
      EXPECT_EQ(defaultValue, nullptr);
      const size_t instancesBefore = instanceCount(*resolver);
      EXPECT_EQ(source, keyFromPath(*resolver, row.source));
      EXPECT_EQ(instanceCount(*resolver), instancesBefore) << "the source's instance is new";
      EXPECT_EQ(output, row.sourceOutput);
    }
  }
}

TEST_F(GraphResolverOnNestedGraphs, FallsBackOnDefaultsWhereTheChainEnds) {
  ASSERT_TRUE(graphs_.outer);
  OwnedResolver shared = flattened(*graphs_.outer);
  for (const Unconnected& row : unconnectedInputs) {
    SCOPED_TRACE(row.why);
    OwnedResolver fresh = flattened(*graphs_.outer);
    for (IGraphResolver* resolver : {fresh.get(), shared.get()}) {
      NodeKey source{99, 99};
      size_t output = 99;
      const IValue* defaultValue = stale_.get();
      const NodeKey key = keyFromPath(*resolver, row.node);
      EXPECT_FALSE(resolver->ResolveInput(key, row.input, &source, &output, &defaultValue));
      EXPECT_EQ(defaultValue, row.expectedDefault(graphs_));
      EXPECT_EQ(source, (NodeKey{99, 99})) << "written although nothing was found";
      EXPECT_EQ(output, 99u);
    }
  }
}

// Every node of every instance, reached by paths, has its own flat number, and the
// numbers cover 0 to the flat node total - 1 whatever the order in which instances came.
TEST_F(GraphResolverOnNestedGraphs, FlatNumbersOfAllInstancesAreDistinctAndDense) {
  ASSERT_TRUE(graphs_.outer);
  OwnedResolver resolver = flattened(*graphs_.outer);
  NodeKey unused{};
  size_t output = 0;
  const IValue* defaultValue = nullptr;
  resolver->ResolveInput({0, 4}, 0, &unused, &output, &defaultValue);  // makes two instances

  std::vector<NodeKey> keys;
  for (size_t m : {2, 3}) {
    for (size_t i : {2, 3}) {
      for (size_t node = 0; node < graphs_.inner->GetNodeCount(); ++node) {
        keys.push_back(keyFromPath(*resolver, {m, i, node}));
      }
    }
    for (size_t node = 0; node < graphs_.middle->GetNodeCount(); ++node) {
      keys.push_back(keyFromPath(*resolver, {m, node}));
    }
  }
  for (size_t node = 0; node < graphs_.outer->GetNodeCount(); ++node) {
    keys.push_back(resolver->GetKeyFromNodeIndex(node));
  }
  ASSERT_EQ(instanceCount(*resolver), 7u);
  std::vector<int> seen(keys.size(), 0);
  for (const NodeKey& key : keys) {
    const size_t flat = resolver->GetFlatIndex(key);
    ASSERT_LT(flat, seen.size()) << key;
    ++seen[flat];
    EXPECT_EQ(resolver->IsInRootGraph(key), key.instance == 0) << key;
  }
  EXPECT_EQ(std::vector<int>(keys.size(), 1), seen);
}

TEST_F(GraphResolverOnNestedGraphs, NumbersInstancesInTheOrderOperationsFirstReachThem) {
  ASSERT_TRUE(graphs_.outer);
  OwnedResolver resolver = flattened(*graphs_.outer);
  // outer has 8 nodes, middle and inner 4 each.
  for (size_t node = 0; node < 8; ++node) {
    EXPECT_EQ(resolver->GetFlatIndex({0, node}), node);
    EXPECT_TRUE(resolver->IsInRootGraph({0, node}));
  }
  EXPECT_EQ(instanceCount(*resolver), 1u);

  // Resolving mix.a of the root walks into middleB (instance 1), then into its innerA.
  NodeKey source{};
  size_t output = 0;
  const IValue* defaultValue = nullptr;
  ASSERT_TRUE(resolver->ResolveInput({0, 4}, 0, &source, &output, &defaultValue));
  EXPECT_EQ(source, (NodeKey{2, 2}));
  EXPECT_EQ(resolver->GetFlatIndex(source), 8u + 4u + 2u);
  EXPECT_FALSE(resolver->IsInRootGraph(source));

  EXPECT_EQ(keyFromPath(*resolver, {3}), (NodeKey{0, 3}));
  EXPECT_EQ(keyFromPath(*resolver, {3, 2, 2}), (NodeKey{2, 2}));
  EXPECT_EQ(keyFromPath(*resolver, {3, 2}), (NodeKey{1, 2}));
  EXPECT_EQ(instanceCount(*resolver), 3u) << "paths already walked add nothing";

  // middleA is another node of the same class: a new instance with its own numbers.
  EXPECT_EQ(keyFromPath(*resolver, {2, 3}), (NodeKey{3, 3}));
  EXPECT_EQ(resolver->GetFlatIndex({3, 3}), 16u + 3u);
  // innerB of middleB: the same nested graph as instance 2, entered through another node.
  EXPECT_EQ(keyFromPath(*resolver, {3, 3, 0}), (NodeKey{4, 0}));
  EXPECT_EQ(resolver->GetFlatIndex({4, 0}), 20u);
  // innerA of middleA: the same node as instance 2's, entered from another parent.
  EXPECT_EQ(keyFromPath(*resolver, {2, 2, 1}), (NodeKey{5, 1}));
  EXPECT_EQ(resolver->GetFlatIndex({5, 1}), 25u);
  EXPECT_EQ(keyFromPath(*resolver, {2, 2, 1}), (NodeKey{5, 1}));
  EXPECT_EQ(instanceCount(*resolver), 6u);

  // A key names a node of its instance's graph; the empty path names the input node.
  EXPECT_EQ(keyFromPath(*resolver, {}), (NodeKey{0, 0}));
  EXPECT_EQ(resolver->GetNode(source), graphs_.inner->GetNode(2));
  EXPECT_EQ(resolver->GetNodeKind({1, 3}), NestedGraphNode);
  EXPECT_EQ(resolver->GetNodeClass({1, 3}), graphs_.inner);
  EXPECT_EQ(resolver->GetNodeKind({4, 1}), GraphOutputNode);
}

struct BadKey {
  const char* why;
  NodeKey key;
  const char* message;
};
const BadKey badKeys[] = {
    {"node beyond the root graph", {0, 8}, "Index out of Range: Node key {0, 8} out of range"},
    {"instance not made yet", {2, 0}, "Index out of Range: Node key {2, 0} out of range"},
    {"node beyond the nested graph, though within the root's count",
     {1, 4},
     "Index out of Range: Node key {1, 4} out of range"},
    {"both words huge",
     {~size_t{0}, ~size_t{0}},
     "Index out of Range: Node key {18446744073709551615, 18446744073709551615} out of range"},
};

TEST_F(GraphResolverOnNestedGraphs, KeysOutOfRangeThrowInvalidDataAccessNamingTheKey) {
  ASSERT_TRUE(graphs_.outer);
  OwnedResolver resolver = flattened(*graphs_.outer);
  ASSERT_EQ(keyFromPath(*resolver, {2, 0}), (NodeKey{1, 0}));
  NodeKey source{};
  size_t output = 0;
  const IValue* defaultValue = nullptr;
  for (const BadKey& bad : badKeys) {
    SCOPED_TRACE(bad.why);
    EXPECT_THROW_MSG(resolver->GetNode(bad.key), InvalidDataAccess, bad.message);
    EXPECT_THROW_MSG(resolver->GetFlatIndex(bad.key), InvalidDataAccess, bad.message);
    EXPECT_THROW_MSG(resolver->GetNodeKind(bad.key), InvalidDataAccess, bad.message);
    EXPECT_THROW_MSG(resolver->GetNodeClass(bad.key), InvalidDataAccess, bad.message);
    EXPECT_THROW_MSG(resolver->ResolveInput(bad.key, 0, &source, &output, &defaultValue),
                     InvalidDataAccess, bad.message);
  }
  EXPECT_EQ(instanceCount(*resolver), 2u);
  // An input beyond the class's inputs has no connection and no default to fall back on.
  EXPECT_THROW_MSG(resolver->ResolveInput({0, 4}, 3, &source, &output, &defaultValue),
                   InvalidDataAccess, "Index out of Range: Input Index out of range");
}

struct BadPath {
  const char* why;
  std::initializer_list<size_t> path;
  const char* message;
  bool invalidDataAccess;  // else a plain std::runtime_error
};
const BadPath badPaths[] = {
    {"through an ordinary node", {4, 0}, "Can't drill into non-graph node!", false},
    {"through the input node", {0, 0}, "Can't drill into non-graph node!", false},
    {"through the output node", {1, 0}, "Can't drill into non-graph node!", false},
    {"through an ordinary node two levels down",
     {2, 2, 3, 0},
     "Can't drill into non-graph node!",
     false},
    {"first index beyond the root graph",
     {8},
     "Index out of Range: Path position 0: node index 8 out of range (count 8)",
     true},
    {"an index beyond a nested graph",
     {2, 3, 4},
     "Index out of Range: Path position 2: node index 4 out of range (count 4)",
     true},
};

TEST_F(GraphResolverOnNestedGraphs, PathsThatCannotBeFollowedThrow) {
  ASSERT_TRUE(graphs_.outer);
  OwnedResolver resolver = flattened(*graphs_.outer);
  for (const BadPath& bad : badPaths) {
    SCOPED_TRACE(bad.why);
    try {
      keyFromPath(*resolver, bad.path);
      ADD_FAILURE() << "no exception";
    } catch (const std::exception& thrown) {
      EXPECT_STREQ(thrown.what(), bad.message);
      EXPECT_EQ(dynamic_cast<const InvalidDataAccess*>(&thrown) != nullptr, bad.invalidDataAccess);
    }
  }
}

// The small graphs of the cases below, made through a factory in one library.
class SmallGraphs {
 public:
  SmallGraphs() : library_(createGraphLibrary(&test::resolver::baseLibrary(), "small")) {}

  IGraphFactory& New(const char* name) {
    factory_.reset(createNewGraphFactory(library_.get(), name, UUID{}));
    return *factory_;
  }
  const IType* Float() const {
    return test::resolver::baseLibrary()
        .FindNodeClass(constantClass(), false)
        ->GetInput(0)
        ->GetType();
  }
  std::shared_ptr<const INodeClass> Constant() const {
    return test::resolver::baseLibrary().FindNodeClass(constantClass(), false);
  }
  // A graph that passes its one float input "v" straight to its output "v".
  std::shared_ptr<const IGraph> PassThrough() {
    IGraphFactory& factory = New("pass");
    factory.AddInput(Float(), "v", nullptr);
    factory.AddOutput(Float(), "v");
    EXPECT_EQ(factory.Connect(factory.GetInputNode(), "v", factory.GetOutputNode(), "v"),
              ConnectionOk);
    return factory.FinishGraph();
  }
  const IGraphNode* Add(const std::shared_ptr<const INodeClass>& nodeClass) {
    const IGraphNode* node = nullptr;
    EXPECT_EQ(factory_->AddNode(nodeClass, "", &node), ConnectionOk);
    return node;
  }
  void Connect(const IGraphNode* source, const char* output, const IGraphNode* target,
               const char* input) {
    EXPECT_EQ(factory_->Connect(source, output, target, input), ConnectionOk);
  }
  const IGraphLibrary* Library() const { return library_.get(); }

 private:
  static UUID constantClass() { return makeUUID(test::resolver::withUUIDs("$c2").c_str()); }
  struct FactoryReleaser {
    void operator()(IGraphFactory* factory) const { releaseGraphFactory(factory); }
  };
  test::resolver::OwnedLibrary library_;
  std::unique_ptr<IGraphFactory, FactoryReleaser> factory_;
};

// The factory refuses a graph's output node as a source, since a file could not name it;
// a graph edited by other means (a host's own IGraph, say) may still hold such a
// connection, and the resolver gives it a meaning. This makes one in a finished graph.
void feedFromOutputNode(const std::shared_ptr<const IGraph>& finished, size_t target,
                        const char* input, const char* graphOutput) {
  auto& graph = const_cast<Graph&>(dynamic_cast<const Graph&>(*finished));
  EXPECT_EQ(graph.MutableNode(target).Connect(input, *graph.GetNode(1), graphOutput, graph),
            ConnectionOk);
}

// A graph's output node used as a source stands for what feeds that graph output.
TEST(GraphResolver, SourceThatIsAnOutputNodeContinuesAtWhatFeedsThatOutput) {
  SmallGraphs small;
  // loop: output o <- constant 2; constant 3 <- the output node's "o";
  //       constant 4 <- the output node's "u", which nothing feeds.
  IGraphFactory& factory = small.New("loop");
  factory.AddOutput(small.Float(), "o");
  factory.AddOutput(small.Float(), "u");
  const IGraphNode* c = small.Add(small.Constant());
  small.Add(small.Constant());
  small.Add(small.Constant());
  small.Connect(c, "out", factory.GetOutputNode(), "o");
  const std::shared_ptr<const IGraph> loop = factory.FinishGraph();
  feedFromOutputNode(loop, 3, "value", "o");
  feedFromOutputNode(loop, 4, "value", "u");
  // host: its node 2 is of class loop, so that the same happens in a nested instance.
  IGraphFactory& hostFactory = small.New("host");
  small.Add(loop);
  const std::shared_ptr<const IGraph> host = hostFactory.FinishGraph();

  OwnedResolver ofLoop = flattened(*loop);
  OwnedResolver ofHost = flattened(*host);
  ASSERT_EQ(keyFromPath(*ofHost, {2, 0}), (NodeKey{1, 0}));
  struct View {
    const char* why;
    IGraphResolver* resolver;
    size_t instance;
  };
  for (const View& view :
       {View{"in the root", ofLoop.get(), 0}, View{"in a nested instance", ofHost.get(), 1}}) {
    SCOPED_TRACE(view.why);
    NodeKey source{};
    size_t output = 9;
    const IValue* defaultValue = nullptr;
    EXPECT_TRUE(
        view.resolver->ResolveInput({view.instance, 3}, 0, &source, &output, &defaultValue));
    EXPECT_EQ(source, (NodeKey{view.instance, 2}));
    EXPECT_EQ(output, 0u);
    EXPECT_EQ(defaultValue, nullptr);
    // Nothing feeds "u": the defaults are those of the output node's input "u", whose
    // parameter is the graph output, of type float.
    EXPECT_FALSE(
        view.resolver->ResolveInput({view.instance, 4}, 0, &source, &output, &defaultValue));
    EXPECT_EQ(defaultValue, small.Float()->GetDefault());
  }
}

// A ring that passes only through graph boundaries never reaches a node; it is reported
// at the key where the walk met itself again, and the resolver stays usable.
TEST(GraphResolver, RingThroughGraphBoundariesThrowsConnectionCycle) {
  SmallGraphs small;
  const std::shared_ptr<const IGraph> pass = small.PassThrough();

  // pair: nodes 2 and 3 of class pass feed each other; node 4 is a constant.
  IGraphFactory& pairFactory = small.New("pair");
  const IGraphNode* first = small.Add(pass);
  const IGraphNode* second = small.Add(pass);
  small.Add(small.Constant());
  small.Connect(second, "v", first, "v");
  small.Connect(first, "v", second, "v");
  const std::shared_ptr<const IGraph> pair = pairFactory.FinishGraph();

  // via output: node 2 of class pass is fed by the graph output that it feeds.
  IGraphFactory& viaOutputFactory = small.New("via output");
  viaOutputFactory.AddOutput(small.Float(), "o");
  const IGraphNode* node = small.Add(pass);
  small.Connect(node, "v", viaOutputFactory.GetOutputNode(), "o");
  const std::shared_ptr<const IGraph> viaOutput = viaOutputFactory.FinishGraph();
  feedFromOutputNode(viaOutput, 2, "v", "o");

  // A file may feed a node from itself.
  const test::resolver::OwnedLibrary file =
      test::resolver::loadLibraryText(R"([
      {"content":"graph","uuid":"$b8","input":[{"name":"v","type":"$a1"}],
       "output":[{"name":"v","type":"$a1","from":["","v"]}]},
      {"content":"graph","uuid":"$b9",
       "nodes":[{"uuid":"$d1","node":"$b8","input":[{"name":"v","from":["$d1","v"]}]}]}])",
                                      &test::resolver::baseLibrary());
  ASSERT_NE(file, nullptr);
  const std::shared_ptr<const IGraph> selfFed =
      file->FindGraph(makeUUID(test::resolver::withUUIDs("$b9").c_str()), false);

  struct Ring {
    const char* why;
    const IGraph* graph;
    NodeKey key;
    const char* message;
  };
  const Ring rings[] = {
      {"two nodes feeding each other", pair.get(), {0, 2}, "Connection cycle at node key {2, 1}"},
      {"the other of the two", pair.get(), {0, 3}, "Connection cycle at node key {2, 1}"},
      {"through the graph's own output node",
       viaOutput.get(),
       {0, 2},
       "Connection cycle at node key {0, 2}"},
      {"from the graph output into the ring",
       viaOutput.get(),
       {0, 1},
       "Connection cycle at node key {0, 1}"},
      {"a node fed by itself, read from a file",
       selfFed.get(),
       {0, 2},
       "Connection cycle at node key {1, 1}"},
  };
  for (const Ring& ring : rings) {
    SCOPED_TRACE(ring.why);
    OwnedResolver resolver = flattened(*ring.graph);
    NodeKey source{};
    size_t output = 0;
    const IValue* defaultValue = nullptr;
    EXPECT_THROW_MSG(resolver->ResolveInput(ring.key, 0, &source, &output, &defaultValue),
                     std::runtime_error, ring.message);
  }

  OwnedResolver resolver = flattened(*pair);
  NodeKey source{};
  size_t output = 0;
  const IValue* defaultValue = nullptr;
  EXPECT_THROW(resolver->ResolveInput({0, 2}, 0, &source, &output, &defaultValue),
               std::runtime_error);
  EXPECT_EQ(instanceCount(*resolver), 3u) << "instances made before the throw stay";
  EXPECT_EQ(keyFromPath(*resolver, {3, 1}), (NodeKey{1, 1}));
  EXPECT_FALSE(resolver->ResolveInput({0, 4}, 0, &source, &output, &defaultValue));
  EXPECT_EQ(defaultValue, small.Float()->GetDefault());
}

}  // namespace
}  // namespace mat
