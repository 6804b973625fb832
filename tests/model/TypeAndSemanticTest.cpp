#include <gtest/gtest.h>

#include <string>

#include "core/GraphLibrary.h"
#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "model/ModelTestLibrary.h"
#include "model/Semantic.h"
#include "model/Type.h"
#include "support/JsonText.h"
#include "support/LibraryText.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

using test::addSemantic;
using test::addType;
using test::parseJson;
using test::parseObject;

using test::files::uuidOf;
using test::files::withUUIDs;

// Items and what is written for them: the item itself unless `written` says otherwise,
// whether its references are found or not. Which references are found (through the
// parent chain, and only those defined earlier) is checked on whole files, in the
// loader's tests.
struct Rewrite {
  const char* why;
  const char* read;
  const char* written;  // null when it is `read`
};

const Rewrite rewrites[] = {
    {"type without members, an unknown one dropped", R"({"content":"type","uuid":"$t9","x":5})",
     R"({"content":"type","uuid":"$t9"})"},
    {"type with a name", R"({"content":"type","uuid":"$t9","desc":"color"})", nullptr},
    {"type with a name and a default",
     R"({"content":"type","uuid":"$t9","desc":"color",
         "default":{"component":"float","value":[0.5,0.25,1]}})",
     nullptr},
    {"type with a default only",
     R"({"content":"type","uuid":"$t9","default":{"component":"string","value":"srgb"}})", nullptr},
    {"type with a default of semantics found and not found",
     R"({"content":"type","uuid":"$t9","desc":"tag",
         "default":{"component":"semantic","value":["$s1","$s255"]}})",
     nullptr},
    {"semantic whose type is found",
     R"({"content":"semantic","uuid":"$s9","desc":"a","type":"$t1"})", nullptr},
    {"semantic whose type is not found", R"({"content":"semantic","uuid":"$s9","type":"$t255"})",
     nullptr},
    {"semantic with an empty type", R"({"content":"semantic","uuid":"$s9","type":""})", nullptr},
    {"semantic without a type", R"({"content":"semantic","uuid":"$s9","desc":"albedo"})",
     R"({"content":"semantic","uuid":"$s9","desc":"albedo","type":""})"},
};

class TypesAndSemantics : public testing::Test {
 protected:
  TypesAndSemantics() {
    addType(library, uuidOf("$t1").c_str(), R"({"desc":"color"})");
    addSemantic(library, uuidOf("$s1").c_str(), withUUIDs(R"({"desc":"albedo","type":"$t1"})"));
  }
  GraphLibrary library{nullptr, "base"};
};

TEST_F(TypesAndSemantics, ItemIsWrittenAsReadSaveForMembersItDoesNotRead) {
  for (const Rewrite& rewrite : rewrites) {
    SCOPED_TRACE(rewrite.why);
    const picojson::object item = parseObject(withUUIDs(rewrite.read));
    const UUID uuid = makeUUID(item.at("uuid").get<std::string>().c_str());
    picojson::object written;
    if (item.at("content").get<std::string>() == "type") {
      const Type type(uuid, item, &library);
      written = saveType(&type);
    } else {
      const Semantic semantic(uuid, item, &library);
      written = saveSemantic(&semantic);
    }
    EXPECT_EQ(picojson::value(written),
              parseJson(withUUIDs(rewrite.written ? rewrite.written : rewrite.read)));
  }
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
      EXPECT_THROW_MSG((void)Semantic(UUID{}, item, &library), InputFileParsingException,
                       bad.message);
    } else {
      EXPECT_THROW_MSG((void)Type(UUID{}, item, &library), InputFileParsingException, bad.message);
    }
  }
}

}  // namespace
}  // namespace mat
