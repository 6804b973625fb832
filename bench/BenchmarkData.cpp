#include "BenchmarkData.h"

#include <map>
#include <memory>
#include <stdexcept>
#include <string>

#include "mat/Functions.h"
#include "mat/IGraphLibrary.h"

namespace mat::bench {
namespace {

struct LibraryRelease {
  void operator()(const IGraphLibrary* library) const { releaseGraphLibrary(library); }
};
using LibraryHandle = std::unique_ptr<const IGraphLibrary, LibraryRelease>;

// Everything of one size. The graph library is declared last, so it goes before its base.
struct SizeData {
  SyntheticLibrary texts;
  LibraryHandle base;
  LibraryHandle graphs;
};

SizeData& dataFor(size_t graphCount) {
  static std::map<size_t, SizeData> sizes;
  auto found = sizes.find(graphCount);
  if (found != sizes.end()) return found->second;
  SyntheticOptions options;
  options.graphCount = graphCount;
  options.seed = benchmarkSeed;
  SizeData& data = sizes[graphCount];
  data.texts = makeSyntheticLibrary(options);
  return data;
}

LibraryHandle load(const std::string& text, const IGraphLibrary* parent) {
  LibraryHandle library(loadGraphLibrary(text.c_str(), text.size(), parent, ""));
  if (!library) throw std::runtime_error("A synthetic library failed to load");
  return library;
}

}  // namespace

const SyntheticLibrary& syntheticLibrary(size_t graphCount) { return dataFor(graphCount).texts; }

const IGraphLibrary* syntheticBaseLibrary(size_t graphCount) {
  SizeData& data = dataFor(graphCount);
  if (!data.base) data.base = load(data.texts.baseText, nullptr);
  return data.base.get();
}

const IGraphLibrary* syntheticGraphLibrary(size_t graphCount) {
  SizeData& data = dataFor(graphCount);
  if (!data.graphs) data.graphs = load(data.texts.graphText, syntheticBaseLibrary(graphCount));
  return data.graphs.get();
}

}  // namespace mat::bench
