// Fuzzes loadGraphLibrary with arbitrary bytes and checks what a host relies on:
// - nothing escapes and nothing crashes;
// - a refused text writes at most one line on std::wcerr, a loaded one writes nothing;
// - whatever loads saves to a text that loads again and saves to the same bytes.
// Each input is tried twice: without a parent, and under examples/base.matlib, so that
// references into a parent library are exercised too.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <regex>
#include <sstream>
#include <string>

#include "FuzzCheck.h"
#include "mat/mat.h"

namespace {

struct LibraryRelease {
  void operator()(const mat::IGraphLibrary* library) const { mat::releaseGraphLibrary(library); }
};
using LibraryPtr = std::unique_ptr<const mat::IGraphLibrary, LibraryRelease>;

// Takes what the loader writes on std::wcerr for one load, so that libFuzzer's output
// does not drown in it and the target can check it. Swapping the buffer, rather than
// writing through the stream, leaves the orientation of stderr alone.
class WideErrorCapture {
 public:
  WideErrorCapture() : previous_(std::wcerr.rdbuf(&captured_)) {}
  ~WideErrorCapture() { std::wcerr.rdbuf(previous_); }
  WideErrorCapture(const WideErrorCapture&) = delete;
  WideErrorCapture& operator=(const WideErrorCapture&) = delete;

  std::wstring text() const { return captured_.str(); }

 private:
  std::wstringbuf captured_;
  std::wstreambuf* previous_;
};

std::string narrow(const std::wstring& wide) {
  std::string text;
  for (wchar_t c : wide) text.push_back(c < 0x80 ? static_cast<char>(c) : '?');
  return text;
}

struct LoadResult {
  LibraryPtr library;
  std::wstring errorText;
};

LoadResult load(const std::string& text, const mat::IGraphLibrary* parent) {
  LoadResult result;
  {
    WideErrorCapture errors;
    result.library.reset(mat::loadGraphLibrary(text.c_str(), text.size(), parent, "fuzz"));
    result.errorText = errors.text();
  }
  const std::wstring& written = result.errorText;
  if (result.library) {
    MAT_FUZZ_CHECK(written.empty(),
                   "a library loaded and an error line was written: " + narrow(written));
  } else {
    const bool oneLine =
        std::count(written.begin(), written.end(), L'\n') == 1 && written.back() == L'\n';
    MAT_FUZZ_CHECK(written.empty() || oneLine,
                   "a refused load wrote something other than one line: " + narrow(written));
  }
  return result;
}

std::string save(const mat::IGraphLibrary& library) {
  std::ostringstream out;
  mat::saveGraphLibrary(&library, out);
  return out.str();
}

// A value with no elements is written with "component" alone, and such an object is
// refused on reading ("Value has no value setting!"): the one known text that saves but
// does not load again. In the writer's layout that object ends right after "component".
bool holdsEmptyValue(const std::string& saved) {
  static const std::regex componentOnly("\"component\" : \"[a-z]+\"\n\t*\\}");
  return std::regex_search(saved, componentOnly);
}

void checkRoundTrip(const std::string& text, const mat::IGraphLibrary* parent) {
  LoadResult first = load(text, parent);
  if (!first.library) return;
  const std::string saved = save(*first.library);
  first.library.reset();

  const LoadResult second = load(saved, parent);
  if (!second.library && holdsEmptyValue(saved) &&
      second.errorText == L"InputFileParsingException: Value has no value setting!\n") {
    return;
  }
  if (!second.library) std::fprintf(stderr, "saved text:\n%s\n", saved.c_str());
  MAT_FUZZ_CHECK(second.library != nullptr,
                 "a saved library does not load again: " + narrow(second.errorText));
  const std::string savedAgain = save(*second.library);
  if (savedAgain != saved) {
    std::fprintf(stderr, "first save:\n%s\nsecond save:\n%s\n", saved.c_str(), savedAgain.c_str());
  }
  MAT_FUZZ_CHECK(savedAgain == saved, "a reloaded library saves to different bytes");
}

// The example base library, loaded once; null when the file is missing or refused.
const mat::IGraphLibrary* baseLibrary() {
  static const LibraryPtr base = [] {
    std::ifstream in(MATGRAPH_SOURCE_DIR "/examples/base.matlib", std::ios::binary);
    if (!in) return LibraryPtr();
    const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    LibraryPtr library = std::move(load(text, nullptr).library);
    if (!library) std::fprintf(stderr, "examples/base.matlib does not load; no parent tried\n");
    return library;
  }();
  return base.get();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  checkRoundTrip(text, nullptr);
  if (const mat::IGraphLibrary* parent = baseLibrary()) checkRoundTrip(text, parent);
  return 0;
}
