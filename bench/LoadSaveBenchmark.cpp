// Loading and saving whole library files, each against the picojson operation it cannot
// beat: a load against picojson's parse of the same text, a save against picojson's own
// serialize(true) of the same document. Each pair runs on the same text in the same run.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <picojson.h>

#include <cstdint>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>

#include "BenchmarkData.h"
#include "mat/Functions.h"
#include "mat/IGraphLibrary.h"

namespace {

using mat::bench::syntheticBaseLibrary;
using mat::bench::syntheticGraphLibrary;
using mat::bench::syntheticLibrary;

const std::string& graphText(const benchmark::State& state) {
  return syntheticLibrary(static_cast<size_t>(state.range(0))).graphText;
}

void addTextSize(benchmark::State& state, const std::string& text) {
  state.counters["text_bytes"] = benchmark::Counter(
      static_cast<double>(text.size()), benchmark::Counter::kDefaults, benchmark::Counter::kIs1024);
}

void reportText(benchmark::State& state, const std::string& text) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(text.size()));
  addTextSize(state, text);
}

// A stream that only counts what it is given, so that copying the text into a growing
// buffer does not enter the time of a save.
class CountingBuffer : public std::streambuf {
 public:
  std::streamsize count = 0;

 protected:
  std::streamsize xsputn(const char*, std::streamsize size) override {
    count += size;
    return size;
  }
  int_type overflow(int_type character) override {
    if (!traits_type::eq_int_type(character, traits_type::eof())) ++count;
    return traits_type::not_eof(character);
  }
};

// Bytes that the allocator has handed out and not yet got back: the main arena's chunks in
// use and the chunks mapped on their own. The benchmarks allocate on the main thread only.
size_t heapInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void BM_PicojsonParse(benchmark::State& state) {  // the floor of any load
  const std::string& text = graphText(state);
  for (auto _ : state) {
    picojson::value document;
    std::string error;
    picojson::parse(document, text.data(), text.data() + text.size(), &error);
    benchmark::DoNotOptimize(document);
  }
  reportText(state, text);
}

void BM_LoadGraphLibrary(benchmark::State& state) {
  const std::string& text = graphText(state);
  const mat::IGraphLibrary* base = syntheticBaseLibrary(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    const mat::IGraphLibrary* library = mat::loadGraphLibrary(text.c_str(), text.size(), base, "");
    if (library == nullptr) {
      state.SkipWithError("the synthetic library failed to load");
      break;
    }
    // Releasing the library is not part of loading it; the parse baseline, by contrast,
    // must free its document, as every load does.
    state.PauseTiming();
    mat::releaseGraphLibrary(library);
    state.ResumeTiming();
  }
  reportText(state, text);
}

void BM_PicojsonSerialize(benchmark::State& state) {  // the floor of any save
  const std::string& text = graphText(state);
  picojson::value document;
  picojson::parse(document, text.data(), text.data() + text.size(), nullptr);
  for (auto _ : state) {
    std::string serialized = document.serialize(true);
    benchmark::DoNotOptimize(serialized.data());
  }
  reportText(state, text);
}

void BM_SaveGraphLibrary(benchmark::State& state) {
  const std::string& text = graphText(state);
  const mat::IGraphLibrary* library = syntheticGraphLibrary(static_cast<size_t>(state.range(0)));
  {
    std::ostringstream check;
    mat::saveGraphLibrary(library, check);
    if (check.str() != text) {
      state.SkipWithError("saving the loaded library does not give its text back");
      return;
    }
  }
  CountingBuffer buffer;
  std::ostream out(&buffer);
  for (auto _ : state) mat::saveGraphLibrary(library, out);
  benchmark::DoNotOptimize(buffer.count);
  reportText(state, text);
}

// Not a timing: the heap that a loaded library holds, against the size of its file, and for
// scale what picojson's document of the same text holds.
void BM_LoadedLibraryMemory(benchmark::State& state) {
  const std::string& text = graphText(state);
  const mat::IGraphLibrary* base = syntheticBaseLibrary(static_cast<size_t>(state.range(0)));
  size_t libraryBytes = 0;
  size_t documentBytes = 0;
  for (auto _ : state) {
    const size_t beforeLoad = heapInUse();
    const mat::IGraphLibrary* library = mat::loadGraphLibrary(text.c_str(), text.size(), base, "");
    libraryBytes = heapInUse() - beforeLoad;
    mat::releaseGraphLibrary(library);

    const size_t beforeParse = heapInUse();
    {
      picojson::value document;
      picojson::parse(document, text.data(), text.data() + text.size(), nullptr);
      documentBytes = heapInUse() - beforeParse;
    }
  }
  const double fileBytes = static_cast<double>(text.size());
  addTextSize(state, text);
  state.counters["library_bytes"] =
      benchmark::Counter(static_cast<double>(libraryBytes), benchmark::Counter::kDefaults,
                         benchmark::Counter::kIs1024);
  state.counters["library_per_file_byte"] = static_cast<double>(libraryBytes) / fileBytes;
  state.counters["dom_per_file_byte"] = static_cast<double>(documentBytes) / fileBytes;
}

// G = 5000 takes seconds per call, so it runs once, in one repetition (its CPU time varies
// by under 3 % between runs); the smaller sizes run for the time that
// --benchmark_min_time sets, in as many repetitions as --benchmark_repetitions asks.
void graphCounts(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);
}
void largestGraphCount(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(5000)->Iterations(1)->Repetitions(1)->Unit(benchmark::kMillisecond);
}

}  // namespace

BENCHMARK(BM_PicojsonParse)->Apply(graphCounts);
BENCHMARK(BM_LoadGraphLibrary)->Apply(graphCounts);
BENCHMARK(BM_PicojsonSerialize)->Apply(graphCounts);
BENCHMARK(BM_SaveGraphLibrary)->Apply(graphCounts);
// The heap after a load does not vary between runs: one repetition is enough.
BENCHMARK(BM_LoadedLibraryMemory)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(5000)
    ->Iterations(1)
    ->Repetitions(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PicojsonParse)->Apply(largestGraphCount);
BENCHMARK(BM_LoadGraphLibrary)->Apply(largestGraphCount);
BENCHMARK(BM_PicojsonSerialize)->Apply(largestGraphCount);
BENCHMARK(BM_SaveGraphLibrary)->Apply(largestGraphCount);
