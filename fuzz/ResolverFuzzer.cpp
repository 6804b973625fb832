// Fuzzes the resolvers over libraries that the loader makes of arbitrary bytes: the input
// is loaded standalone and as a graph library under examples/base.matlib. For every graph
// of a library that loads:
// - the flattened view: every instance is reached through port paths, breadth first,
//   and every input of every node of it is resolved and compared with a reference walk
//   that names instances by their whole path of nested nodes instead of by number; the
//   flat numbers of all nodes reached must be distinct and, once every instance is
//   reached, dense;
// - the one-level view: every input of every node answers with the node's own record.
// Only "Connection cycle" may escape a resolver, and only where the reference walk meets
// a state twice. Anything else that escapes, crashes or loops is a fault.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#include "FuzzCheck.h"
#include "mat/mat.h"
#include "resolution/GraphResolver.h"

namespace {

using mat::IGraph;
using mat::IGraphNode;
using mat::IValue;
using mat::NodeKey;
using Path = std::vector<size_t>;

// A flattened view of more than this many nodes is not walked. The view of graphs that
// nest two nodes of the same graph at each level doubles with each level, so a few
// kilobytes of input could ask for billions of instances; and a walk that resolves every
// input costs the number of inputs times the length of their chains.
constexpr size_t flatNodeBudget = 1000;

struct LibraryRelease {
  void operator()(const mat::IGraphLibrary* library) const { mat::releaseGraphLibrary(library); }
};
using LibraryPtr = std::unique_ptr<const mat::IGraphLibrary, LibraryRelease>;
struct ResolverRelease {
  void operator()(const mat::IGraphResolver* resolver) const {
    mat::releaseGraphResolver(resolver);
  }
};
using ResolverPtr = std::unique_ptr<mat::IGraphResolver, ResolverRelease>;
struct PathRelease {
  void operator()(mat::IPortPath* path) const { mat::releasePortPath(path); }
};

// Keeps the loader's error lines off stderr while it lives.
class QuietErrors {
 public:
  QuietErrors() : previous_(std::wcerr.rdbuf(&discarded_)) {}
  ~QuietErrors() { std::wcerr.rdbuf(previous_); }
  QuietErrors(const QuietErrors&) = delete;
  QuietErrors& operator=(const QuietErrors&) = delete;

 private:
  std::wstringbuf discarded_;
  std::wstreambuf* previous_;
};

LibraryPtr load(const std::string& text, const mat::IGraphLibrary* parent) {
  QuietErrors quiet;
  return LibraryPtr(mat::loadGraphLibrary(text.c_str(), text.size(), parent, "fuzz"));
}

std::string pathText(const Path& path) {
  std::string text = "[";
  for (size_t i = 0; i < path.size(); ++i) text += (i ? ", " : "") + std::to_string(path[i]);
  return text + "]";
}

std::string keyText(NodeKey key) {
  return "{" + std::to_string(key.instance) + ", " + std::to_string(key.node) + "}";
}

const IGraph* nestedGraph(const IGraphNode& node) { return node.GetNodeClass()->AsGraph().get(); }

// The size of the flattened view of a graph: its nodes, and the inputs of its nodes.
struct FlatSize {
  size_t nodes = 0;
  size_t inputs = 0;
};

// The size of the flattened view of `graph`; nodes is budget + 1 once it is larger.
FlatSize flatSize(const IGraph& graph, std::unordered_map<const IGraph*, FlatSize>& sizes) {
  const auto known = sizes.find(&graph);
  if (known != sizes.end()) return known->second;
  FlatSize size;
  for (size_t i = 0; i < graph.GetNodeCount() && size.nodes <= flatNodeBudget; ++i) {
    const IGraphNode* node = graph.GetNode(i);
    ++size.nodes;
    size.inputs += node->GetNodeClass()->GetInputCount();
    if (node->GetNodeKind() == mat::NestedGraphNode) {
      const FlatSize nested = flatSize(*nestedGraph(*node), sizes);
      size.nodes += nested.nodes;
      size.inputs += nested.inputs;
    }
  }
  if (size.nodes > flatNodeBudget) size.nodes = flatNodeBudget + 1;
  sizes.emplace(&graph, size);
  return size;
}

// The default that applies to the unconnected input `input` of `node`.
const IValue* fallbackDefault(const IGraphNode& node, size_t input) {
  if (const IValue* own = node.GetInputDefault(input)) return own;
  const mat::IParameter* parameter = node.GetNodeClass()->GetInput(input);
  if (const IValue* declared = parameter->GetDefault()) return declared;
  return parameter->GetType() ? parameter->GetType()->GetDefault() : nullptr;
}

struct Expected {
  enum Outcome { Source, Unconnected, Ring } outcome = Unconnected;
  Path source;  // the path of the source node, its own index last
  size_t sourceOutput = 0;
  const IValue* defaultValue = nullptr;
};

// What feeds input `input` of the node at `path` (its own index last), found by walking
// the graphs with the whole path of nested nodes in hand. A chain without a ring visits
// each input of the flattened view at most once, so one that takes more than
// `flatInputs` hops has met itself.
Expected referenceResolve(const IGraph& root, Path path, size_t input, size_t flatInputs) {
  std::vector<const IGraph*> graphs{&root};  // graphs[d]: the graph at depth d
  for (size_t depth = 0; depth + 1 < path.size(); ++depth) {
    graphs.push_back(nestedGraph(*graphs.back()->GetNode(path[depth])));
  }
  Expected expected;
  const IValue* recorded = nullptr;
  for (size_t hops = 0;; ++hops) {
    if (hops > flatInputs) {
      expected.outcome = Expected::Ring;
      return expected;
    }
    const IGraph& graph = *graphs.back();
    const IGraphNode& node = *graph.GetNode(path.back());
    size_t sourceNode = 0;
    size_t output = 0;
    if (!node.GetInputConnection(input, &sourceNode, &output)) {
      expected.defaultValue = recorded ? recorded : fallbackDefault(node, input);
      return expected;
    }
    recorded = nullptr;
    const IGraphNode& source = *graph.GetNode(sourceNode);
    const mat::NodeKind kind = source.GetNodeKind();
    if (kind == mat::ClassNode || (kind == mat::GraphInputNode && graphs.size() == 1)) {
      path.back() = sourceNode;
      expected.outcome = Expected::Source;
      expected.source = path;
      expected.sourceOutput = output;
      return expected;
    }
    if (kind == mat::GraphInputNode) {
      recorded = source.GetInputDefault(output);
      path.pop_back();
      graphs.pop_back();
    } else if (kind == mat::GraphOutputNode) {
      path.back() = sourceNode;
    } else {
      path.back() = sourceNode;
      graphs.push_back(nestedGraph(source));
      path.push_back(graphs.back()->GetOutputNodeIndex());
    }
    input = output;
  }
}

NodeKey keyFromPath(mat::IGraphResolver& resolver, const Path& path) {
  std::unique_ptr<mat::IPortPath, PathRelease> portPath(mat::createPortPath());
  for (size_t index : path) portPath->AppendNodeIndex(index);
  return resolver.GetKeyFromPath(*portPath);
}

void checkResolution(mat::IGraphResolver& resolver, const IGraph& root, size_t flatInputs,
                     const Path& path, size_t input) {
  const Expected expected = referenceResolve(root, path, input, flatInputs);
  const NodeKey key = keyFromPath(resolver, path);
  NodeKey sourceKey{~size_t{0}, ~size_t{0}};
  size_t sourceOutput = ~size_t{0};
  const IValue* defaultValue = nullptr;
  const std::string where = pathText(path) + " input " + std::to_string(input);
  bool found = false;
  try {
    found = resolver.ResolveInput(key, input, &sourceKey, &sourceOutput, &defaultValue);
  } catch (const std::runtime_error& error) {
    const std::string message = error.what();
    MAT_FUZZ_CHECK(message.rfind("Connection cycle at node key {", 0) == 0,
                   "unexpected exception at " + where + ": " + message);
    MAT_FUZZ_CHECK(expected.outcome == Expected::Ring,
                   "a ring reported where the reference walk finds none: " + where);
    return;
  }
  MAT_FUZZ_CHECK(expected.outcome != Expected::Ring, "a ring not reported: " + where);
  MAT_FUZZ_CHECK(found == (expected.outcome == Expected::Source),
                 "found and not found disagree: " + where);
  if (found) {
    MAT_FUZZ_CHECK(defaultValue == nullptr, "a default beside a source: " + where);
    const NodeKey expectedKey = keyFromPath(resolver, expected.source);
    MAT_FUZZ_CHECK(sourceKey == expectedKey && sourceOutput == expected.sourceOutput,
                   "wrong source at " + where + ": " + keyText(sourceKey) + " output " +
                       std::to_string(sourceOutput) + ", expected " + pathText(expected.source) +
                       " = " + keyText(expectedKey) + " output " +
                       std::to_string(expected.sourceOutput));
  } else {
    MAT_FUZZ_CHECK(defaultValue == expected.defaultValue, "wrong default at " + where);
    MAT_FUZZ_CHECK(sourceKey == (NodeKey{~size_t{0}, ~size_t{0}}),
                   "a source key written for an unconnected input: " + where);
  }
}

// Walks every instance of the flattened view of `root`, breadth first by port path.
void checkFlattenedView(const IGraph& root, size_t flatInputs) {
  ResolverPtr resolver(mat::createGraphResolver(&root, true));
  auto& flattened = dynamic_cast<mat::GraphResolver&>(*resolver);
  std::vector<bool> flatSeen;
  size_t instancesReached = 0;
  std::deque<std::pair<Path, const IGraph*>> instances{{Path{}, &root}};
  while (!instances.empty()) {
    const auto [instancePath, graph] = instances.front();
    instances.pop_front();
    ++instancesReached;
    for (size_t index = 0; index < graph->GetNodeCount(); ++index) {
      Path path = instancePath;
      path.push_back(index);
      const NodeKey key = keyFromPath(*resolver, path);
      const IGraphNode* node = graph->GetNode(index);
      MAT_FUZZ_CHECK(resolver->GetNode(key) == node, "a path names another node");
      MAT_FUZZ_CHECK(resolver->IsInRootGraph(key) == instancePath.empty(), "root or not?");
      const size_t flat = resolver->GetFlatIndex(key);
      if (flat >= flatSeen.size()) flatSeen.resize(flat + 1, false);
      MAT_FUZZ_CHECK(!flatSeen[flat], "two nodes share flat number " + std::to_string(flat));
      flatSeen[flat] = true;
      for (size_t input = 0; input < node->GetNodeClass()->GetInputCount(); ++input) {
        checkResolution(*resolver, root, flatInputs, path, input);
      }
      if (node->GetNodeKind() == mat::NestedGraphNode) {
        instances.emplace_back(path, nestedGraph(*node));
      }
    }
  }
  MAT_FUZZ_CHECK(flattened.GetInstanceCount() == instancesReached,
                 "instances made that no path reaches");
  for (bool seen : flatSeen) MAT_FUZZ_CHECK(seen, "a flat number that no node has");
}

void checkOneLevelView(const IGraph& graph) {
  ResolverPtr resolver(mat::createGraphResolver(&graph, false));
  for (size_t index = 0; index < graph.GetNodeCount(); ++index) {
    const IGraphNode& node = *graph.GetNode(index);
    MAT_FUZZ_CHECK(resolver->GetFlatIndex({0, index}) == index, "one-level flat number");
    for (size_t input = 0; input < node.GetNodeClass()->GetInputCount(); ++input) {
      size_t sourceNode = 0;
      size_t output = 0;
      const bool connected = node.GetInputConnection(input, &sourceNode, &output);
      NodeKey sourceKey{};
      size_t sourceOutput = 0;
      const IValue* defaultValue = nullptr;
      const bool found =
          resolver->ResolveInput({0, index}, input, &sourceKey, &sourceOutput, &defaultValue);
      MAT_FUZZ_CHECK(found == connected, "one-level view disagrees with the node's record");
      if (found) {
        MAT_FUZZ_CHECK(sourceKey == (NodeKey{0, sourceNode}) && sourceOutput == output &&
                           defaultValue == nullptr,
                       "one-level source differs from the node's record");
        MAT_FUZZ_CHECK(resolver->ResolveInput({0, index}, input, nullptr, nullptr, &defaultValue),
                       "one-level view with null out-pointers");
      } else {
        MAT_FUZZ_CHECK(defaultValue == fallbackDefault(node, input), "one-level default");
      }
    }
  }
  try {
    (void)resolver->GetNode({0, graph.GetNodeCount()});
    MAT_FUZZ_CHECK(false, "a key beyond the graph was accepted");
  } catch (const mat::InvalidDataAccess& error) {
    const std::string expected =
        "Index out of Range: Node key " + keyText({0, graph.GetNodeCount()}) + " out of range";
    MAT_FUZZ_CHECK(error.what() == expected, error.what());
  }
}

void checkLibrary(const mat::IGraphLibrary& library) {
  std::unordered_map<const IGraph*, FlatSize> flatSizes;
  for (size_t i = 0; i < library.GetGraphCount(); ++i) {
    const std::shared_ptr<const IGraph> graph = library.GetGraph(i);
    checkOneLevelView(*graph);
    const FlatSize size = flatSize(*graph, flatSizes);
    if (size.nodes <= flatNodeBudget) checkFlattenedView(*graph, size.inputs);
  }
}

// The example base library, loaded once; null when the file is missing or refused.
const mat::IGraphLibrary* baseLibrary() {
  static const LibraryPtr base = [] {
    std::ifstream in(MATGRAPH_SOURCE_DIR "/examples/base.matlib", std::ios::binary);
    if (!in) return LibraryPtr();
    const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    return load(text, nullptr);
  }();
  return base.get();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  if (const LibraryPtr library = load(text, nullptr)) checkLibrary(*library);
  if (const mat::IGraphLibrary* parent = baseLibrary()) {
    if (const LibraryPtr library = load(text, parent)) checkLibrary(*library);
  }
  return 0;
}
