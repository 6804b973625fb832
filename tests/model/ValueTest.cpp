#include "model/Value.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "core/GraphLibrary.h"
#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "mat/ISemantic.h"
#include "model/ModelTestLibrary.h"
#include "support/JsonText.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

using test::parseJson;
using test::parseObject;

struct ReleaseValue {
  void operator()(const IValue* value) const { releaseValue(value); }
};
using HostValue = std::unique_ptr<const IValue, ReleaseValue>;

constexpr float infinity = std::numeric_limits<float>::infinity();

const char* const knownSemantic = "5e000000-0000-0000-0000-000000000001";
const char* const unknownSemantic = "5e000000-0000-0000-0000-0000000000ff";

Value readValue(const std::string& object, const IGraphLibrary* library = nullptr) {
  return Value(parseObject(object), library);
}

picojson::value written(const IValue& value) { return picojson::value(saveValue(value)); }

// A library holding one semantic, for values whose elements refer to semantics.
class ValueWithSemantics : public testing::Test {
 protected:
  ValueWithSemantics() {
    semantic = test::addSemantic(library, knownSemantic, R"({"desc":"albedo"})");
  }
  GraphLibrary library{nullptr, "semantics"};
  const ISemantic* semantic;
};

struct BadValue {
  const char* why;
  const char* object;
  const char* message;
};
const BadValue badValues[] = {
    {"empty object", R"({})", "InputFileParsingException: Value has no value setting!"},
    {"component without value", R"({"component":"float"})",
     "InputFileParsingException: Value has no value setting!"},
    {"value is looked for before component", R"({"component":"Float"})",
     "InputFileParsingException: Value has no value setting!"},
    {"value without component", R"({"value":1})",
     "InputFileParsingException: Value not found in object"},
    {"component not a string", R"({"component":3,"value":1})",
     "InputFileParsingException: Value not found in object"},
    {"component in the wrong case", R"({"component":"Float","value":1})",
     "InputFileParsingException: Value has no valid component!"},
    {"component of no kind", R"({"component":"double","value":1})",
     "InputFileParsingException: Value has no valid component!"},
    {"float from a string", R"({"component":"float","value":"1"})",
     "InputFileParsingException: Wrong value given, double expected!"},
    {"float from a nested array", R"({"component":"float","value":[[1]]})",
     "InputFileParsingException: Wrong value given, double expected!"},
    {"int from a boolean after a good element", R"({"component":"int","value":[1,true]})",
     "InputFileParsingException: Wrong value given, double expected!"},
    {"int from null", R"({"component":"int","value":null})",
     "InputFileParsingException: Wrong value given, double expected!"},
    {"string from a number", R"({"component":"string","value":["a",1]})",
     "InputFileParsingException: Wrong value given, string expected!"},
    {"bool from a number", R"({"component":"bool","value":1})",
     "InputFileParsingException: Wrong value given for bool, true or false expected!"},
    {"bool from an object", R"({"component":"bool","value":[true,{}]})",
     "InputFileParsingException: Wrong value given for bool, true or false expected!"},
    {"uuid from a number", R"({"component":"uuid","value":5})",
     "InputFileParsingException: Wrong value given, expected UUID!"},
    {"uuid from text that is no uuid", R"({"component":"uuid","value":"5e00"})",
     "InputFileParsingException: Wrong value given, invalid UUID!"},
    {"semantic from a number", R"({"component":"semantic","value":[5]})",
     "InputFileParsingException: Wrong value given, expected UUID!"},
    {"semantic from text that is no uuid", R"({"component":"semantic","value":"x"})",
     "InputFileParsingException: Wrong value given, invalid UUID!"},
    {"first bad element decides: bad text first", R"({"component":"uuid","value":["x",5]})",
     "InputFileParsingException: Wrong value given, invalid UUID!"},
    {"first bad element decides: number first", R"({"component":"uuid","value":[5,"x"]})",
     "InputFileParsingException: Wrong value given, expected UUID!"},
};

TEST_F(ValueWithSemantics, ReadRefusesMalformedObjectsAndLeavesNoValue) {
  for (const BadValue& bad : badValues) {
    SCOPED_TRACE(bad.why);
    Value value(Value::Storage(std::vector<int32_t>{7}));
    EXPECT_THROW_MSG(value.Read(parseObject(bad.object), &library), InputFileParsingException,
                     bad.message);
    EXPECT_EQ(value.GetValueType(), ValueType::None);
    EXPECT_EQ(value.GetCount(), 0u);
  }
}

struct FloatConversion {
  const char* number;
  float expected;
};
const FloatConversion floatConversions[] = {
    {"5", 5.0f},
    {"0.1", 0.1f},
    {"-0.0", -0.0f},
    {"3.4028235e38", FLT_MAX},
    {"-3.4028235e38", -FLT_MAX},
    {"3.4028235677973362e38", FLT_MAX},   // just below halfway to 2^128
    {"3.4028235677973366e38", infinity},  // halfway: rounds to even, which is infinity
    {"-3.4028235677973366e38", -infinity},
    {"1e39", infinity},
    {"-1e39", -infinity},
    {"1e308", infinity},
    {"1e-40", 1e-40f},                     // a denormal float
    {"1.401298464324817e-45", 0x1p-149f},  // the smallest denormal
    {"7.006492321624085e-46", 0.0f},       // half of it rounds to even: zero
    {"1e-50", 0.0f},
    {"-1e-50", -0.0f},
};

TEST(ValueRead, FloatIsTheNearestFloatAndInfinityBeyondTheRange) {
  for (const FloatConversion& conversion : floatConversions) {
    SCOPED_TRACE(conversion.number);
    const Value value =
        readValue(std::string(R"({"component":"float","value":)") + conversion.number + "}");
    ASSERT_EQ(value.GetCount(), 1u);
    // Bits, so that the sign of zero and the exact denormal count.
    EXPECT_EQ(std::bit_cast<uint32_t>(value.GetFloat(0)),
              std::bit_cast<uint32_t>(conversion.expected))
        << value.GetFloat(0);
  }
}

struct IntConversion {
  const char* number;
  int32_t expected;
};
const IntConversion intConversions[] = {
    {"1.9", 1},
    {"-1.9", -1},
    {"-0.5", 0},
    {"2147483647", 2147483647},
    {"2147483647.9", 2147483647},
    {"2147483648", INT32_MIN},
    {"-2147483648", INT32_MIN},
    {"-2147483648.9", INT32_MIN},
    {"-2147483647.9", -2147483647},
    {"-2147483649", INT32_MIN},
    {"3e10", INT32_MIN},
    {"-3e10", INT32_MIN},
    {"1e308", INT32_MIN},
};

TEST(ValueRead, IntTruncatesTowardZeroAndOutOfRangeIsTheSmallestInt) {
  for (const IntConversion& conversion : intConversions) {
    SCOPED_TRACE(conversion.number);
    const Value value =
        readValue(std::string(R"({"component":"int","value":)") + conversion.number + "}");
    ASSERT_EQ(value.GetCount(), 1u);
    EXPECT_EQ(value.GetInt(0), conversion.expected);
  }
}

struct SingleElement {
  const char* component;
  const char* element;
};
const SingleElement singleElements[] = {
    {"bool", "true"},        {"int", "-7"},
    {"float", "0.5"},        {"uuid", R"("0123abcd-0000-0000-0000-000000000000")"},
    {"string", R"("text")"}, {"semantic", R"("5e000000-0000-0000-0000-000000000001")"},
};

TEST_F(ValueWithSemantics, OneElementArrayReadsAsTheElementAndIsWrittenAsIt) {
  for (const SingleElement& single : singleElements) {
    SCOPED_TRACE(single.component);
    const std::string head = std::string(R"({"component":")") + single.component + R"(","value":)";
    const std::string bare = head + single.element + "}";
    const Value fromElement = readValue(bare, &library);
    const Value fromArray = readValue(head + "[" + single.element + "]}", &library);
    EXPECT_EQ(fromArray.GetValueType(), fromElement.GetValueType());
    EXPECT_EQ(fromElement.GetCount(), 1u);
    EXPECT_EQ(fromArray.GetCount(), 1u);
    EXPECT_EQ(written(fromElement), parseJson(bare));
    EXPECT_EQ(written(fromArray), parseJson(bare));
  }
}

struct Rewrite {
  const char* why;
  const char* read;
  const char* written;
};
const Rewrite rewrites[] = {
    {"ints", R"({"component":"int","value":[1,-2,2147483647,-2147483648]})",
     R"({"component":"int","value":[1,-2,2147483647,-2147483648]})"},
    {"ints truncated", R"({"component":"int","value":[1.9,-1.9,3e10]})",
     R"({"component":"int","value":[1,-1,-2147483648]})"},
    {"floats exact in float", R"({"component":"float","value":[0.5,-0.25,1024]})",
     R"({"component":"float","value":[0.5,-0.25,1024]})"},
    {"bools from text are true only for lower-case true",
     R"({"component":"bool","value":["true","True","",false,true,"TRUE"," true","1","yes"]})",
     R"({"component":"bool","value":[true,false,false,false,true,false,false,false,false]})"},
    {"uuids in capitals come out in lower case",
     R"({"component":"uuid","value":["0123ABCD-EF00-0000-0000-00000000000A",""]})",
     R"({"component":"uuid","value":["0123abcd-ef00-0000-0000-00000000000a",)"
     R"("00000000-0000-0000-0000-000000000000"]})"},
    {"strings", R"({"component":"string","value":["a\"b","\u00e9",""]})",
     R"({"component":"string","value":["a\"b","\u00e9",""]})"},
    {"unknown members are dropped", R"({"component":"string","value":"a","extra":[1]})",
     R"({"component":"string","value":"a"})"},
    {"semantics found and not found",
     R"({"component":"semantic","value":["5E000000-0000-0000-0000-000000000001",)"
     R"("5e000000-0000-0000-0000-0000000000ff",""]})",
     R"({"component":"semantic","value":["5e000000-0000-0000-0000-000000000001",)"
     R"("5e000000-0000-0000-0000-0000000000ff",""]})"},
};

TEST_F(ValueWithSemantics, WritingGivesTheCanonicalObjectWhichRereadsToItself) {
  for (const Rewrite& rewrite : rewrites) {
    SCOPED_TRACE(rewrite.why);
    const picojson::value first = written(readValue(rewrite.read, &library));
    EXPECT_EQ(first, parseJson(rewrite.written));
    EXPECT_EQ(written(readValue(rewrite.written, &library)), first);
  }
}

TEST_F(ValueWithSemantics, HostSemanticValueWritesANullPointerAsEmptyText) {
  const ISemantic* elements[] = {semantic, nullptr};
  HostValue value(createValueSemantic(elements, 2));
  EXPECT_EQ(written(*value), parseJson(std::string(R"({"component":"semantic","value":[")") +
                                       knownSemantic + R"(",""]})"));
}

// Each float is written as its double; infinities beyond the range, so that they read
// back as the same infinities.
TEST(ValueWrite, FloatIsWrittenAsItsDoubleConversionAndInfinityBeyondTheRange) {
  const float elements[] = {0.1f, -0.0f, infinity, -infinity, FLT_MAX};
  HostValue value(createValueFloat(elements, 5));
  const picojson::object saved = saveValue(*value);
  const picojson::array& items = saved.at("value").get<picojson::array>();
  ASSERT_EQ(items.size(), 5u);
  EXPECT_EQ(items[0].get<double>(), static_cast<double>(0.1f));
  EXPECT_TRUE(std::signbit(items[1].get<double>()));
  EXPECT_GT(items[2].get<double>(), static_cast<double>(FLT_MAX));
  EXPECT_LT(items[3].get<double>(), -static_cast<double>(FLT_MAX));

  const Value reread(saved, nullptr);
  for (size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(std::bit_cast<uint32_t>(reread.GetFloat(i)), std::bit_cast<uint32_t>(elements[i]))
        << i;
  }
}

TEST(ValueWrite, NotANumberRefusesTheSave) {
  const float elements[] = {1.0f, std::numeric_limits<float>::quiet_NaN()};
  HostValue value(createValueFloat(elements, 2));
  EXPECT_THROW_MSG((void)saveValue(*value), InvalidDataAccess,
                   "Index out of Range: Float value is not a number");
}

TEST_F(ValueWithSemantics, CreationFunctionsCopyTheCallersElements) {
  bool bools[] = {true, false};
  int ints[] = {INT32_MIN, 3};
  float floats[] = {1.5f, -2.0f};
  UUID uuids[] = {makeUUID(knownSemantic), UUID{}};
  const ISemantic* semantics[] = {semantic, nullptr};
  HostValue boolValue(createValueBool(bools, 2));
  HostValue intValue(createValueInt(ints, 2));
  HostValue floatValue(createValueFloat(floats, 2));
  HostValue uuidValue(createValueUUID(uuids, 2));
  HostValue semanticValue(createValueSemantic(semantics, 2));

  bools[0] = false;
  ints[0] = 9;
  floats[0] = 9.0f;
  uuids[0] = UUID{};
  semantics[0] = nullptr;

  EXPECT_EQ(boolValue->GetValueType(), ValueType::Bool);
  EXPECT_TRUE(boolValue->GetBool(0));
  EXPECT_EQ(intValue->GetValueType(), ValueType::Int);
  EXPECT_EQ(intValue->GetInt(0), INT32_MIN);
  EXPECT_EQ(floatValue->GetValueType(), ValueType::Float);
  EXPECT_EQ(floatValue->GetFloat(0), 1.5f);
  EXPECT_EQ(uuidValue->GetValueType(), ValueType::UUID);
  EXPECT_EQ(uuidValue->GetUUID(0), makeUUID(knownSemantic));
  EXPECT_EQ(semanticValue->GetValueType(), ValueType::Semantic);
  EXPECT_EQ(semanticValue->GetSemantic(0), semantic);
  EXPECT_EQ(semanticValue->GetSemantic(1), nullptr);
}

TEST(ValueCreate, CountZeroWithNullArrayGivesAnEmptyValueOfItsKind) {
  const HostValue values[] = {
      HostValue(createValueBool(nullptr, 0)),     HostValue(createValueInt(nullptr, 0)),
      HostValue(createValueFloat(nullptr, 0)),    HostValue(createValueUUID(nullptr, 0)),
      HostValue(createValueSemantic(nullptr, 0)),
  };
  const ValueType kinds[] = {ValueType::Bool, ValueType::Int, ValueType::Float, ValueType::UUID,
                             ValueType::Semantic};
  const char* components[] = {"bool", "int", "float", "uuid", "semantic"};
  for (size_t i = 0; i < std::size(values); ++i) {
    SCOPED_TRACE(components[i]);
    ASSERT_NE(values[i], nullptr);
    EXPECT_EQ(values[i]->GetValueType(), kinds[i]);
    EXPECT_EQ(values[i]->GetCount(), 0u);
    EXPECT_EQ(written(*values[i]),
              parseJson(std::string(R"({"component":")") + components[i] + "\"}"));
  }
  releaseValue(nullptr);
}

// The accessors refuse a wrong kind or index instead of reading stray memory. One test:
// they all share the same check.
TEST(ValueAccess, WrongKindOrIndexThrowsInvalidDataAccess) {
  const int ints[] = {1, 2};
  HostValue value(createValueInt(ints, 2));
  EXPECT_EQ(value->GetInt(1), 2);
  EXPECT_THROW_MSG((void)value->GetFloat(0), InvalidDataAccess,
                   "Index out of Range: Value of kind Int read as Float");
  EXPECT_THROW_MSG((void)value->GetInt(2), InvalidDataAccess,
                   "Index out of Range: Value element 2 out of range (count 2)");
  const Value none;
  EXPECT_THROW_MSG((void)none.GetString(0), InvalidDataAccess,
                   "Index out of Range: Value of kind None read as String");
}

}  // namespace
}  // namespace mat
