// saveGraphLibrary and its text writer: the exact layout, escapes and numbers, the order
// of the content, and text that does not depend on the process locale.

#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <sstream>
#include <string>

#include "files/JsonWriter.h"
#include "mat/Functions.h"
#include "mat/IGraphLibrary.h"
#include "mat/IType.h"
#include "support/JsonText.h"
#include "support/LibraryText.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

using test::parseJson;
using test::files::LibraryHandle;
using test::files::loadLibrary;
using test::files::saveLibrary;
using test::files::withTabs;
using test::files::withUUIDs;

std::string serialized(const picojson::value& value, int level = 0) {
  std::string text;
  serializeValue(value, level, text);
  return text;
}

TEST(SaveGraphLibrary, EmptyLibraryIsSevenLinesWithoutALineFeedAtTheEnd) {
  const IGraphLibrary* library = createGraphLibrary(nullptr, "empty");
  std::ostringstream out;
  saveGraphLibrary(library, out);
  releaseGraphLibrary(library);
  EXPECT_EQ(out.str(),
            "[\n"
            "\t{\n"
            "\t\t\"datasources\" : [],\n"
            "\t\t\"fileversion\" : 1\n"
            "\t},\n"
            "\t[]\n"
            "]");
}

TEST(SaveGraphLibrary, WritesEveryKindInItsExactLayout) {
  const LibraryHandle library = loadLibrary(withUUIDs(R"([
      {"content":"graph","uuid":"$g1","desc":"tinted",
       "input":[{"name":"tint","type":"$t1"}],
       "output":[{"name":"out","type":"$t1","from":["$n1","out"]}],
       "nodes":[{"uuid":"$n1","node":"$c1","editorpos":[1.5,-2],
                 "input":[{"name":"a","from":["","tint"]},
                          {"name":"b","default":{"component":"float","value":[1,0.5]}}]}]},
      {"content":"semantic","uuid":"$s1","desc":"albedo","type":"$t1"},
      {"content":"type","uuid":"$t1","desc":"color","default":{"component":"int","value":-3}},
      {"content":"nodeclass","uuid":"$c1","desc":"mix",
       "input":[{"name":"a","type":"$t1"},{"name":"b","type":"$t1"}],
       "output":[{"name":"out","type":"$t1"}]}])"));
  ASSERT_NE(library, nullptr);
  EXPECT_EQ(saveLibrary(*library), withUUIDs(withTabs(R"([
  {
    "datasources" : [],
    "fileversion" : 1
  },
  [
    {
      "content" : "type",
      "default" : {
        "component" : "int",
        "value" : -3
      },
      "desc" : "color",
      "uuid" : "$t1"
    },
    {
      "content" : "semantic",
      "desc" : "albedo",
      "type" : "$t1",
      "uuid" : "$s1"
    },
    {
      "content" : "nodeclass",
      "desc" : "mix",
      "input" : [
        {
          "name" : "a",
          "type" : "$t1"
        },
        {
          "name" : "b",
          "type" : "$t1"
        }
      ],
      "output" : [
        {
          "name" : "out",
          "type" : "$t1"
        }
      ],
      "uuid" : "$c1"
    },
    {
      "content" : "graph",
      "desc" : "tinted",
      "input" : [
        {
          "name" : "tint",
          "type" : "$t1"
        }
      ],
      "nodes" : [
        {
          "editorpos" : [1.5,-2],
          "input" : [
            {
              "from" : ["","tint"],
              "name" : "a"
            },
            {
              "default" : {
                "component" : "float",
                "value" : [1,0.5]
              },
              "name" : "b"
            }
          ],
          "node" : "$c1",
          "uuid" : "$n1"
        }
      ],
      "output" : [
        {
          "from" : ["$n1","out"],
          "name" : "out",
          "type" : "$t1"
        }
      ],
      "uuid" : "$g1"
    }
  ]
])")));
}

struct Escape {
  const char* why;
  std::string name;
  const char* written;
};

const Escape escapes[] = {
    {"line feed", "a\nb", R"("a\nb")"},
    {"tab", "\t", R"("\t")"},
    {"slash", "a/b", R"("a\/b")"},
    {"byte 0x01", "\x01", R"("\u0001")"},
    {"byte 0x1f", "\x1f", R"("\u001f")"},
    {"byte 0x7f", "\x7f", R"("\u007f")"},
    {"double quote", "say \"hi\"", R"("say \"hi\"")"},
    {"backslash", "a\\b", R"("a\\b")"},
    {"backspace, form feed, carriage return", "\b\f\r", R"("\b\f\r")"},
    {"bytes of 0x80 and above", "\xc3\xa9\x80\xff", "\"\xc3\xa9\x80\xff\""},
    {"plain text", "Mix 2 (x) & y", R"("Mix 2 (x) & y")"},
};

TEST(SerializeValue, EscapesQuotesBackslashesSlashesAndControlBytesAndReadsThemBack) {
  for (const Escape& escape : escapes) {
    SCOPED_TRACE(escape.why);
    EXPECT_EQ(serialized(picojson::value(escape.name)), escape.written);
    const LibraryHandle library =
        loadLibrary(R"([{"content":"type","uuid":"","desc":)" + std::string(escape.written) + "}]");
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(library->GetType(0)->GetName(), escape.name);
  }
}

// Integers below 2^53 are written as "%.f" writes them, every other number as "%.17g"
// does; the writer must give the same text without consulting the locale.
struct Number {
  double number;
  const char* written;
};

const Number numbers[] = {
    {0, "0"},
    {1, "1"},
    {-3, "-3"},
    {100, "100"},
    {0.5, "0.5"},
    {0.1, "0.10000000000000001"},
    {static_cast<double>(0.1f), "0.10000000149011612"},
    {-0.0, "-0"},
    {1e21, "1e+21"},
    {1e-7, "9.9999999999999995e-08"},
    {2.5e-5, "2.5000000000000001e-05"},
    {1.0 / 3.0, "0.33333333333333331"},
    {123456789.125, "123456789.125"},
    {1e15 + 0.5, "1000000000000000.5"},
    {4503599627370495.5, "4503599627370495.5"},
    {9007199254740991.0, "9007199254740991"},
    {-9007199254740991.0, "-9007199254740991"},
    {9007199254740992.0, "9007199254740992"},
    {-9007199254740992.0, "-9007199254740992"},
    {9007199254740994.0, "9007199254740994"},
    {1e300, "1.0000000000000001e+300"},
    {-1e-300, "-1e-300"},
    {std::numeric_limits<double>::denorm_min(), "4.9406564584124654e-324"},
    {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
    {std::numeric_limits<double>::lowest(), "-1.7976931348623157e+308"},
    {static_cast<double>(std::numeric_limits<float>::max()), "3.4028234663852886e+38"},
};

TEST(SerializeValue, NumbersHaveTheTextOfThePrintfFormats) {
  for (const Number& number : numbers) {
    SCOPED_TRACE(number.written);
    EXPECT_EQ(serialized(picojson::value(number.number)), number.written);
  }
}

TEST(SerializeValue, ArraysOfScalarsStayOnOneLineAndContainersBreakLines) {
  const struct {
    const char* json;
    int level;
    const char* written;
  } layouts[] = {
      {"[]", 0, "[]"},
      {"[1,2,3]", 0, "[1,2,3]"},
      {R"(["a", "b"])", 3, R"(["a","b"])"},
      {"[true,false,null,0.5]", 0, "[true,false,null,0.5]"},
      {"{}", 0, "{\n}"},
      {"{}", 2, "{\n\t\t}"},
      {"[[]]", 0, "[\n\t[]\n]"},
      {"[1,{}]", 1, "[\n\t\t1,\n\t\t{\n\t\t}\n\t]"},
      {R"({"b":[1],"a":{"c":null}})", 0,
       "{\n\t\"a\" : {\n\t\t\"c\" : null\n\t},\n\t\"b\" : [1]\n}"},
  };
  for (const auto& layout : layouts) {
    SCOPED_TRACE(layout.json);
    EXPECT_EQ(serialized(parseJson(layout.json), layout.level), layout.written);
  }
}

TEST(SerializeValue, KeysComeInByteOrder) {
  EXPECT_EQ(serialized(parseJson(R"({"b":1,"\u00e9":2,"B":3,"_":4,"a":5,"":6,"aa":7})")),
            "{\n\t\"\" : 6,\n\t\"B\" : 3,\n\t\"_\" : 4,\n\t\"a\" : 5,\n\t\"aa\" : 7,\n"
            "\t\"b\" : 1,\n\t\"\xc3\xa9\" : 2\n}");
}

TEST(SaveGraphLibrary, SavedSampleLoadsAndSavesToTheSameBytes) {
  EXPECT_EQ(test::files::roundTripProblem(test::files::sampleLibraryText()), "");
}

// The one saved text that does not load again: a value of no elements is written with
// "component" alone.
TEST(SaveGraphLibrary, ValueOfNoElementsIsWrittenWithoutValueAndRefusedOnReload) {
  const std::string text =
      withUUIDs(R"([{"content":"type","uuid":"$t1","default":{"component":"float","value":[]}}])");
  const LibraryHandle library = loadLibrary(text);
  ASSERT_NE(library, nullptr);
  const std::string saved = saveLibrary(*library);
  EXPECT_NE(saved.find("\"default\" : {\n\t\t\t\t\"component\" : \"float\"\n\t\t\t},"),
            std::string::npos);
  test::WideErrorCapture errors;
  EXPECT_EQ(loadLibrary(saved), nullptr);
  EXPECT_EQ(errors.text(), L"InputFileParsingException: Value has no value setting!\n");
  // The round-trip check of the corruption tests accepts this text and no other failure.
  EXPECT_EQ(test::files::roundTripProblem(text), "");
}

// Restores the process locale when the test ends.
class LocaleGuard {
 public:
  LocaleGuard() : saved_(std::setlocale(LC_ALL, nullptr)) {}
  ~LocaleGuard() { std::setlocale(LC_ALL, saved_.c_str()); }
  LocaleGuard(const LocaleGuard&) = delete;
  LocaleGuard& operator=(const LocaleGuard&) = delete;

 private:
  std::string saved_;
};

// The first installed locale whose decimal separator is a comma, or null.
const char* commaLocale() {
  for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8", "nl_NL.UTF-8",
                           "de_DE", "fr_FR", "ru_RU.UTF-8", "es_ES.UTF-8", "it_IT.UTF-8"}) {
    if (std::setlocale(LC_ALL, name) != nullptr &&
        std::string(std::localeconv()->decimal_point) == ",") {
      return name;
    }
  }
  return nullptr;
}

TEST(SaveGraphLibrary, TextDoesNotDependOnTheProcessLocale) {
  const std::string text = test::files::sampleLibraryText();
  const LibraryHandle underC = loadLibrary(text);
  ASSERT_NE(underC, nullptr);
  const std::string expected = saveLibrary(*underC);
  LocaleGuard guard;
  const char* locale = commaLocale();
  if (locale == nullptr) GTEST_SKIP() << "no locale with a decimal comma is installed";
  SCOPED_TRACE(locale);
  const LibraryHandle underComma = loadLibrary(text);
  ASSERT_NE(underComma, nullptr);
  EXPECT_EQ(saveLibrary(*underComma), expected);
  for (const Number& number : numbers) {
    EXPECT_EQ(serialized(picojson::value(number.number)), number.written);
  }
}

}  // namespace
}  // namespace mat
