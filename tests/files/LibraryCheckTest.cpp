// checkLibrary: the code and place of every finding, for refused files and for files that
// load but are probably wrong, and the exact messages that users read.

#include "files/LibraryCheck.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/LibraryText.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

using test::files::LibraryHandle;
using test::files::loadLibrary;
using test::files::uuidOf;
using test::files::withUUIDs;

CheckResult check(const std::string& text, const std::vector<const IGraphLibrary*>& parents = {}) {
  return checkLibrary(text.c_str(), text.size(), parents, "test");
}

// "MG202 /3/output/0/from/1" for each finding, in order.
std::vector<std::string> codesAndPaths(const CheckResult& result) {
  std::vector<std::string> lines;
  for (const Finding& finding : result.findings) {
    lines.push_back(finding.code + " " + finding.jsonPath);
  }
  return lines;
}

// Two types, a node class "mix" (a, b: float -> result: float, tint: color), then `graph`
// as item 3.
std::string withGraph(const std::string& graph) {
  return withUUIDs(
      R"([{"content":"type","uuid":"$t1","desc":"float"},
          {"content":"type","uuid":"$t2","desc":"color"},
          {"content":"nodeclass","uuid":"$c1","desc":"mix",
           "input":[{"name":"a","type":"$t1"},{"name":"b","type":"$t1"}],
           "output":[{"name":"result","type":"$t1"},{"name":"tint","type":"$t2"}]},)" +
      graph + "]");
}

// A graph "g" with input x and output out, both float, and the nodes and output "from"
// given.
std::string graphWith(const std::string& nodes, const std::string& outputFrom) {
  return R"({"content":"graph","uuid":"$g1","desc":"g","input":[{"name":"x","type":"$t1"}],
             "output":[{"name":"out","type":"$t1")" +
         (outputFrom.empty() ? "" : ",\"from\":" + outputFrom) + R"(}],"nodes":)" + nodes + "}";
}

struct CheckCase {
  const char* why;
  std::string text;
  std::vector<std::string> findings;  // code and path of each
};

std::vector<CheckCase> checkCases() {
  const std::string feedsA = R"([{"uuid":"$n1","node":"$c1","input":[{"name":"a","from":)";
  return {
      {"a clean library",
       withGraph(graphWith(feedsA + R"(["","x"]}]}])", R"(["$n1","result"])")),
       {}},
      {"a graph input that does not exist",
       withGraph(graphWith(feedsA + R"(["","y"]}]}])", R"(["$n1","result"])")),
       {"MG202 /3/nodes/0/input/0/from/1"}},
      {"an output the source node's class lacks",
       withGraph(graphWith(feedsA + R"(["","x"]}]}])", R"(["$n1","nope"])")),
       {"MG202 /3/output/0/from/1"}},
      {"a graph output fed from an output of another type",
       withGraph(graphWith(feedsA + R"(["","x"]}]}])", R"(["$n1","tint"])")),
       {"MG203 /3/output/0/from"}},
      {"an input entry for an input the class lacks",
       withGraph(graphWith(R"([{"uuid":"$n1","node":"$c1","input":[{"name":"zzz"}]}])",
                           R"(["$n1","result"])")),
       {"MG204 /3/nodes/0/input/0"}},
      {"a graph output fed by nothing", withGraph(graphWith(R"([])", "")), {"MG205 /3/output/0"}},
      {"a source that is no UUID reads as the graph's input node",
       withGraph(graphWith(feedsA + R"(["garbage","x"]}]}])", R"(["$n1","result"])")),
       {"MG209 /3/nodes/0/input/0/from/0"}},
      {"the object form of input",
       withGraph(graphWith(R"([{"uuid":"$n1","node":"$c1","input":{"a":["","y"],"q/r":["","x"]}}])",
                           R"(["$n1","result"])")),
       {"MG202 /3/nodes/0/input/a/1", "MG204 /3/nodes/0/input/q~1r"}},
      {"two nodes feeding each other",
       withGraph(
           graphWith(R"([{"uuid":"$n1","node":"$c1","input":[{"name":"a","from":["$n2","result"]}]},
                               {"uuid":"$n2","node":"$c1","input":[{"name":"b","from":["$n1","result"]}]}])",
                     R"(["$n1","result"])")),
       {"MG212 /3/nodes/0"}},
      {"a parameter type found nowhere",
       withUUIDs(R"([{"content":"nodeclass","uuid":"$c1","input":[{"name":"a","type":"$t9"}]}])"),
       {"MG201 /0/input/0/type"}},
      {"an empty type names no type and is no reference",
       withUUIDs(R"([{"content":"nodeclass","uuid":"$c1","input":[{"name":"a","type":""}]}])"),
       {}},
      {"a semantic whose type is found nowhere",
       withUUIDs(R"([{"content":"semantic","uuid":"$s1","type":"$t9"}])"),
       {"MG201 /0/type"}},
      {"semantic elements of a default found nowhere",
       withUUIDs(R"([{"content":"semantic","uuid":"$s1","type":""},
                     {"content":"type","uuid":"$t1","default":{"component":"semantic",
                      "value":["$s1","$s9"]}}])"),
       {"MG201 /1/default/value/1"}},
      {"two items with one UUID, two semantics with one name",
       withUUIDs(R"([{"content":"type","uuid":"$t1"},{"content":"type","uuid":"$t1"},
                     {"content":"semantic","uuid":"$s1","desc":"n","type":"$t1"},
                     {"content":"semantic","uuid":"$s2","desc":"n","type":"$t1"}])"),
       {"MG206 /1/uuid", "MG207 /3/desc"}},
      {"an item UUID that is no UUID",
       withUUIDs(R"([{"content":"type","uuid":"not-a-uuid"}])"),
       {"MG209 /0/uuid"}},
      {"a header without fileversion",
       withUUIDs(R"([{"datasources":[]},[{"content":"type","uuid":"$t1"}]])"),
       {"MG210 /0"}},
      {"text after the root array",
       withUUIDs(R"([{"content":"type","uuid":"$t1"}] [])"),
       {"MG211 "}},
      {"paths inside the versioned form start at the content array",
       withUUIDs(R"([{"fileversion":1},[{"content":"semantic","uuid":"$s1","type":"$t9"}]])"),
       {"MG201 /1/0/type"}},
      {"an empty text", "", {"MG101 "}},
      {"a root that is an object", "{}", {"MG101 "}},
      {"a syntax error inside the root array",
       withUUIDs(R"([{"content":"type","uuid":"$t1"},{"content":"type",)"),
       {"MG102 ", "MG103 /1/uuid"}},
      {"a refused file", withUUIDs(R"([{"content":"Type","uuid":"$t1"}])"), {"MG104 /0/content"}},
      {"arrays nested as deep as the loader reads",
       std::string(300, '[') + std::string(300, ']'),
       {"MG105 /0"}},
      {"arrays nested deeper than the loader reads",
       std::string(600, '[') + std::string(600, ']'),
       {"MG112 "}},
  };
}

TEST(CheckLibrary, FindsEachProblemAtItsPlace) {
  for (const CheckCase& checkCase : checkCases()) {
    SCOPED_TRACE(checkCase.why);
    EXPECT_EQ(codesAndPaths(check(checkCase.text)), checkCase.findings);
  }
}

TEST(CheckLibrary, NamesTheProblemThenThePlace) {
  const std::string feedsA =
      R"([{"uuid":"$n1","node":"$c1","desc":"m","input":[{"name":"a","from":)";
  struct Message {
    const char* why;
    std::string text;
    std::string message;
  };
  const Message messages[] = {
      {"dropped connection",
       withGraph(graphWith(feedsA + R"(["","y"]}]}])", R"(["$n1","result"])")),
       "Input \"a\" of node \"m\" is fed from graph input \"y\", which does not exist; the "
       "connection is dropped"},
      {"type mismatch", withGraph(graphWith(feedsA + R"(["","x"]}]}])", R"(["$n1","tint"])")),
       "Graph output \"out\" takes type \"float\" but is fed from output \"tint\" of node \"m\" "
       "of type \"color\"; the connection is dropped"},
      {"unresolved type",
       withUUIDs(R"([{"content":"nodeclass","uuid":"$c1","input":[{"name":"a","type":"$t9"}]}])"),
       "Type " + uuidOf("$t9") +
           " of input \"a\" is found neither in the library nor in its parents"},
      {"a type that stands later in the file",
       withUUIDs(R"([{"content":"nodeclass","uuid":"$c1","output":[{"name":"r","type":"$t1"}]},
                     {"content":"type","uuid":"$t1"}])"),
       "Type " + uuidOf("$t1") +
           " of output \"r\" is not found when the item is read: it stands later in the file"},
      {"empty text", " \n", "The text is empty; a library file is a JSON array"},
      {"binary junk", "\x89PNG\r\n",
       "The text is not JSON: syntax error at line 1, column 1 near "
       "\"\\x89PNG\\x0d\""},
      {"truncated text", "[[1,2",
       "The text breaks off with a syntax error at the end of the text, line 1, column 6; only "
       "the part before it was read"},
  };
  for (const Message& expected : messages) {
    SCOPED_TRACE(expected.why);
    const CheckResult result = check(expected.text);
    ASSERT_FALSE(result.findings.empty());
    EXPECT_EQ(result.findings.front().message, expected.message);
  }
}

TEST(CheckLibrary, KeepsTheLoadersLineForARefusalAndNamesTheItem) {
  const CheckResult result = check(withUUIDs(
      R"([{"fileversion":1},[{"content":"graph","uuid":"$g1","desc":"g",
                              "nodes":[{"uuid":"$n1","node":"$c9"}]}]])"));
  ASSERT_EQ(result.findings.size(), 1u);
  const Finding& refusal = result.findings.front();
  EXPECT_EQ(refusal.code, "MG107");
  EXPECT_EQ(refusal.severity, Severity::Error);
  EXPECT_EQ(refusal.message, "InputFileParsingException: Node " + uuidOf("$n1") + ": node class " +
                                 uuidOf("$c9") + " not found");
  EXPECT_EQ(refusal.jsonPath, "/1/0/nodes/0/node");
  EXPECT_TRUE(refusal.hasItem);
  EXPECT_EQ(refusal.itemIndex, 0u);
  EXPECT_EQ(refusal.itemName, "g");
  EXPECT_FALSE(result.library);
}

TEST(CheckLibrary, GivesOneCodePerKindOfRefusal) {
  const std::pair<const char*, const char*> messages[] = {
      {"InputFileParsingException: Value not found in object", "MG103"},
      {"InputFileParsingException: Node x: member \"node\" is missing", "MG103"},
      {"InputFileParsingException: Object with unknown type encountered", "MG104"},
      {"InputFileParsingException: Expected object", "MG105"},
      {"InputFileParsingException: Invalid type for editorpos", "MG106"},
      {"InputFileParsingException: Graph x: member \"nodes\" is not an array", "MG106"},
      {"InputFileParsingException: Node x: node class y not found", "MG107"},
      {"Index out of Range: Node not present", "MG108"},
      {"InputFileParsingException: Graph x: two nodes with UUID y", "MG109"},
      {"InputFileParsingException: Recursive graph nesting: graph x contains itself", "MG110"},
      {"InputFileParsingException: Value has no valid component!", "MG111"},
      {"InputFileParsingException: Wrong value given, double expected!", "MG111"},
      {"InputFileParsingException: Nesting too deep: more than 512 levels", "MG112"},
      {"std::bad_alloc", "MG199"},
  };
  for (const auto& [message, code] : messages) {
    SCOPED_TRACE(message);
    EXPECT_STREQ(refusalCode(message), code);
  }
}

TEST(CheckLibrary, WarnsOfAnItemThatShadowsTheParentChain) {
  const LibraryHandle base = loadLibrary(
      withUUIDs(R"([{"content":"type","uuid":"$t1","desc":"float"}])"), nullptr, "base.matlib");
  const CheckResult result =
      check(withUUIDs(R"([{"content":"type","uuid":"$t1","desc":"real"}])"), {base.get()});
  ASSERT_EQ(codesAndPaths(result), std::vector<std::string>{"MG208 /0/uuid"});
  EXPECT_EQ(result.findings.front().message,
            "UUID " + uuidOf("$t1") +
                " also names type \"float\" of the parent library \"base.matlib\"; lookups from "
                "this library find this item instead");
  EXPECT_EQ(result.findings.front().severity, Severity::Warning);
  EXPECT_TRUE(result.library);
}

TEST(CheckLibrary, TellsTheUnresolvedUUIDAndWhatItShouldName) {
  const CheckResult result =
      check(withUUIDs(R"([{"content":"semantic","uuid":"$s1","type":"$t9"}])"));
  ASSERT_EQ(result.findings.size(), 1u);
  EXPECT_EQ(result.findings.front().reference, uuidOf("$t9"));
  EXPECT_EQ(result.findings.front().referenceKind, "type");
}

TEST(CheckLibrary, ReadsNoFurtherThanTheFirstNul) {
  const std::string text =
      withUUIDs(R"([{"content":"type","uuid":"$t1"}])") + std::string(1, '\0') + "junk";
  const CheckResult result = checkLibrary(text.c_str(), text.size(), {}, "test");
  EXPECT_EQ(codesAndPaths(result), std::vector<std::string>{"MG213 "});
  EXPECT_EQ(result.findings.front().message,
            "NUL byte at offset " + std::to_string(text.find('\0')) +
                ": the text ends there and nothing after it is read");
  ASSERT_TRUE(result.library);
  EXPECT_EQ(result.library->GetTypeCount(), 1u);
}

TEST(CheckLibrary, FindsNothingInTheExamples) {
  const std::string baseText = test::readFile(test::sourcePath("examples/base.matlib"));
  const CheckResult base = check(baseText);
  EXPECT_EQ(codesAndPaths(base), std::vector<std::string>{});
  ASSERT_TRUE(base.library);
  const std::string materials = test::readFile(test::sourcePath("examples/materials.matlib"));
  EXPECT_EQ(codesAndPaths(check(materials, {base.library.get()})), std::vector<std::string>{});
}

}  // namespace
}  // namespace mat
