// Resolving: follow inputs upstream through nested graphs, with a flattening resolver and
// with a one-level resolver, and name a port inside nested graphs with a port path.
//
//   matgraph_guide_resolve examples/base.matlib examples/materials.matlib
#include <mat/mat.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

static std::string readFile(const char* path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The index of the node named `name` in `graph`; the graph's node count when none is.
static size_t nodeIndex(const mat::IGraph& graph, const char* name) {
  size_t index = 0;
  while (index < graph.GetNodeCount() && std::strcmp(graph.GetNode(index)->GetName(), name) != 0)
    ++index;
  return index;
}

// Resolves input `input` of the node `key` and prints where its value comes from.
// Returns the source's key, or {SIZE_MAX, SIZE_MAX} when a default applies.
static mat::NodeKey show(mat::IGraphResolver& resolver, mat::NodeKey key, const char* input) {
  size_t inputIndex = 0;
  resolver.GetNodeClass(key)->FindInput(input, &inputIndex);
  mat::NodeKey source{};
  size_t output = 0;
  const mat::IValue* fallback = nullptr;
  if (resolver.ResolveInput(key, inputIndex, &source, &output, &fallback)) {
    std::printf("%s.%s <- %s.%s (instance %zu, flat node %zu)\n", resolver.GetNode(key)->GetName(),
                input, resolver.GetNode(source)->GetName(),
                resolver.GetNodeClass(source)->GetOutput(output)->GetName(), source.instance,
                resolver.GetFlatIndex(source));
    return source;
  }
  std::printf("%s.%s is not connected; default %s\n", resolver.GetNode(key)->GetName(), input,
              fallback != nullptr ? "found" : "none");
  return mat::NodeKey{SIZE_MAX, SIZE_MAX};
}

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string baseText = readFile(argv[1]);
  const std::string materialsText = readFile(argv[2]);
  const mat::IGraphLibrary* base =
      mat::loadGraphLibrary(baseText.c_str(), baseText.size(), nullptr, "base");
  if (base == nullptr) return 1;
  const mat::IGraphLibrary* materials =
      mat::loadGraphLibrary(materialsText.c_str(), materialsText.size(), base, "materials");
  if (materials == nullptr) {
    mat::releaseGraphLibrary(base);
    return 1;
  }
  const std::shared_ptr<const mat::IGraph> wood = materials->FindGraphByName("Wood");
  if (wood == nullptr) {
    mat::releaseGraphLibrary(materials);
    mat::releaseGraphLibrary(base);
    return 1;
  }
  const size_t tint = nodeIndex(*wood, "tint");
  const size_t pattern = nodeIndex(*wood, "pattern");  // a node whose class is a graph

  // Flattened: "factor" of "tint" comes from the graph GrainPattern's output "grain",
  // which comes from its node "sharpen", inside the instance of GrainPattern.
  mat::IGraphResolver* flat = mat::createGraphResolver(wood.get(), true);
  const mat::NodeKey sharpen = show(*flat, flat->GetKeyFromNodeIndex(tint), "factor");
  bool ok = !flat->IsInRootGraph(sharpen) &&
            std::strcmp(flat->GetNode(sharpen)->GetName(), "sharpen") == 0;

  // A port path names a node inside nested graphs, outermost index first. The input
  // "vector" of "stretch" inside the pattern comes from the graph input "position", so
  // resolving steps out to whatever feeds "position" of "pattern" in Wood.
  const std::shared_ptr<const mat::IGraph> grain =
      wood->GetNode(pattern)->GetNodeClass()->AsGraph();
  mat::IPortPath* path = mat::createPortPath();
  path->AppendNodeIndex(pattern);
  path->AppendNodeIndex(nodeIndex(*grain, "stretch"));
  path->SetInputPort("vector");
  const mat::IGraphNode* stretchNode = nullptr;
  const mat::IParameter* vector = wood->GetParameterFromPath(*path, &stretchNode);
  ok = ok && std::strcmp(stretchNode->GetName(), "stretch") == 0;
  const mat::NodeKey position = show(*flat, flat->GetKeyFromPath(*path), vector->GetName());
  ok = ok && flat->IsInRootGraph(position) &&
       std::strcmp(flat->GetNode(position)->GetName(), "position") == 0;
  mat::releasePortPath(path);

  // An input that nothing feeds resolves to the default that applies: the node's own,
  // else its class's, else its type's.
  const mat::NodeKey none =
      show(*flat, flat->GetKeyFromNodeIndex(nodeIndex(*wood, "shader")), "opacity");
  ok = ok && none.node == SIZE_MAX;
  mat::releaseGraphResolver(flat);

  // One level: the nested-graph node itself is the source.
  mat::IGraphResolver* single = mat::createGraphResolver(wood.get(), false);
  const mat::NodeKey source = show(*single, single->GetKeyFromNodeIndex(tint), "factor");
  ok = ok && source.instance == 0 && source.node == pattern;
  mat::releaseGraphResolver(single);

  mat::releaseGraphLibrary(materials);
  mat::releaseGraphLibrary(base);
  return ok ? 0 : 1;
}
