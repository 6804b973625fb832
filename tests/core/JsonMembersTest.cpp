#include "core/JsonMembers.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

picojson::object parseObject(const char* text) {
  picojson::value value;
  const std::string error = picojson::parse(value, text);
  EXPECT_EQ(error, "");
  EXPECT_TRUE(value.is<picojson::object>());
  return value.get<picojson::object>();
}

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

TEST(GetStringMember, ReturnsTheStringIncludingTheEmptyOne) {
  const picojson::object object = parseObject(item);
  EXPECT_EQ(getStringMember(object, "text"), "hello");
  EXPECT_EQ(getStringMember(object, "empty"), "");
}

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

TEST(Exceptions, WhatIsTheFixedPrefixFollowedByTheDetail) {
  EXPECT_STREQ(InputFileParsingException("Object with unknown type encountered").what(),
               "InputFileParsingException: Object with unknown type encountered");
  EXPECT_STREQ(InputFileParsingException(std::string("from a string")).what(),
               "InputFileParsingException: from a string");
  EXPECT_STREQ(InputFileParsingException("").what(), "InputFileParsingException: ");
  EXPECT_STREQ(InvalidDataAccess("Node not present").what(),
               "Index out of Range: Node not present");
  EXPECT_STREQ(InvalidDataAccess(std::string("Type index 7 out of range (count 3)")).what(),
               "Index out of Range: Type index 7 out of range (count 3)");
  EXPECT_STREQ(InvalidDataAccess("").what(), "Index out of Range: ");
}

TEST(Exceptions, CopiesKeepTheirOwnTextAndCatchAsStdException) {
  std::string detail = "Node not present";
  auto original = std::make_unique<InvalidDataAccess>(detail);
  detail = "changed";
  const InvalidDataAccess copy = *original;
  original.reset();
  EXPECT_STREQ(copy.what(), "Index out of Range: Node not present");

  EXPECT_THROW_MSG(throw InputFileParsingException("bad"), std::exception,
                   "InputFileParsingException: bad");
  EXPECT_THROW_MSG(throw InvalidDataAccess("bad"), std::exception, "Index out of Range: bad");
}

}  // namespace
}  // namespace mat
