// matgraph check: exit statuses, the exact JSON for broken copies of the examples, files
// that are no library at all, and every file of the JSONTestSuite corpus.

#include <picojson.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "tools/ToolRun.h"

namespace matgraph::test {
namespace {

using CheckCommand = ToolTest;

// The node "pattern" of the graph "Wood" in materials.matlib, and the "from" pair by which
// it feeds the "factor" of node "tint".
const char* const patternNode = "a5f8a048-2fd0-42b3-83a4-4b8d4a1aecb3";
const std::string grainFrom = std::string("[\"") + patternNode + "\",\"grain\"]";

TEST_F(CheckCommand, FindsNothingInTheExamples) {
  const ToolRun base = Run("check base.matlib");
  EXPECT_EQ(base.status, 0);
  EXPECT_EQ(base.out, "base.matlib: 0 errors, 0 warnings\n");
  const ToolRun materials = Run("check --parent base.matlib materials.matlib --json");
  EXPECT_EQ(materials.status, 0);
  EXPECT_EQ(materials.out, R"({
  "file": "materials.matlib",
  "parents": [
    "base.matlib"
  ],
  "errors": 0,
  "warnings": 0,
  "findings": []
}
)");
  EXPECT_EQ(materials.err, "");
}

TEST_F(CheckCommand, RefusesAFileWhoseParentIsMissing) {
  const ToolRun run = Run("check materials.matlib");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out,
            "materials.matlib: error MG107: InputFileParsingException: Node "
            "1230e816-9771-4b31-9240-9ab76a92560e: node class "
            "8406efa0-fb6c-4697-a56b-9dbfe4545b88 not found\n"
            "    at /1/0/nodes/0/node in item 0 \"Wood\"\n"
            "materials.matlib: 1 error, 0 warnings\n");
}

struct BrokenCopy {
  const char* name;
  std::string text;
  const char* arguments;  // before the file
  int status;
  const char* json;
};

TEST_F(CheckCommand, PrintsTheExactJsonOfBrokenCopies) {
  const std::string materials = Example("materials.matlib");
  const BrokenCopy copies[] = {
      {"dropped.matlib", replaced(materials, grainFrom, replaced(grainFrom, "grain", "grian")),
       "--parent base.matlib", 0, R"({
  "file": "dropped.matlib",
  "parents": [
    "base.matlib"
  ],
  "errors": 0,
  "warnings": 1,
  "findings": [
    {
      "code": "MG202",
      "severity": "warning",
      "message": "Input \"factor\" of node \"tint\" is fed from output \"grian\" of node \"pattern\", which does not exist; the connection is dropped",
      "path": "/1/0/nodes/3/input/2/from/1",
      "item": {
        "index": 0,
        "uuid": "2debc7d4-a247-439e-b70b-cbc267dfb6b9",
        "name": "Wood"
      }
    }
  ]
}
)"},
      {"mismatch.matlib",
       replaced(materials, grainFrom, R"(["1230e816-9771-4b31-9240-9ab76a92560e","position"])"),
       "--strict --parent base.matlib", 1, R"({
  "file": "mismatch.matlib",
  "parents": [
    "base.matlib"
  ],
  "errors": 0,
  "warnings": 1,
  "findings": [
    {
      "code": "MG203",
      "severity": "warning",
      "message": "Input \"factor\" of node \"tint\" takes type \"float\" but is fed from output \"position\" of node \"position\" of type \"vector3\"; the connection is dropped",
      "path": "/1/0/nodes/3/input/2/from",
      "item": {
        "index": 0,
        "uuid": "2debc7d4-a247-439e-b70b-cbc267dfb6b9",
        "name": "Wood"
      }
    }
  ]
}
)"},
      {"truncated.matlib", Example("base.matlib").substr(0, 700), "", 1, R"({
  "file": "truncated.matlib",
  "parents": [],
  "errors": 1,
  "warnings": 1,
  "findings": [
    {
      "code": "MG102",
      "severity": "error",
      "message": "The text breaks off with a syntax error at the end of the text, line 41, column 22; only the part before it was read",
      "path": "",
      "line": 41,
      "column": 22
    },
    {
      "code": "MG209",
      "severity": "warning",
      "message": "\"1ba59a87\" is not a UUID; the item reads as having the nil UUID",
      "path": "/1/3/uuid",
      "item": {
        "index": 3,
        "uuid": "00000000-0000-0000-0000-000000000000",
        "name": "string"
      }
    }
  ]
}
)"},
      {"refused.matlib", materials, "", 1, R"({
  "file": "refused.matlib",
  "parents": [],
  "errors": 1,
  "warnings": 0,
  "findings": [
    {
      "code": "MG107",
      "severity": "error",
      "message": "InputFileParsingException: Node 1230e816-9771-4b31-9240-9ab76a92560e: node class 8406efa0-fb6c-4697-a56b-9dbfe4545b88 not found",
      "path": "/1/0/nodes/0/node",
      "item": {
        "index": 0,
        "uuid": "2debc7d4-a247-439e-b70b-cbc267dfb6b9",
        "name": "Wood"
      }
    }
  ]
}
)"},
      {"empty.matlib", "", "", 1, R"({
  "file": "empty.matlib",
  "parents": [],
  "errors": 1,
  "warnings": 0,
  "findings": [
    {
      "code": "MG101",
      "severity": "error",
      "message": "The text is empty; a library file is a JSON array",
      "path": ""
    }
  ]
}
)"},
  };
  for (const BrokenCopy& copy : copies) {
    SCOPED_TRACE(copy.name);
    Write(copy.name, copy.text);
    const ToolRun run = Run(std::string("check --json ") + copy.arguments + " " + copy.name);
    EXPECT_EQ(run.status, copy.status);
    EXPECT_EQ(run.out, copy.json);
    EXPECT_EQ(run.err, "");
  }
}

TEST_F(CheckCommand, FailsOnWarningsOnlyWhenStrict) {
  const std::string base = Example("base.matlib");
  Write("trailing.matlib", base + "\n]");
  const std::string line = std::to_string(std::count(base.begin(), base.end(), '\n') + 2);
  const ToolRun lenient = Run("check trailing.matlib");
  EXPECT_EQ(lenient.status, 0);
  EXPECT_EQ(lenient.out, "trailing.matlib:" + line + ":1: warning MG211: Text after the root " +
                             "array, at line " + line + ", column 1 near \"]\", is not read\n" +
                             "trailing.matlib: 0 errors, 1 warning\n");
  EXPECT_EQ(Run("check --strict trailing.matlib").status, 1);
}

struct BadInput {
  const char* why;
  const char* arguments;
  int status;
  const char* err;
};

TEST_F(CheckCommand, NeverCrashesOnBadInput) {
  std::filesystem::create_directory(PathOf("folder.matlib"));
  std::string junk;
  for (unsigned state = 1; junk.size() < 5000;) {  // the same bytes in every run
    state = state * 1103515245u + 12345u;
    junk += static_cast<char>(state >> 16);
  }
  Write("junk.matlib", junk);
  Write("nul.matlib", std::string("[]\0[", 4));
  Write("huge.matlib", "");
  std::filesystem::resize_file(PathOf("huge.matlib"), (size_t{256} << 20) + 1);
  const BadInput inputs[] = {
      {"missing file", "check none.matlib", 2,
       "matgraph: none.matlib: MG302 cannot read: no such file\n"},
      {"a folder", "check folder.matlib", 2,
       "matgraph: folder.matlib: MG302 cannot read: it is a directory\n"},
      {"larger than the limit", "check huge.matlib", 2,
       "matgraph: huge.matlib: MG303 too large: 268435457 bytes, the limit is 268435456 "
       "bytes\n"},
      {"a parent that cannot be read", "check --parent none.matlib base.matlib", 2,
       "matgraph: none.matlib: MG302 cannot read: no such file\n"},
      {"a parent that does not load", "check --parent junk.matlib base.matlib", 2, nullptr},
      {"binary junk", "check junk.matlib", 1, ""},
      {"a NUL byte", "check nul.matlib", 0, ""},
      {"no file", "check", 2, "matgraph: MG301 file is required (run with --help for the usage)\n"},
      {"no subcommand", "", 2, nullptr},
      {"an unknown option", "check --colour base.matlib", 2, nullptr},
  };
  for (const BadInput& input : inputs) {
    SCOPED_TRACE(input.why);
    const ToolRun run = Run(input.arguments);
    EXPECT_EQ(run.status, input.status);
    if (input.err != nullptr) {
      EXPECT_EQ(run.err, input.err);
    }
    if (input.status == 2) {
      EXPECT_EQ(run.err.rfind("matgraph: ", 0), 0u) << run.err;
    }
  }
}

TEST_F(CheckCommand, ReadsAPipe) {
  const ToolRun run = Shell("cat base.matlib | \"$MATGRAPH\" check /dev/stdin");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "/dev/stdin: 0 errors, 0 warnings\n");
}

TEST_F(CheckCommand, PutsAFileItCannotReadIntoTheJsonDocument) {
  const ToolRun run = Run("check --json none.matlib");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, R"({
  "file": "none.matlib",
  "parents": [],
  "errors": 1,
  "warnings": 0,
  "findings": [
    {
      "code": "MG302",
      "severity": "error",
      "message": "cannot read: no such file",
      "path": "",
      "file": "none.matlib"
    }
  ]
}
)");
}

// Every document of the corpus gives 0 or 1 and one JSON document: the parser's test
// cases are the loader's hardest inputs.
TEST_F(CheckCommand, AnswersEveryFileOfTheJsonTestSuite) {
  const std::filesystem::path corpus =
      std::filesystem::path(MATGRAPH_SOURCE_DIR) / ".." / "shared" / "corpus" / "jsontestsuite";
  if (!std::filesystem::is_directory(corpus)) GTEST_SKIP() << "no corpus at " << corpus;
  size_t files = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
    if (!entry.is_regular_file() || entry.path().extension() != ".json") continue;
    SCOPED_TRACE(entry.path().string());
    ++files;
    const ToolRun run = Run("check --json '" + entry.path().string() + "'");
    EXPECT_TRUE(run.status == 0 || run.status == 1) << run.status << run.err;
    picojson::value document;
    const std::string error = picojson::parse(document, run.out);
    EXPECT_EQ(error, "");
    EXPECT_TRUE(document.is<picojson::object>() &&
                document.get<picojson::object>().count("findings") == 1);
  }
  EXPECT_GT(files, 300u);
}

}  // namespace
}  // namespace matgraph::test
