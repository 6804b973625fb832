// matgraph format: canonical text to standard output, --check for hooks, --in-place, and
// the files it must leave alone because saving would lose part of them.

#include <algorithm>
#include <string>

#include "tools/ToolRun.h"

namespace matgraph::test {
namespace {

using FormatCommand = ToolTest;

// The same library on one line: tabs and line feeds outside strings dropped.
std::string compact(const std::string& text) {
  std::string out;
  bool inString = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (inString && c == '\\') {
      out += c;
      out += text[++i];
      continue;
    }
    if (c == '"') inString = !inString;
    if (!inString && (c == '\t' || c == '\n')) continue;
    out += c;
  }
  return out;
}

TEST_F(FormatCommand, FindsTheExamplesCanonical) {
  const ToolRun run = Run("format --check --parent base.matlib base.matlib materials.matlib");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(Run("format base.matlib").out, Example("base.matlib"));
}

TEST_F(FormatCommand, RewritesAFileOnlyWhenAsked) {
  Write("compact.matlib", compact(Example("materials.matlib")));
  const ToolRun check = Run("format --check --parent base.matlib compact.matlib materials.matlib");
  EXPECT_EQ(check.status, 1);
  EXPECT_EQ(check.out, "compact.matlib: would be reformatted\n");
  EXPECT_EQ(Read("compact.matlib"), compact(Example("materials.matlib")));

  const ToolRun rewrite = Run("format --in-place --parent base.matlib compact.matlib");
  EXPECT_EQ(rewrite.status, 0);
  EXPECT_EQ(rewrite.out, "compact.matlib: reformatted\n");
  EXPECT_EQ(Read("compact.matlib"), Example("materials.matlib"));
  EXPECT_EQ(Run("format --in-place --parent base.matlib compact.matlib").out, "");
}

struct KeptFile {
  const char* name;
  std::string text;
  const char* err;
};

TEST_F(FormatCommand, LeavesAloneWhatSavingWouldLose) {
  const std::string base = Example("base.matlib");
  const std::string lastLine = std::to_string(std::count(base.begin(), base.end(), '\n') + 1);
  const std::string trailingError =
      "matgraph: trailing.matlib: MG211 not formatted: Text after "
      "the root array, at line " +
      lastLine + ", column 2 near \"[]\", is not read\n";
  const KeptFile files[] = {
      {"refused.matlib", Example("materials.matlib"),
       "matgraph: refused.matlib: MG107 not formatted: InputFileParsingException: Node "
       "1230e816-9771-4b31-9240-9ab76a92560e: node class 8406efa0-fb6c-4697-a56b-9dbfe4545b88 "
       "not found\n"},
      {"truncated.matlib", base.substr(0, base.size() / 2), nullptr},
      {"trailing.matlib", base + "[]", trailingError.c_str()},
      {"unversioned.matlib", "[{},[]]",
       "matgraph: unversioned.matlib: MG210 not formatted: The header has no \"fileversion\", "
       "so nothing of the file is read\n"},
      {"nul.matlib", std::string("[]\0{}", 5),
       "matgraph: nul.matlib: MG213 not formatted: NUL byte at offset 2: the text ends there "
       "and nothing after it is read\n"},
  };
  for (const KeptFile& file : files) {
    SCOPED_TRACE(file.name);
    Write(file.name, file.text);
    const ToolRun run = Run(std::string("format --in-place ") + file.name);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    if (file.err != nullptr) {
      EXPECT_EQ(run.err, file.err);
    }
    EXPECT_EQ(Read(file.name), file.text);
  }
}

TEST_F(FormatCommand, GoesOnWithTheNextFileAfterOneItCannotRead) {
  Write("compact.matlib", compact(Example("base.matlib")));
  const ToolRun run = Run("format --check none.matlib compact.matlib");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "compact.matlib: would be reformatted\n");
  EXPECT_EQ(run.err, "matgraph: none.matlib: MG302 cannot read: no such file\n");
}

TEST_F(FormatCommand, NeedsAModeForSeveralFiles) {
  const ToolRun run = Run("format base.matlib base.matlib");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "matgraph: MG301 several files need --check or --in-place\n");
  EXPECT_EQ(Run("format --check --in-place base.matlib").status, 2);
}

}  // namespace
}  // namespace matgraph::test
