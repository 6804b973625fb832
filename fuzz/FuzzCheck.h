#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace mat::fuzz {

[[noreturn]] inline void checkFailed(const char* file, int line, const char* condition,
                                     std::string_view message) {
  std::fprintf(stderr, "%s:%d: fuzz check failed: %s\n  (%.*s)\n", file, line, condition,
               static_cast<int>(message.size()), message.data());
  std::fflush(stderr);
  std::abort();
}

}  // namespace mat::fuzz

/// Checks an invariant in a fuzz target, with or without NDEBUG: when @p condition is
/// false, prints it, the place and @p message (anything a std::string_view takes) on
/// stderr and aborts, which libFuzzer and the replay main both report as a failed input.
#define MAT_FUZZ_CHECK(condition, message)                               \
  do {                                                                   \
    if (!(condition)) {                                                  \
      ::mat::fuzz::checkFailed(__FILE__, __LINE__, #condition, message); \
    }                                                                    \
  } while (false)
