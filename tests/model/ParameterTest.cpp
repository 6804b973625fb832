#include "model/Parameter.h"

#include <gtest/gtest.h>

#include <string>

#include "core/GraphLibrary.h"
#include "mat/Exceptions.h"
#include "model/Annotation.h"
#include "model/ModelTestLibrary.h"
#include "support/JsonText.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

using test::addNodeClass;
using test::addType;
using test::parseArray;
using test::parseJson;

const char* const floatType = "7e000000-0000-0000-0000-000000000001";
const char* const colorType = "7e000000-0000-0000-0000-000000000002";

class Parameters : public testing::Test {
 protected:
  Parameters() {
    floats = addType(library, floatType, R"({"desc":"float"})");
    colors = addType(library, colorType, R"({"desc":"color"})");
  }

  ParameterList read(const char* entries, const char* member = "input") {
    ParameterList list;
    readParameters(list, parseArray(entries), &library, member);
    return list;
  }

  GraphLibrary library{nullptr, "base"};
  const IType* floats;
  const IType* colors;
};

TEST_F(Parameters, RepeatedNamesAreAllKeptAndTheSearchFindsTheLast) {
  const ParameterList list = read(R"([
      {"name":"x","type":"7e000000-0000-0000-0000-000000000001"},
      {"name":"y","type":"7e000000-0000-0000-0000-000000000001"},
      {"name":"x","type":"7e000000-0000-0000-0000-000000000002"}])");
  ASSERT_EQ(list.items.size(), 3u);
  EXPECT_EQ(list.items[0].GetType(), floats);
  EXPECT_EQ(list.items[2].GetType(), colors);
  size_t position = 99;
  EXPECT_TRUE(list.Find("x", &position));
  EXPECT_EQ(position, 2u);
}

TEST_F(Parameters, ErasingRenumbersTheSearch) {
  ParameterList list = read(R"([
      {"name":"x","type":""}, {"name":"y","type":""}, {"name":"x","type":""}])");
  list.Erase(0);
  size_t position = 99;
  EXPECT_TRUE(list.Find("x", &position));
  EXPECT_EQ(position, 1u);
  EXPECT_TRUE(list.Find("y", &position));
  EXPECT_EQ(position, 0u);
  list.Erase(1);  // the last "x": the name is gone
  EXPECT_FALSE(list.Find("x", &position));
}

struct BadEntries {
  const char* why;
  const char* member;
  const char* entries;
  const char* message;
};
const BadEntries badEntries[] = {
    {"input entry a number", "input", R"([5])",
     "InputFileParsingException: Invalid type for input"},
    {"output entry a string", "output", R"(["x"])",
     "InputFileParsingException: Invalid type for output"},
    {"output entry an array", "output", R"([[]])",
     "InputFileParsingException: Invalid type for output"},
    {"no name", "input", R"([{"type":""}])",
     "InputFileParsingException: Value not found in object"},
    {"name a number", "input", R"([{"name":1,"type":""}])",
     "InputFileParsingException: Value not found in object"},
    {"no type", "input", R"([{"name":"a"}])",
     "InputFileParsingException: Value not found in object"},
    {"type null", "output", R"([{"name":"a","type":null}])",
     "InputFileParsingException: Value not found in object"},
    {"default a number", "input", R"([{"name":"a","type":"","default":5}])",
     "InputFileParsingException: Invalid type for default"},
    {"default without value", "input", R"([{"name":"a","type":"","default":{"component":"int"}}])",
     "InputFileParsingException: Value has no value setting!"},
    {"default of no known component", "input",
     R"([{"name":"a","type":"","default":{"component":"vector","value":1}}])",
     "InputFileParsingException: Value has no valid component!"},
    {"first bad entry decides", "input", R"([{"name":"a","type":""},{"name":"b"},5])",
     "InputFileParsingException: Value not found in object"},
};

TEST_F(Parameters, RefusesBadEntries) {
  for (const BadEntries& bad : badEntries) {
    SCOPED_TRACE(bad.why);
    EXPECT_THROW_MSG((void)read(bad.entries, bad.member), InputFileParsingException, bad.message);
  }
}

// Entry arrays that are written back member for member, through a node class that has
// them as inputs and as outputs.
const char* const entriesWrittenAsRead[] = {
    R"([{"name":"a","type":"7e000000-0000-0000-0000-000000000001"}])",
    R"([{"name":"a","type":"7e000000-0000-0000-0000-000000000001",
         "default":{"component":"float","value":0.5}},
        {"name":"b","type":"7e000000-0000-0000-0000-000000000002",
         "default":{"component":"int","value":[1,2,3]}}])",
    R"([{"name":"x","type":"7e000000-0000-0000-0000-000000000001"},
        {"name":"x","type":"7e000000-0000-0000-0000-000000000002"}])",
    R"([{"name":"unresolved","type":"7e000000-0000-0000-0000-0000000000ff",
         "default":{"component":"semantic","value":"5e000000-0000-0000-0000-0000000000ff"}}])",
    R"([{"name":"","type":""}])",
};

TEST_F(Parameters, EntriesAreWrittenAsRead) {
  for (const char* entries : entriesWrittenAsRead) {
    SCOPED_TRACE(entries);
    const auto nodeClass =
        addNodeClass(library, "c0000000-0000-0000-0000-000000000001",
                     std::string(R"({"input":)") + entries + R"(,"output":)" + entries + "}");
    EXPECT_EQ(picojson::value(saveParameters(nodeClass.get(), ParameterSide::Input)),
              parseJson(entries));
    EXPECT_EQ(picojson::value(saveParameters(nodeClass.get(), ParameterSide::Output)),
              parseJson(entries));
  }
}

TEST_F(Parameters, DefaultOfNoElementsIsStillADefault) {
  const auto nodeClass =
      addNodeClass(library, "c0000000-0000-0000-0000-000000000001",
                   R"({"input":[{"name":"a","type":"","default":{"component":"float","value":[]},
                                 "extra":1}]})");
  const IValue* defaultValue = nodeClass->GetInput(0)->GetDefault();
  ASSERT_NE(defaultValue, nullptr);
  EXPECT_EQ(defaultValue->GetCount(), 0u);
  EXPECT_EQ(picojson::value(saveParameter(nodeClass.get(), 0, ParameterSide::Input)),
            parseJson(R"({"name":"a","type":"","default":{"component":"float"}})"));
}

TEST_F(Parameters, AnnotationOfALoadedParameterIsTheHostsAndNotWritten) {
  const auto nodeClass = addNodeClass(library, "c0000000-0000-0000-0000-000000000001",
                                      R"({"input":[{"name":"a","type":""}]})");
  IAnnotation* annotation = nodeClass->GetInput(0)->GetAnnotation();
  annotation->AddEntry("widget", "slider");
  EXPECT_EQ(nodeClass->GetInput(0)->GetAnnotation()->GetEntryCount(), 1u);
  EXPECT_EQ(picojson::value(saveParameter(nodeClass.get(), 0, ParameterSide::Input)),
            parseJson(R"({"name":"a","type":""})"));
}

TEST(Annotation, KeepsTheFirstValueOfAKeyAndTheOrderOfAdding) {
  Annotation annotation;
  annotation.AddEntry("b", "1");
  annotation.AddEntry("a", "2");
  annotation.AddEntry("b", "3");
  annotation.AddEntry("B", "4");
  ASSERT_EQ(annotation.GetEntryCount(), 3u);
  EXPECT_STREQ(annotation.GetKey(0), "b");
  EXPECT_STREQ(annotation.GetValue(0), "1");
  EXPECT_STREQ(annotation.GetKey(1), "a");
  EXPECT_STREQ(annotation.GetKey(2), "B");
  EXPECT_TRUE(annotation.HasKey("B"));
  EXPECT_FALSE(annotation.HasKey("A"));
  EXPECT_FALSE(annotation.HasKey(""));
}

TEST(Annotation, IndexOutsideTheEntriesAnswersNull) {
  Annotation annotation;
  EXPECT_EQ(annotation.GetKey(0), nullptr);
  annotation.AddEntry("k", "v");
  for (int32_t index : {-1, 1, INT32_MIN, INT32_MAX}) {
    SCOPED_TRACE(index);
    EXPECT_EQ(annotation.GetKey(index), nullptr);
    EXPECT_EQ(annotation.GetValue(index), nullptr);
  }
}

}  // namespace
}  // namespace mat
