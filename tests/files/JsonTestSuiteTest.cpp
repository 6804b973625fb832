// Every file of the JSON parsing test suite as a library file: no crash, nothing thrown,
// at most one line on std::wcerr, and whatever loads saves and reloads to the same bytes.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/LibraryText.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

namespace fs = std::filesystem;

TEST(JsonTestSuite, EveryFileLoadsCleanlyOrFailsCleanly) {
  const fs::path corpus = test::sourcePath("../shared/corpus/jsontestsuite");
  std::error_code error;
  if (!fs::is_directory(corpus, error)) GTEST_SKIP() << "no corpus at " << corpus;
  std::vector<fs::path> files;
  for (const char* folder : {"test_parsing", "test_transform"}) {
    for (const auto& entry : fs::directory_iterator(corpus / folder, error)) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  ASSERT_FALSE(files.empty()) << "the corpus folders are empty";
  size_t failures = 0;
  for (const fs::path& file : files) {
    std::string problem;
    EXPECT_NO_THROW(problem = test::files::roundTripProblem(test::readFile(file.string())))
        << file.filename();
    if (!problem.empty() && ++failures <= 10) {
      ADD_FAILURE() << file.filename() << ": " << problem;
    }
  }
}

}  // namespace
}  // namespace mat
