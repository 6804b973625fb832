#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "mat/Functions.h"

namespace mat {
namespace {

UUID uuidWithBytes(std::initializer_list<uint8_t> leadingBytes, uint8_t fill = 0) {
  UUID uuid;
  std::memset(uuid.bytes, fill, sizeof uuid.bytes);
  std::copy(leadingBytes.begin(), leadingBytes.end(), uuid.bytes);
  return uuid;
}

std::string textOf(const UUID& uuid) {
  char buffer[37];
  UUIDToString(uuid, buffer);
  return buffer;
}

// Some UUIDs worth round-tripping and sorting: nil, all ones, the bytes around the sign
// boundary in every position (so that sorting them shows bytes compare unsigned, earlier
// ones first), and random ones.
std::vector<UUID> sampleUUIDs() {
  std::vector<UUID> samples = {UUID{}, uuidWithBytes({}, 0xFF)};
  for (size_t position = 0; position < 16; ++position) {
    for (uint8_t value : {0x01, 0x7F, 0x80, 0xFE}) {
      UUID uuid{};
      uuid.bytes[position] = value;
      samples.push_back(uuid);
    }
  }
  for (int i = 0; i < 200; ++i) samples.push_back(generateUUID());
  return samples;
}

TEST(UUIDToString, WritesThirtySixLowerCaseCharactersAndANul) {
  char buffer[40];
  std::memset(buffer, '#', sizeof buffer);
  UUIDToString(UUID{}, buffer);
  EXPECT_STREQ(buffer, "00000000-0000-0000-0000-000000000000");
  EXPECT_EQ(buffer[37], '#') << "wrote past the 37th byte";

  UUIDToString(uuidWithBytes({0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0xFE, 0xDC, 0xBA,
                              0x98, 0x76, 0x54, 0x32, 0x10}),
               buffer);
  EXPECT_STREQ(buffer, "01234567-89ab-cdef-fedc-ba9876543210");
}

TEST(MakeUUID, RoundTripsEveryTextThatUUIDToStringWrites) {
  for (const UUID& uuid : sampleUUIDs()) {
    const std::string text = textOf(uuid);
    SCOPED_TRACE(text);
    EXPECT_EQ(makeUUID(text.c_str()), uuid);
    UUID parsed = generateUUID();
    EXPECT_TRUE(makeUUID(text.c_str(), parsed));
    EXPECT_EQ(parsed, uuid);
  }
}

TEST(MakeUUID, ReadsDigitsOfEitherCaseInTextOrder) {
  const UUID upper = makeUUID("00112233-4455-6677-8899-AABBCCDDEEFF");
  const UUID lower = makeUUID("00112233-4455-6677-8899-aabbccddeeff");
  const UUID mixed = makeUUID("00112233-4455-6677-8899-aAbBcCdDeEfF");
  EXPECT_EQ(upper, lower);
  EXPECT_EQ(mixed, lower);
  for (uint8_t i = 0; i < 16; ++i) EXPECT_EQ(upper.bytes[i], i * 0x11) << "byte " << int(i);
}

TEST(MakeUUID, EmptyTextIsTheNilUUIDAndAccepted) {
  EXPECT_EQ(makeUUID(""), UUID{});
  UUID out = generateUUID();
  EXPECT_TRUE(makeUUID("", out));
  EXPECT_EQ(out, UUID{});
}

struct RejectedText {
  const char* why;
  std::string text;  // may hold a NUL before its end
};

const RejectedText rejectedTexts[] = {
    {"braces", "{00112233-4455-6677-8899-aabbccddeeff}"},
    {"35 characters", "00112233-4455-6677-8899-aabbccddeef"},
    {"37 characters", "00112233-4455-6677-8899-aabbccddeeff0"},
    {"trailing blank", "00112233-4455-6677-8899-aabbccddeeff "},
    {"leading blank", " 00112233-4455-6677-8899-aabbccddeef"},
    {"non-hexadecimal digit", "00112233-4455-6677-8899-aabbccddeefg"},
    {"non-hexadecimal digit in the first group", "0011223x-4455-6677-8899-aabbccddeeff"},
    {"dash moved one place left", "0011223-34455-6677-8899-aabbccddeeff"},
    {"dash moved one place right", "001122334-455-6677-8899-aabbccddeeff"},
    {"digit in place of a dash", "00112233-445506677-8899-aabbccddeeff"},
    {"no dashes", "00112233445566778899aabbccddeeff"},
    {"dashes only", "------------------------------------"},
    {"sign before a group", "00112233-+455-6677-8899-aabbccddeeff"},
    {"hex prefix", "0x112233-4455-6677-8899-aabbccddeeff"},
    {"one character", "0"},
    {"embedded NUL", std::string("00112233-4455-6677-8899-aabbccdd\0eff", 36)},
    {"NUL in place of a dash", std::string("00112233\0"
                                           "4455-6677-8899-aabbccddeeff",
                                           36)},
};

TEST(MakeUUID, RefusesEverythingButThirtySixCharactersEightFourFourFourTwelve) {
  for (const RejectedText& row : rejectedTexts) {
    SCOPED_TRACE(row.why);
    // An exact-size copy on the heap, so that the address sanitizer sees any read past
    // the terminating NUL.
    auto text = std::make_unique<char[]>(row.text.size() + 1);
    std::memcpy(text.get(), row.text.c_str(), row.text.size() + 1);

    UUID out = uuidWithBytes({}, 0xA5);
    EXPECT_FALSE(makeUUID(text.get(), out));
    EXPECT_EQ(out, UUID{}) << "out is left nil on failure";
    EXPECT_EQ(makeUUID(text.get()), UUID{});
  }
}

struct HashExample {
  uint8_t firstByte;
  uint64_t hash;
};

const HashExample hashExamples[] = {
    {0x00, 0x3E},
    {0x12, 0x2C},
    {0x3E, 0x00},
    {0x7F, 0x41},
    {0x80, 0xFFFFFFFFFFFFFFBEull},
    {0xAB, 0xFFFFFFFFFFFFFF95ull},
    {0xFF, 0xFFFFFFFFFFFFFFC1ull},
};

TEST(HashUUID, SignExtendsTheFirstByteAndIgnoresTheRest) {
  for (const HashExample& example : hashExamples) {
    SCOPED_TRACE(testing::Message() << "first byte 0x" << std::hex << int(example.firstByte));
    EXPECT_EQ(hashUUID(uuidWithBytes({example.firstByte})), example.hash);
    EXPECT_EQ(hashUUID(uuidWithBytes({example.firstByte}, 0xFF)), example.hash);
    UUID random = generateUUID();
    random.bytes[0] = example.firstByte;
    EXPECT_EQ(hashUUID(random), example.hash);
  }
}

TEST(UUIDOrder, IsTheOrderOfTheLowerCaseTexts) {
  std::vector<UUID> byBytes = sampleUUIDs();
  std::sort(byBytes.begin(), byBytes.end());

  std::vector<std::string> texts;
  for (const UUID& uuid : byBytes) texts.push_back(textOf(uuid));
  std::vector<std::string> sortedTexts = texts;
  std::sort(sortedTexts.begin(), sortedTexts.end());
  EXPECT_EQ(texts, sortedTexts);
}

TEST(GenerateUUID, GivesDistinctVersionFourVariantOneIdentifiers) {
  std::set<UUID> seen;
  for (int i = 0; i < 10000; ++i) {
    const UUID uuid = generateUUID();
    ASSERT_EQ(uuid.bytes[6] >> 4, 4) << textOf(uuid);
    ASSERT_EQ(uuid.bytes[8] & 0xC0, 0x80) << textOf(uuid);
    ASSERT_TRUE(seen.insert(uuid).second) << "repeated " << textOf(uuid);
  }
}

TEST(GenerateUUID, IsSafeAndDistinctAcrossThreads) {
  constexpr int threadCount = 4;
  constexpr int perThread = 10000;
  std::vector<std::vector<UUID>> results(threadCount);
  std::vector<std::thread> threads;
  for (int t = 0; t < threadCount; ++t) {
    threads.emplace_back([&results, t] {
      results[t].reserve(perThread);
      for (int i = 0; i < perThread; ++i) results[t].push_back(generateUUID());
    });
  }
  for (std::thread& thread : threads) thread.join();

  std::set<UUID> all;
  for (const std::vector<UUID>& result : results) all.insert(result.begin(), result.end());
  EXPECT_EQ(all.size(), size_t{threadCount} * perThread);
}

}  // namespace
}  // namespace mat
