#include "model/NodeClass.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "core/GraphLibrary.h"
#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "model/ModelTestLibrary.h"
#include "support/JsonText.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

using test::addNodeClass;
using test::addType;
using test::parseJson;
using test::parseObject;

const char* const floatType = "7e000000-0000-0000-0000-000000000001";
const char* const colorType = "7e000000-0000-0000-0000-000000000002";
const char* const classUUID = "c0000000-0000-0000-0000-000000000001";

// Replaces each "$F" by the float type's UUID and each "$C" by the color type's, so that
// the tables below stay readable.
std::string withTypes(std::string text) {
  for (const auto& [token, uuid] : {std::pair{"$F", floatType}, std::pair{"$C", colorType}}) {
    for (size_t at = text.find(token); at != std::string::npos; at = text.find(token, at)) {
      text.replace(at, 2, uuid);
    }
  }
  return text;
}

class NodeClasses : public testing::Test {
 protected:
  NodeClasses() {
    addType(library, floatType, R"({"desc":"float"})");
    addType(library, colorType, R"({"desc":"color"})");
    // Another library with a type of the same UUID: an equal text, another type.
    addType(otherLibrary, floatType, R"({"desc":"float"})");
  }

  std::shared_ptr<const NodeClass> make(const std::string& item, GraphLibrary& in) {
    return addNodeClass(in, classUUID, withTypes(item));
  }
  std::shared_ptr<const NodeClass> make(const std::string& item) { return make(item, library); }

  GraphLibrary library{nullptr, "base"};
  GraphLibrary otherLibrary{nullptr, "other"};
};

TEST_F(NodeClasses, ClassWithoutMembersHasNoNameAndNoParameters) {
  for (const char* item : {R"({"content":"nodeclass"})", R"({"input":[],"output":[]})"}) {
    SCOPED_TRACE(item);
    const auto nodeClass = make(item);
    EXPECT_STREQ(nodeClass->GetName(), "");
    EXPECT_EQ(nodeClass->GetInputCount(), 0u);
    EXPECT_EQ(nodeClass->GetOutputCount(), 0u);
    EXPECT_EQ(nodeClass->GetLibrary(), &library);
    EXPECT_EQ(
        picojson::value(saveNodeClass(nodeClass.get())),
        parseJson(R"({"content":"nodeclass","uuid":"c0000000-0000-0000-0000-000000000001"})"));
  }
}

const char* const classesWrittenAsRead[] = {
    R"({"content":"nodeclass","uuid":"c0000000-0000-0000-0000-000000000001","desc":"mix"})",
    R"({"content":"nodeclass","uuid":"c0000000-0000-0000-0000-000000000001","desc":"mix",
        "input":[{"name":"a","type":"$C","default":{"component":"float","value":[0,0,0]}},
                 {"name":"b","type":"$C"},
                 {"name":"amount","type":"$F","default":{"component":"float","value":0.5}}],
        "output":[{"name":"out","type":"$C"}]})",
    R"({"content":"nodeclass","uuid":"c0000000-0000-0000-0000-000000000001",
        "output":[{"name":"x","type":"7e000000-0000-0000-0000-0000000000ff"},
                  {"name":"x","type":""}]})",
};

TEST_F(NodeClasses, ClassIsWrittenAsRead) {
  for (const char* item : classesWrittenAsRead) {
    SCOPED_TRACE(item);
    const auto nodeClass = make(item);
    EXPECT_EQ(picojson::value(saveNodeClass(nodeClass.get())), parseJson(withTypes(item)));
  }
}

struct BadClass {
  const char* why;
  const char* item;
  const char* message;
};
const BadClass badClasses[] = {
    {"desc a number", R"({"desc":5})", "InputFileParsingException: Invalid type for desc"},
    {"input an object", R"({"input":{}})", "InputFileParsingException: Invalid type for inputs"},
    {"output a string", R"({"output":"x"})", "InputFileParsingException: Invalid type for output"},
    {"desc before input", R"({"input":{},"desc":5})",
     "InputFileParsingException: Invalid type for desc"},
    {"input before output", R"({"output":"x","input":{}})",
     "InputFileParsingException: Invalid type for inputs"},
    {"input entries before output", R"({"output":"x","input":[5]})",
     "InputFileParsingException: Invalid type for input"},
    {"bad output entry", R"({"input":[{"name":"a","type":""}],"output":[{"name":"b"}]})",
     "InputFileParsingException: Value not found in object"},
    {"bad default of an output", R"({"output":[{"name":"b","type":"","default":{}}]})",
     "InputFileParsingException: Value has no value setting!"},
};

TEST_F(NodeClasses, RefusesMembersOfTheWrongKindInKeyOrder) {
  for (const BadClass& bad : badClasses) {
    SCOPED_TRACE(bad.why);
    EXPECT_THROW_MSG((void)make(bad.item), InputFileParsingException, bad.message);
  }
}

TEST_F(NodeClasses, IndexAtTheCountThrows) {
  const auto nodeClass = make(R"({"input":[{"name":"a","type":"$F"},{"name":"b","type":"$F"}],
               "output":[{"name":"out","type":"$F"}]})");
  EXPECT_THROW_MSG((void)nodeClass->GetInput(2), InvalidDataAccess,
                   "Index out of Range: Input Index out of range");
  EXPECT_THROW_MSG((void)nodeClass->GetOutput(1), InvalidDataAccess,
                   "Index out of Range: Output Index out of range");
}

TEST_F(NodeClasses, FindMatchesTheWholeNameExactly) {
  const auto nodeClass = make(R"({"input":[{"name":"in","type":"$F"},{"name":"other","type":"$F"}],
               "output":[{"name":"out","type":"$F"}]})");
  size_t index = 99;
  EXPECT_TRUE(nodeClass->FindInput("other", &index));
  EXPECT_EQ(index, 1u);
  EXPECT_TRUE(nodeClass->FindInput("in", nullptr));
  EXPECT_TRUE(nodeClass->FindOutput("out", nullptr));

  index = 99;
  for (const char* name : {"In", "i", "in ", "", "out"}) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(nodeClass->FindInput(name, &index));
    EXPECT_FALSE(nodeClass->FindInput(name, nullptr));
  }
  EXPECT_FALSE(nodeClass->FindOutput("in", &index));
  EXPECT_FALSE(nodeClass->FindInput(nullptr, &index));
  EXPECT_EQ(index, 99u);
}

struct SignaturePair {
  const char* why;
  const char* a;
  const char* b;
  bool bInOtherLibrary;
  bool identical;
};
const SignaturePair signaturePairs[] = {
    {"no parameters", "{}", R"({"desc":"other"})", false, true},
    {"names of the classes and defaults differ",
     R"({"desc":"a","input":[{"name":"x","type":"$F","default":{"component":"float","value":1}}],
         "output":[{"name":"out","type":"$C"}]})",
     R"({"desc":"b","input":[{"name":"x","type":"$F","default":{"component":"int","value":2}}],
         "output":[{"name":"out","type":"$C"}]})",
     false, true},
    {"one has defaults, the other none",
     R"({"input":[{"name":"x","type":"$F","default":{"component":"float","value":1}}]})",
     R"({"input":[{"name":"x","type":"$F"}]})", false, true},
    {"inputs in another order", R"({"input":[{"name":"x","type":"$F"},{"name":"y","type":"$C"}]})",
     R"({"input":[{"name":"y","type":"$C"},{"name":"x","type":"$F"}]})", false, false},
    {"input renamed", R"({"input":[{"name":"x","type":"$F"}]})",
     R"({"input":[{"name":"X","type":"$F"}]})", false, false},
    {"input retyped", R"({"input":[{"name":"x","type":"$F"}]})",
     R"({"input":[{"name":"x","type":"$C"}]})", false, false},
    {"type of equal UUID from another library", R"({"input":[{"name":"x","type":"$F"}]})",
     R"({"input":[{"name":"x","type":"$F"}]})", true, false},
    {"one input more", R"({"input":[{"name":"x","type":"$F"}]})",
     R"({"input":[{"name":"x","type":"$F"},{"name":"y","type":"$F"}]})", false, false},
    {"output renamed",
     R"({"input":[{"name":"x","type":"$F"}],"output":[{"name":"out","type":"$F"}]})",
     R"({"input":[{"name":"x","type":"$F"}],"output":[{"name":"result","type":"$F"}]})", false,
     false},
    {"input moved to the outputs", R"({"input":[{"name":"x","type":"$F"}]})",
     R"({"output":[{"name":"x","type":"$F"}]})", false, false},
};

TEST_F(NodeClasses, IdenticalSignaturesComparesNamesAndTypeObjectsInOrder) {
  for (const SignaturePair& pair : signaturePairs) {
    SCOPED_TRACE(pair.why);
    const auto a = make(pair.a);
    const auto b = make(pair.b, pair.bInOtherLibrary ? otherLibrary : library);
    EXPECT_EQ(identicalSignatures(a.get(), b.get()), pair.identical);
    EXPECT_EQ(identicalSignatures(b.get(), a.get()), pair.identical);
    EXPECT_TRUE(identicalSignatures(a.get(), a.get()));
  }
}

TEST_F(NodeClasses, IdenticalSignaturesWithNullIsFalse) {
  const auto nodeClass = make("{}");
  EXPECT_FALSE(identicalSignatures(nodeClass.get(), nullptr));
  EXPECT_FALSE(identicalSignatures(nullptr, nodeClass.get()));
  EXPECT_FALSE(identicalSignatures(nullptr, nullptr));
}

}  // namespace
}  // namespace mat
