// Writes a synthetic base library and graph library to two files, for manual runs of a host
// and as fuzz seeds:
//
//   matgraph_synthetic <graph count> <base file> <graph file> [seed]
//
// Before writing it checks that both texts load and save back to the same bytes.
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "SyntheticLibrary.h"
#include "mat/Functions.h"
#include "mat/IGraphLibrary.h"

namespace {

bool parseCount(const char* text, uint64_t& value) {
  char* end = nullptr;
  value = std::strtoull(text, &end, 10);
  return end != text && *end == '\0';
}

std::string resaved(const std::string& text, const mat::IGraphLibrary* parent) {
  const mat::IGraphLibrary* library = mat::loadGraphLibrary(text.c_str(), text.size(), parent, "");
  if (!library) return {};
  std::ostringstream out;
  mat::saveGraphLibrary(library, out);
  mat::releaseGraphLibrary(library);
  return std::move(out).str();
}

// Load, save, compare: both texts must already be canonical.
bool roundTrips(const mat::bench::SyntheticLibrary& synthetic) {
  const std::string& base = synthetic.baseText;
  const mat::IGraphLibrary* baseLibrary =
      mat::loadGraphLibrary(base.c_str(), base.size(), nullptr, "");
  if (!baseLibrary) return false;
  const bool same = resaved(base, nullptr) == base &&
                    resaved(synthetic.graphText, baseLibrary) == synthetic.graphText;
  mat::releaseGraphLibrary(baseLibrary);
  return same;
}

bool writeFile(const char* path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
  out.close();
  if (!out) std::cerr << "matgraph_synthetic: cannot write " << path << "\n";
  return static_cast<bool>(out);
}

}  // namespace

int main(int argc, char** argv) {
  mat::bench::SyntheticOptions options;
  uint64_t graphCount = 0;
  if ((argc != 4 && argc != 5) || !parseCount(argv[1], graphCount) ||
      (argc == 5 && !parseCount(argv[4], options.seed))) {
    std::cerr << "usage: matgraph_synthetic <graph count> <base file> <graph file> [seed]\n";
    return 2;
  }
  options.graphCount = graphCount;
  try {
    const mat::bench::SyntheticLibrary synthetic = mat::bench::makeSyntheticLibrary(options);
    if (!roundTrips(synthetic)) {
      std::cerr << "matgraph_synthetic: the generated texts do not load and save back to the "
                   "same bytes\n";
      return 1;
    }
    if (!writeFile(argv[2], synthetic.baseText) || !writeFile(argv[3], synthetic.graphText)) {
      return 1;
    }
    const mat::bench::SyntheticStats& stats = synthetic.stats;
    unsigned deepest = 0;
    for (unsigned level : stats.graphLevels) deepest = std::max(deepest, level);
    std::cout << "base library: " << synthetic.baseText.size() << " bytes\n"
              << "graph library: " << synthetic.graphText.size() << " bytes, " << stats.graphs
              << " graphs, " << stats.nodes << " nodes (" << stats.nestedNodes << " nested graphs, "
              << deepest + 1 << " levels), " << stats.connections << " connections ("
              << stats.graphInputConnections << " from graph inputs), " << stats.nodeInputDefaults
              << " node input defaults\n";
  } catch (const std::exception& error) {
    std::cerr << "matgraph_synthetic: " << error.what() << "\n";
    return 1;
  }
  return 0;
}
