#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <thread>

#include "platform/Random.h"

namespace mat::platform {
namespace {

TEST(FillRandomBytes, WritesExactlyTheBytesAskedFor) {
  for (size_t count : {0, 1, 7, 8, 9, 13, 16, 31}) {
    SCOPED_TRACE(testing::Message() << "count " << count);
    std::array<uint8_t, 40> buffer;
    buffer.fill(0xA5);
    fillRandomBytes(buffer.data(), count);
    for (size_t i = count; i < buffer.size(); ++i) ASSERT_EQ(buffer[i], 0xA5) << "byte " << i;
  }
}

// Over 64 calls every bit of every position, the partial last word included, is seen
// both set and clear; a stuck or unwritten byte fails with certainty, a healthy generator
// with a chance of about 2^-56.
TEST(FillRandomBytes, VariesEveryBitOfEveryByte) {
  constexpr size_t count = 13;
  std::array<uint8_t, count> anySet{}, allSet;
  allSet.fill(0xFF);
  for (int call = 0; call < 64; ++call) {
    std::array<uint8_t, count> buffer{};
    fillRandomBytes(buffer.data(), count);
    for (size_t i = 0; i < count; ++i) {
      anySet[i] |= buffer[i];
      allSet[i] &= buffer[i];
    }
  }
  for (size_t i = 0; i < count; ++i) {
    EXPECT_EQ(anySet[i], 0xFF) << "byte " << i;
    EXPECT_EQ(allSet[i], 0x00) << "byte " << i;
  }
}

TEST(FillRandomBytes, EachThreadHasItsOwnStream) {
  std::array<uint8_t, 32> first{}, second{};
  std::thread([&first] { fillRandomBytes(first.data(), first.size()); }).join();
  std::thread([&second] { fillRandomBytes(second.data(), second.size()); }).join();
  EXPECT_NE(first, second) << "two threads were seeded alike";
}

}  // namespace
}  // namespace mat::platform
