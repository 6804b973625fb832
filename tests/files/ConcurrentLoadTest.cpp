// Loads on several threads at once, each with its own text, under one shared parent.

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "mat/IGraphLibrary.h"
#include "support/LibraryText.h"

namespace mat {
namespace {

using test::files::LibraryHandle;
using test::files::loadLibrary;
using test::files::saveLibrary;

struct Job {
  std::string text;
  const IGraphLibrary* parent;
};

TEST(ConcurrentLoad, ThreadsLoadingAndSavingAtOnceGetTheSameText) {
  std::vector<Job> jobs = {{test::files::sampleLibraryText(), nullptr}};
  for (const auto& file : test::files::exampleFiles()) jobs.push_back({file.text, file.parent});
  std::vector<std::string> expected;
  for (const Job& job : jobs) {
    const LibraryHandle library = loadLibrary(job.text, job.parent);
    ASSERT_NE(library, nullptr);
    expected.push_back(saveLibrary(*library));
  }

  constexpr size_t threadCount = 4;
  constexpr size_t rounds = 50;
  // results[t] holds what thread t saved, round after round.
  std::vector<std::vector<std::string>> results(threadCount);
  std::vector<std::thread> threads;
  for (size_t t = 0; t < threadCount; ++t) {
    threads.emplace_back([&, t] {
      for (size_t round = 0; round < rounds; ++round) {
        const Job& job = jobs[(t + round) % jobs.size()];
        const LibraryHandle library = loadLibrary(job.text, job.parent);
        results[t].push_back(library ? saveLibrary(*library) : "null");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();

  for (size_t t = 0; t < threadCount; ++t) {
    ASSERT_EQ(results[t].size(), rounds);
    for (size_t round = 0; round < rounds; ++round) {
      EXPECT_TRUE(results[t][round] == expected[(t + round) % jobs.size()])
          << "thread " << t << ", round " << round;
    }
  }
}

}  // namespace
}  // namespace mat
