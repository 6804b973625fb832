// Stands in for libFuzzer in ordinary builds: runs a fuzz target over the files named on
// the command line, so that the seed and regression corpora replay as a plain test.
//
//   <Target> <path>... [--optional=<path>]...
//
// Each path is a file or a folder, walked recursively. A missing path fails the run,
// except one given as --optional=<path>, which is skipped without a word. Every failure
// is reported on stderr and gives a non-zero exit, whatever NDEBUG says; a run that
// finds no input at all fails too, since it would prove nothing.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

constexpr std::string_view optionalPrefix = "--optional=";

[[noreturn]] void fail(const std::string& message) {
  std::fprintf(stderr, "fuzz replay: %s\n", message.c_str());
  std::fflush(stderr);
  std::exit(1);
}

// The regular files under `path` (or `path` itself), sorted so that runs are repeatable.
void collectInputs(const fs::path& path, std::vector<fs::path>& inputs) {
  std::error_code error;
  if (fs::is_regular_file(path, error)) {
    inputs.push_back(path);
    return;
  }
  if (!fs::is_directory(path, error)) fail("not a file or folder: " + path.string());
  std::vector<fs::path> found;
  for (fs::recursive_directory_iterator entry(path, error), end; !error && entry != end;
       entry.increment(error)) {
    if (entry->is_regular_file()) found.push_back(entry->path());
  }
  if (error) fail("cannot walk " + path.string() + ": " + error.message());
  std::sort(found.begin(), found.end());
  inputs.insert(inputs.end(), found.begin(), found.end());
}

// The file's bytes in a block of exactly their size, as libFuzzer hands them over, so
// that a target reading past the end is caught by AddressSanitizer here too.
std::unique_ptr<uint8_t[]> readInput(const fs::path& path, size_t& size) {
  std::ifstream in(path, std::ios::binary);
  if (!in) fail("cannot open " + path.string());
  const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  if (in.bad()) fail("cannot read " + path.string());
  size = bytes.size();
  auto data = std::make_unique<uint8_t[]>(std::max<size_t>(size, 1));
  std::copy(bytes.begin(), bytes.end(), data.get());
  return data;
}

void runInput(const fs::path& path) {
  size_t size = 0;
  const std::unique_ptr<uint8_t[]> data = readInput(path, size);
  // Named before the run: a crash or a failed check aborts without another word.
  std::printf("%s\n", path.c_str());
  std::fflush(stdout);
  try {
    LLVMFuzzerTestOneInput(data.get(), size);
  } catch (const std::exception& error) {
    fail("exception escaped on " + path.string() + ": " + error.what());
  } catch (...) {
    fail("unknown exception escaped on " + path.string());
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<fs::path> inputs;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument.substr(0, optionalPrefix.size()) == optionalPrefix) {
      const fs::path path(argument.substr(optionalPrefix.size()));
      std::error_code error;
      if (fs::exists(path, error)) collectInputs(path, inputs);
    } else {
      collectInputs(fs::path(argument), inputs);
    }
  }
  if (inputs.empty()) fail("no inputs found");
  for (const fs::path& input : inputs) runInput(input);
  std::printf("fuzz replay: %zu inputs ran\n", inputs.size());
  return 0;
}
