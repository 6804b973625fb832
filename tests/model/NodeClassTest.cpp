#include "model/NodeClass.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "core/GraphLibrary.h"
#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "model/ModelTestLibrary.h"
#include "support/JsonText.h"
#include "support/LibraryText.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

using test::addNodeClass;
using test::addType;
using test::parseJson;
using test::files::uuidOf;
using test::files::withUUIDs;

class NodeClasses : public testing::Test {
 protected:
  NodeClasses() {
    addType(library, uuidOf("$t1").c_str(), R"({"desc":"float"})");
    addType(library, uuidOf("$t2").c_str(), R"({"desc":"color"})");
    // Another library with a type of the same UUID: an equal text, another type.
    addType(otherLibrary, uuidOf("$t1").c_str(), R"({"desc":"float"})");
  }

  std::shared_ptr<const NodeClass> make(const std::string& item, GraphLibrary& in) {
    return addNodeClass(in, uuidOf("$c1").c_str(), withUUIDs(item));
  }
  std::shared_ptr<const NodeClass> make(const std::string& item) { return make(item, library); }

  GraphLibrary library{nullptr, "base"};
  GraphLibrary otherLibrary{nullptr, "other"};
};

TEST_F(NodeClasses, ClassWithoutMembersIsWrittenWithoutThem) {
  for (const char* item : {R"({"content":"nodeclass"})", R"({"input":[],"output":[]})"}) {
    SCOPED_TRACE(item);
    const auto nodeClass = make(item);
    EXPECT_EQ(nodeClass->GetLibrary(), &library);
    EXPECT_EQ(picojson::value(saveNodeClass(nodeClass.get())),
              parseJson(withUUIDs(R"({"content":"nodeclass","uuid":"$c1"})")));
  }
}

const char* const classesWrittenAsRead[] = {
    R"({"content":"nodeclass","uuid":"$c1","desc":"mix"})",
    R"({"content":"nodeclass","uuid":"$c1","desc":"mix",
        "input":[{"name":"a","type":"$t2","default":{"component":"float","value":[0,0,0]}},
                 {"name":"b","type":"$t2"},
                 {"name":"amount","type":"$t1","default":{"component":"float","value":0.5}}],
        "output":[{"name":"out","type":"$t2"}]})",
    R"({"content":"nodeclass","uuid":"$c1",
        "output":[{"name":"x","type":"$t255"},
                  {"name":"x","type":""}]})",
};

TEST_F(NodeClasses, ClassIsWrittenAsRead) {
  for (const char* item : classesWrittenAsRead) {
    SCOPED_TRACE(item);
    const auto nodeClass = make(item);
    EXPECT_EQ(picojson::value(saveNodeClass(nodeClass.get())), parseJson(withUUIDs(item)));
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
  const auto nodeClass = make(R"({"input":[{"name":"a","type":"$t1"},{"name":"b","type":"$t1"}],
               "output":[{"name":"out","type":"$t1"}]})");
  EXPECT_THROW_MSG((void)nodeClass->GetInput(2), InvalidDataAccess,
                   "Index out of Range: Input Index out of range");
  EXPECT_THROW_MSG((void)nodeClass->GetOutput(1), InvalidDataAccess,
                   "Index out of Range: Output Index out of range");
}

TEST_F(NodeClasses, FindMatchesTheWholeNameExactly) {
  const auto nodeClass =
      make(R"({"input":[{"name":"in","type":"$t1"},{"name":"other","type":"$t1"}],
               "output":[{"name":"out","type":"$t1"}]})");
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
     R"({"desc":"a","input":[{"name":"x","type":"$t1","default":{"component":"float","value":1}}],
         "output":[{"name":"out","type":"$t2"}]})",
     R"({"desc":"b","input":[{"name":"x","type":"$t1","default":{"component":"int","value":2}}],
         "output":[{"name":"out","type":"$t2"}]})",
     false, true},
    {"one has defaults, the other none",
     R"({"input":[{"name":"x","type":"$t1","default":{"component":"float","value":1}}]})",
     R"({"input":[{"name":"x","type":"$t1"}]})", false, true},
    {"inputs in another order",
     R"({"input":[{"name":"x","type":"$t1"},{"name":"y","type":"$t2"}]})",
     R"({"input":[{"name":"y","type":"$t2"},{"name":"x","type":"$t1"}]})", false, false},
    {"input renamed", R"({"input":[{"name":"x","type":"$t1"}]})",
     R"({"input":[{"name":"X","type":"$t1"}]})", false, false},
    {"input retyped", R"({"input":[{"name":"x","type":"$t1"}]})",
     R"({"input":[{"name":"x","type":"$t2"}]})", false, false},
    {"type of equal UUID from another library", R"({"input":[{"name":"x","type":"$t1"}]})",
     R"({"input":[{"name":"x","type":"$t1"}]})", true, false},
    {"one input more", R"({"input":[{"name":"x","type":"$t1"}]})",
     R"({"input":[{"name":"x","type":"$t1"},{"name":"y","type":"$t1"}]})", false, false},
    {"output renamed",
     R"({"input":[{"name":"x","type":"$t1"}],"output":[{"name":"out","type":"$t1"}]})",
     R"({"input":[{"name":"x","type":"$t1"}],"output":[{"name":"result","type":"$t1"}]})", false,
     false},
    {"input moved to the outputs", R"({"input":[{"name":"x","type":"$t1"}]})",
     R"({"output":[{"name":"x","type":"$t1"}]})", false, false},
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
