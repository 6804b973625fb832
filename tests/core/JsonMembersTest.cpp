#include "core/JsonMembers.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "support/JsonText.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

using test::parseObject;

const char* const item = R"({
  "text": "hello",
  "empty": "",
  "number": 5,
  "null": null,
  "object": {"text": "nested"},
  "array": ["text"],
  "bool": true,
  "upper": "00112233-4455-6677-8899-AABBCCDDEEFF",
  "braces": "{00112233-4455-6677-8899-aabbccddeeff}",
  "short": "00112233-4455-6677-8899-aabbccddeef",
  "words": "not a uuid"
})";

TEST(GetStringMember, RefusesAbsentAndNonStringMembersWithOneMessage) {
  const picojson::object object = parseObject(item);
  const char* const refused[] = {"absent", "Text", "number", "null", "object", "array", "bool"};
  for (const char* key : refused) {
    SCOPED_TRACE(key);
    EXPECT_THROW_MSG(getStringMember(object, key), InputFileParsingException,
                     "InputFileParsingException: Value not found in object");
    EXPECT_THROW_MSG(getUUIDMember(object, key), InputFileParsingException,
                     "InputFileParsingException: Value not found in object");
  }
}

TEST(GetUUIDMember, ConvertsTextAndGivesNilForEmptyOrUnreadableText) {
  const picojson::object object = parseObject(item);
  EXPECT_EQ(getUUIDMember(object, "upper"), makeUUID("00112233-4455-6677-8899-aabbccddeeff"));
  for (const char* key : {"empty", "braces", "short", "words", "text"}) {
    SCOPED_TRACE(key);
    EXPECT_EQ(getUUIDMember(object, key), UUID{});
  }
}

// Every other test pins a message through what(); here, the empty detail and a copy that
// outlives the original and the text it was made from.
TEST(Exceptions, WhatIsTheFixedPrefixAndTheDetailAndCopiesKeepIt) {
  EXPECT_STREQ(InputFileParsingException("").what(), "InputFileParsingException: ");
  std::string detail = "Node not present";
  auto original = std::make_unique<InvalidDataAccess>(detail);
  detail = "changed";
  const InvalidDataAccess copy = *original;
  original.reset();
  EXPECT_STREQ(copy.what(), "Index out of Range: Node not present");
}

}  // namespace
}  // namespace mat
