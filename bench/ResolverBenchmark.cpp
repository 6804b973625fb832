// Resolving inputs through nested graphs, against walking the same connections by hand.
//
// Every graph of the synthetic graph library is a root. Its flattened view is enumerated
// once, breadth first by port path: every instance, every node, every input. Then:
// - BM_ResolveAllInputs resolves every one of those inputs with a flattening resolver
//   whose instances all exist already;
// - BM_WalkByHand, the floor, follows the same connections through IGraph::GetNode,
//   IGraphNode::GetInputConnection and AsGraph() of node classes, keeping the stack of
//   nested nodes itself instead of instance numbers, and looks up the same defaults;
// - BM_CreateFlattenedView creates a resolver per graph and reaches every instance of it.
// The synthetic graphs seldom connect across graph boundaries, so BM_ResolveChains and
// BM_WalkChainsByHand do the same as the first two on a library of nothing else: chains
// of pass-through graphs, nested two to a level.
// A hop is one connection followed; both walks take the same hops, counted once.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "BenchmarkData.h"
#include "mat/Functions.h"
#include "mat/IGraph.h"
#include "mat/IGraphLibrary.h"
#include "mat/IGraphNode.h"
#include "mat/IGraphResolver.h"
#include "mat/IParameter.h"
#include "mat/IPortPath.h"
#include "mat/IType.h"

namespace {

using mat::IGraph;
using mat::IGraphNode;
using mat::IValue;
using mat::NodeKey;

struct LibraryRelease {
  void operator()(const mat::IGraphLibrary* library) const { mat::releaseGraphLibrary(library); }
};
using LibraryHandle = std::unique_ptr<const mat::IGraphLibrary, LibraryRelease>;
struct ResolverRelease {
  void operator()(const mat::IGraphResolver* resolver) const {
    mat::releaseGraphResolver(resolver);
  }
};
using ResolverHandle = std::unique_ptr<mat::IGraphResolver, ResolverRelease>;
struct PathRelease {
  void operator()(const mat::IPortPath* path) const { mat::releasePortPath(path); }
};
using PathHandle = std::unique_ptr<mat::IPortPath, PathRelease>;

// One level of the way down to an instance: its graph, and the index, in the graph one
// level up, of the nested-graph node it was entered through (0 for the root).
struct Frame {
  const IGraph* graph;
  size_t node;
};

// One input of one node of one instance, as each walk names it.
struct Start {
  NodeKey key;        // for the resolver
  uint32_t instance;  // for the hand walk: index into View::frames
  uint32_t input;
};

// The flattened view of one root graph.
struct View {
  ResolverHandle resolver;                 // every instance made
  std::vector<std::vector<Frame>> frames;  // per instance, root first
  std::vector<PathHandle> instancePaths;   // per nested instance: a path to its node 0
  std::vector<Start> starts;
};

PathHandle makePath(const std::vector<size_t>& indices) {
  PathHandle path(mat::createPortPath());
  for (size_t index : indices) path->AppendNodeIndex(index);
  return path;
}

// Walks the flattened view of `root` breadth first by port path, making every instance.
View enumerateView(const IGraph& root) {
  View view;
  view.resolver.reset(mat::createGraphResolver(&root, true));
  struct Pending {
    std::vector<size_t> path;
    std::vector<Frame> frames;
  };
  std::deque<Pending> pending{{{}, {{&root, 0}}}};
  while (!pending.empty()) {
    const Pending instance = std::move(pending.front());
    pending.pop_front();
    const IGraph& graph = *instance.frames.back().graph;
    std::vector<size_t> path = instance.path;
    path.push_back(0);
    PathHandle firstNode = makePath(path);
    const size_t number = view.resolver->GetKeyFromPath(*firstNode).instance;
    if (!instance.path.empty()) view.instancePaths.push_back(std::move(firstNode));
    const auto frameIndex = static_cast<uint32_t>(view.frames.size());
    view.frames.push_back(instance.frames);
    for (size_t index = 0; index < graph.GetNodeCount(); ++index) {
      const IGraphNode& node = *graph.GetNode(index);
      const size_t inputCount = node.GetNodeClass()->GetInputCount();
      for (size_t input = 0; input < inputCount; ++input) {
        view.starts.push_back({{number, index}, frameIndex, static_cast<uint32_t>(input)});
      }
      if (node.GetNodeKind() == mat::NestedGraphNode) {
        Pending nested{instance.path, instance.frames};
        nested.path.push_back(index);
        nested.frames.push_back({node.GetNodeClass()->AsGraph().get(), index});
        pending.push_back(std::move(nested));
      }
    }
  }
  return view;
}

const IValue* fallbackDefault(const IGraphNode& node, size_t input) {
  if (const IValue* own = node.GetInputDefault(input)) return own;
  const mat::IParameter* parameter = node.GetNodeClass()->GetInput(input);
  if (const IValue* declared = parameter->GetDefault()) return declared;
  const mat::IType* type = parameter->GetType();
  return type != nullptr ? type->GetDefault() : nullptr;
}

struct HandResult {
  bool found;
  size_t sourceNode;
  size_t sourceOutput;
  const IValue* defaultValue;
};

// The floor: the steps of a flattening resolver, with a stack of frames in place of its
// instance table. `stack` is the starting instance's frames and is used up.
HandResult walkByHand(std::vector<Frame>& stack, size_t node, size_t input, size_t& hops) {
  const IValue* recorded = nullptr;
  const IGraphNode* current = stack.back().graph->GetNode(node);
  size_t sourceNode = 0;
  size_t output = 0;
  while (current->GetInputConnection(input, &sourceNode, &output)) {
    ++hops;
    recorded = nullptr;
    const IGraph* graph = stack.back().graph;
    const IGraphNode* source = graph->GetNode(sourceNode);
    switch (source->GetNodeKind()) {
      case mat::ClassNode:
        return {true, sourceNode, output, nullptr};
      case mat::GraphInputNode:
        if (stack.size() == 1) return {true, sourceNode, output, nullptr};
        recorded = source->GetInputDefault(output);
        node = stack.back().node;
        stack.pop_back();
        break;
      case mat::GraphOutputNode:
        node = sourceNode;
        break;
      case mat::NestedGraphNode:
        stack.push_back({source->GetNodeClass()->AsGraph().get(), sourceNode});
        node = stack.back().graph->GetOutputNodeIndex();
        break;
    }
    input = output;
    current = stack.back().graph->GetNode(node);
  }
  return {false, 0, 0, recorded != nullptr ? recorded : fallbackDefault(*current, input)};
}

// Roots enumerated once and kept for the whole run, with the number of hops that
// resolving all of their inputs takes.
struct Views {
  LibraryHandle library;  // when the views own their library; destroyed after them
  std::vector<View> views;
  size_t inputs = 0;
  size_t found = 0;  // inputs with a source
  size_t hops = 0;
  size_t instances = 0;
  size_t flatNodes = 0;
};

void addRoot(Views& all, const IGraph& root) {
  all.views.push_back(enumerateView(root));
  const View& view = all.views.back();
  all.inputs += view.starts.size();
  all.instances += view.frames.size();
  for (const std::vector<Frame>& frames : view.frames) {
    all.flatNodes += frames.back().graph->GetNodeCount();
  }
  std::vector<Frame> stack;
  for (const Start& start : view.starts) {
    stack = view.frames[start.instance];
    all.found += walkByHand(stack, start.key.node, start.input, all.hops).found;
  }
}

// Every graph of the synthetic graph library of @p graphCount graphs, each as a root.
const Views& syntheticViews(size_t graphCount) {
  static std::map<size_t, Views> sizes;
  auto found = sizes.find(graphCount);
  if (found != sizes.end()) return found->second;
  Views& all = sizes[graphCount];
  const mat::IGraphLibrary* library = mat::bench::syntheticGraphLibrary(graphCount);
  for (size_t i = 0; i < library->GetGraphCount(); ++i) addRoot(all, *library->GetGraph(i));
  return all;
}

std::string uuidText(unsigned number) {
  char text[40];
  std::snprintf(text, sizeof text, "00000000-0000-0000-0000-%012x", number);
  return text;
}

// A library whose graph "chain<k>" passes one float through 2^k nested instances:
// "chain0" passes its input straight to its output, "chain<k>" feeds its input through two
// nodes of "chain<k-1>" in a row. The root feeds a constant through "chain<levels>" into a
// sink, so that every input of every instance takes a chain of hops across boundaries.
std::string chainLibraryText(unsigned levels) {
  const std::string type = uuidText(1);
  const std::string constant = uuidText(2);
  const std::string sink = uuidText(3);
  auto graph = [](unsigned level) { return uuidText(0x100 + level); };
  auto node = [](unsigned level, unsigned which) { return uuidText(0x10000 + level * 4 + which); };
  const std::string floatPort = R"({"name":"v","type":")" + type + R"("})";
  std::string text = R"([{"content":"type","uuid":")" + type +
                     R"(","desc":"float","default":{"component":"float","value":0}},
{"content":"nodeclass","uuid":")" +
                     constant + R"(","desc":"constant","output":[)" + floatPort + R"(]},
{"content":"nodeclass","uuid":")" +
                     sink + R"(","desc":"sink","input":[)" + floatPort + "]}";
  text += R"(,
{"content":"graph","uuid":")" +
          graph(0) + R"(","desc":"chain0","input":[)" + floatPort +
          R"(],"output":[{"name":"v","type":")" + type + R"(","from":["","v"]}]})";
  for (unsigned level = 1; level <= levels; ++level) {
    const std::string first = node(level, 0);
    const std::string second = node(level, 1);
    text += R"(,
{"content":"graph","uuid":")" +
            graph(level) + R"(","desc":"chain)" + std::to_string(level) + R"(","input":[)" +
            floatPort + R"(],"output":[{"name":"v","type":")" + type + R"(","from":[")" + second +
            R"(","v"]}],"nodes":[{"uuid":")" + first + R"(","node":")" + graph(level - 1) +
            R"(","input":[{"name":"v","from":["","v"]}]},{"uuid":")" + second + R"(","node":")" +
            graph(level - 1) + R"(","input":[{"name":"v","from":[")" + first + R"(","v"]}]}]})";
  }
  const std::string source = node(0, 0);
  const std::string chain = node(0, 1);
  text += R"(,
{"content":"graph","uuid":")" +
          uuidText(0x200) + R"(","desc":"root","nodes":[{"uuid":")" + source + R"(","node":")" +
          constant + R"("},{"uuid":")" + chain + R"(","node":")" + graph(levels) +
          R"(","input":[{"name":"v","from":[")" + source + R"(","v"]}]},{"uuid":")" + node(0, 2) +
          R"(","node":")" + sink + R"(","input":[{"name":"v","from":[")" + chain +
          R"(","v"]}]}]}])";
  return text;
}

// The root of chainLibraryText(@p levels).
const Views& chainViews(unsigned levels) {
  static std::map<unsigned, Views> sizes;
  auto found = sizes.find(levels);
  if (found != sizes.end()) return found->second;
  Views& all = sizes[levels];
  const std::string text = chainLibraryText(levels);
  all.library.reset(mat::loadGraphLibrary(text.c_str(), text.size(), nullptr, "chains"));
  if (!all.library) throw std::runtime_error("the chain library failed to load");
  addRoot(all, *all.library->FindGraphByName("root"));
  return all;
}

void reportHops(benchmark::State& state, const Views& all) {
  using benchmark::Counter;
  state.counters["hop"] =
      Counter(static_cast<double>(all.hops), Counter::kIsIterationInvariantRate | Counter::kInvert);
  state.counters["input"] = Counter(static_cast<double>(all.inputs),
                                    Counter::kIsIterationInvariantRate | Counter::kInvert);
  state.counters["hops"] = static_cast<double>(all.hops);
  state.counters["inputs"] = static_cast<double>(all.inputs);
}

void resolveAll(benchmark::State& state, const Views& all) {
  for (auto _ : state) {
    size_t found = 0;
    for (const View& view : all.views) {
      mat::IGraphResolver& resolver = *view.resolver;
      for (const Start& start : view.starts) {
        NodeKey sourceKey;
        size_t sourceOutput;
        const IValue* defaultValue;
        found +=
            resolver.ResolveInput(start.key, start.input, &sourceKey, &sourceOutput, &defaultValue);
        benchmark::DoNotOptimize(defaultValue);
      }
    }
    if (found != all.found) state.SkipWithError("the resolver found other sources");
  }
  reportHops(state, all);
}

void walkAllByHand(benchmark::State& state, const Views& all) {
  std::vector<Frame> stack;
  for (auto _ : state) {
    size_t found = 0;
    size_t hops = 0;
    for (const View& view : all.views) {
      for (const Start& start : view.starts) {
        stack = view.frames[start.instance];
        const HandResult result = walkByHand(stack, start.key.node, start.input, hops);
        found += result.found;
        benchmark::DoNotOptimize(result.defaultValue);
      }
    }
    if (found != all.found || hops != all.hops) state.SkipWithError("the hand walk differs");
  }
  reportHops(state, all);
}

void BM_ResolveAllInputs(benchmark::State& state) {
  resolveAll(state, syntheticViews(static_cast<size_t>(state.range(0))));
}

void BM_WalkByHand(benchmark::State& state) {  // the floor of BM_ResolveAllInputs
  walkAllByHand(state, syntheticViews(static_cast<size_t>(state.range(0))));
}

void BM_ResolveChains(benchmark::State& state) {
  resolveAll(state, chainViews(static_cast<unsigned>(state.range(0))));
}

void BM_WalkChainsByHand(benchmark::State& state) {  // the floor of BM_ResolveChains
  walkAllByHand(state, chainViews(static_cast<unsigned>(state.range(0))));
}

// A new resolver per graph, and every instance of it reached through its port path.
void BM_CreateFlattenedView(benchmark::State& state) {
  const Views& all = syntheticViews(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    for (const View& view : all.views) {
      ResolverHandle resolver(mat::createGraphResolver(view.frames.front().front().graph, true));
      for (const PathHandle& path : view.instancePaths) {
        benchmark::DoNotOptimize(resolver->GetKeyFromPath(*path));
      }
    }
  }
  using benchmark::Counter;
  state.counters["instance"] = Counter(static_cast<double>(all.instances),
                                       Counter::kIsIterationInvariantRate | Counter::kInvert);
  state.counters["flat_node"] = Counter(static_cast<double>(all.flatNodes),
                                        Counter::kIsIterationInvariantRate | Counter::kInvert);
  state.counters["instances"] = static_cast<double>(all.instances);
  state.counters["flat_nodes"] = static_cast<double>(all.flatNodes);
}

}  // namespace

BENCHMARK(BM_ResolveAllInputs)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WalkByHand)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ResolveChains)->Arg(6)->Arg(9)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WalkChainsByHand)->Arg(6)->Arg(9)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CreateFlattenedView)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);
