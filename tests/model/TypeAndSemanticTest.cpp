#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "core/GraphLibrary.h"
#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "model/ModelTestLibrary.h"
#include "model/Semantic.h"
#include "model/Type.h"
#include "support/JsonText.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

using test::addSemantic;
using test::addType;
using test::parseJson;
using test::parseObject;

const char* const laterType = "7e000000-0000-0000-0000-000000000002";
const char* const albedo = "5e000000-0000-0000-0000-000000000001";

// Items whose saved object is the object that was read, member for member, whether their
// references are found or not. Which references are found (through the parent chain, and
// only those defined earlier) is checked on whole files, in the loader's tests.
const char* const typesWrittenAsRead[] = {
    R"({"content":"type","uuid":"7e000000-0000-0000-0000-0000000000a1"})",
    R"({"content":"type","uuid":"7e000000-0000-0000-0000-0000000000a1","desc":"color"})",
    R"({"content":"type","uuid":"7e000000-0000-0000-0000-0000000000a1","desc":"color",
        "default":{"component":"float","value":[0.5,0.25,1]}})",
    R"({"content":"type","uuid":"7e000000-0000-0000-0000-0000000000a1",
        "default":{"component":"string","value":"srgb"}})",
    R"({"content":"type","uuid":"7e000000-0000-0000-0000-0000000000a1","desc":"tag",
        "default":{"component":"semantic","value":["5e000000-0000-0000-0000-000000000001",
                                                   "5e000000-0000-0000-0000-0000000000ff"]}})",
};

const char* const semanticsWrittenAsRead[] = {
    R"({"content":"semantic","uuid":"5e000000-0000-0000-0000-0000000000a1","desc":"albedo",
        "type":"7e000000-0000-0000-0000-000000000001"})",
    R"({"content":"semantic","uuid":"5e000000-0000-0000-0000-0000000000a1",
        "type":"7e000000-0000-0000-0000-0000000000ff"})",
    R"({"content":"semantic","uuid":"5e000000-0000-0000-0000-0000000000a1","type":""})",
};

class TypesAndSemantics : public testing::Test {
 protected:
  TypesAndSemantics() {
    addType(library, "7e000000-0000-0000-0000-000000000001", R"({"desc":"color"})");
    addSemantic(library, albedo,
                R"({"desc":"albedo","type":"7e000000-0000-0000-0000-000000000001"})");
  }
  GraphLibrary library{nullptr, "base"};
};

TEST_F(TypesAndSemantics, TypeIsWrittenAsRead) {
  for (const char* text : typesWrittenAsRead) {
    SCOPED_TRACE(text);
    const picojson::object item = parseObject(text);
    const Type type(makeUUID(item.at("uuid").get<std::string>().c_str()), item, &library);
    EXPECT_EQ(picojson::value(saveType(&type)), parseJson(text));
  }
}

TEST_F(TypesAndSemantics, SemanticIsWrittenAsRead) {
  for (const char* text : semanticsWrittenAsRead) {
    SCOPED_TRACE(text);
    const picojson::object item = parseObject(text);
    const Semantic semantic(makeUUID(item.at("uuid").get<std::string>().c_str()), item, &library);
    EXPECT_EQ(picojson::value(saveSemantic(&semantic)), parseJson(text));
  }
}

TEST_F(TypesAndSemantics, TypeWithoutMembersHasNoNameAndNoDefault) {
  const Type type(makeUUID(laterType), parseObject(R"({"content":"type","extra":5})"), &library);
  EXPECT_STREQ(type.GetName(), "");
  EXPECT_EQ(type.GetDefault(), nullptr);
  EXPECT_EQ(picojson::value(saveType(&type)),
            parseJson(R"({"content":"type","uuid":"7e000000-0000-0000-0000-000000000002"})"));
}

TEST_F(TypesAndSemantics, SemanticWithoutTypeIsWrittenWithEmptyType) {
  const Semantic semantic(makeUUID(albedo), parseObject(R"({"desc":"albedo"})"), &library);
  EXPECT_EQ(semantic.GetType(), nullptr);
  EXPECT_EQ(picojson::value(saveSemantic(&semantic)),
            parseJson(R"({"content":"semantic","uuid":"5e000000-0000-0000-0000-000000000001",
                          "desc":"albedo","type":""})"));
}

struct BadItem {
  const char* why;
  bool semantic;
  const char* item;
  const char* message;
};
const BadItem badItems[] = {
    {"type desc a number", false, R"({"desc":5})",
     "InputFileParsingException: Invalid type for desc"},
    {"type default a number", false, R"({"default":5})",
     "InputFileParsingException: Invalid type for default"},
    {"type default an array", false, R"({"default":[{"component":"int","value":1}]})",
     "InputFileParsingException: Invalid type for default"},
    {"type default without value", false, R"({"default":{"component":"int"}})",
     "InputFileParsingException: Value has no value setting!"},
    {"type default with a bad element", false, R"({"default":{"component":"int","value":"1"}})",
     "InputFileParsingException: Wrong value given, double expected!"},
    {"type: default is read before desc", false, R"({"desc":5,"default":5})",
     "InputFileParsingException: Invalid type for default"},
    {"semantic desc null", true, R"({"desc":null})",
     "InputFileParsingException: Invalid type for desc"},
    {"semantic type a number", true, R"({"type":5})",
     "InputFileParsingException: Invalid type for type"},
    {"semantic: desc is read before type", true, R"({"type":5,"desc":[]})",
     "InputFileParsingException: Invalid type for desc"},
};

TEST_F(TypesAndSemantics, RefusesMembersOfTheWrongKind) {
  for (const BadItem& bad : badItems) {
    SCOPED_TRACE(bad.why);
    const picojson::object item = parseObject(bad.item);
    if (bad.semantic) {
      EXPECT_THROW_MSG((void)Semantic(makeUUID(albedo), item, &library), InputFileParsingException,
                       bad.message);
    } else {
      EXPECT_THROW_MSG((void)Type(makeUUID(laterType), item, &library), InputFileParsingException,
                       bad.message);
    }
  }
}

}  // namespace
}  // namespace mat
