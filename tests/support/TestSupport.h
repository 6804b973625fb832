#pragma once

// Helpers shared by the unit tests.

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <string>

// Expects `statement` to throw `exception` whose what() is exactly `message`.
#define EXPECT_THROW_MSG(statement, exception, message)                       \
  do {                                                                        \
    try {                                                                     \
      statement;                                                              \
      ADD_FAILURE() << "Expected " #exception " with message: " << (message); \
    } catch (const exception& thrown) {                                       \
      EXPECT_STREQ(thrown.what(), (message));                                 \
    }                                                                         \
  } while (false)

namespace mat::test {

// Swaps std::wcerr's buffer for a string buffer while it lives.
class WideErrorCapture {
 public:
  WideErrorCapture() : previous_(std::wcerr.rdbuf(buffer_.rdbuf())) {}
  ~WideErrorCapture() { std::wcerr.rdbuf(previous_); }
  WideErrorCapture(const WideErrorCapture&) = delete;
  WideErrorCapture& operator=(const WideErrorCapture&) = delete;
  std::wstring text() const { return buffer_.str(); }

 private:
  std::wostringstream buffer_;
  std::wstreambuf* previous_;
};

// A path inside the source tree, e.g. sourcePath("examples/base.matlib").
std::string sourcePath(const std::string& relative);

// The whole content of a file; fails the test when it cannot be read.
std::string readFile(const std::string& path);

}  // namespace mat::test
