// A small host program: loads a base library and a library of graphs under it, prints
// what each holds, and checks that saving each gives back its file byte for byte.
//
//   matgraph_example_host examples/base.matlib examples/materials.matlib
#include <mat/mat.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>

namespace {

std::string readFile(const char* path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// 1 for a graph built of node classes only, one more for each level of graphs inside it.
int nestingDepth(const mat::IGraph& graph) {
  int deepest = 0;
  for (size_t i = 0; i < graph.GetNodeCount(); ++i) {
    const mat::IGraphNode* node = graph.GetNode(i);
    if (node->GetNodeKind() == mat::NestedGraphNode) {
      deepest = std::max(deepest, nestingDepth(*node->GetNodeClass()->AsGraph()));
    }
  }
  return deepest + 1;
}

// Prints the library's counts and graphs; returns whether saving it gives back `file`.
bool summarize(const char* path, const mat::IGraphLibrary* library, const std::string& file) {
  std::printf("%s: %zu types, %zu semantics, %zu node classes, %zu graphs\n", path,
              library->GetTypeCount(), library->GetSemanticCount(), library->GetNodeClassCount(),
              library->GetGraphCount());
  for (size_t i = 0; i < library->GetGraphCount(); ++i) {
    const std::shared_ptr<const mat::IGraph> graph = library->GetGraph(i);
    // Every graph also holds its input node and its output node; they are not counted.
    std::printf("  graph %-14s %2zu nodes, nesting depth %d\n", graph->GetName(),
                graph->GetNodeCount() - 2, nestingDepth(*graph));
  }
  std::ostringstream saved;
  mat::saveGraphLibrary(library, saved);
  const bool same = saved.str() == file;
  std::printf("  saved again: %s\n", same ? "the same bytes as the file" : "DIFFERS from the file");
  return same;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::wcerr << L"usage: " << argv[0] << L" BASE_LIBRARY GRAPH_LIBRARY\n";
    return 2;
  }
  const std::string baseFile = readFile(argv[1]);
  const std::string graphFile = readFile(argv[2]);

  // The graphs use the base library's types and node classes, so the base is their
  // parent: it is loaded first and released last.
  const mat::IGraphLibrary* base =
      mat::loadGraphLibrary(baseFile.c_str(), baseFile.size(), nullptr, "base");
  if (base == nullptr) {
    // The loader has written the reason on std::wcerr. Our messages go there too: once a
    // wide stream has written to stderr, narrow writes to it (fprintf, std::cerr) are lost.
    std::wcerr << argv[1] << L": does not load\n";
    return 1;
  }
  const mat::IGraphLibrary* graphs =
      mat::loadGraphLibrary(graphFile.c_str(), graphFile.size(), base, "materials");
  if (graphs == nullptr) {
    std::wcerr << argv[2] << L": does not load\n";
    mat::releaseGraphLibrary(base);
    return 1;
  }

  const bool baseSavesBack = summarize(argv[1], base, baseFile);
  const bool graphsSaveBack = summarize(argv[2], graphs, graphFile);
  mat::releaseGraphLibrary(graphs);
  mat::releaseGraphLibrary(base);
  return baseSavesBack && graphsSaveBack ? 0 : 1;
}
