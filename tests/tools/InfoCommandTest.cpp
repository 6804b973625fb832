// matgraph info: what a file holds, how deep its graphs nest, what it refers to that is
// found nowhere.

#include <string>

#include "tools/ToolRun.h"

namespace matgraph::test {
namespace {

using InfoCommand = ToolTest;

TEST_F(InfoCommand, SummarisesTheExamples) {
  const ToolRun run = Run("info --parent base.matlib materials.matlib");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, R"(materials.matlib
  parents: base.matlib
  types (0)
  semantics (0)
  node classes (0)
  graphs (4): "Wood", "GrainPattern", "RingNoise", "Plastic"
  deepest graph nesting: 3 ("Wood" > "GrainPattern" > "RingNoise")
  unresolved references (0)
  problems: 0 errors, 0 warnings (matgraph check tells them)
)");
  const ToolRun base = Run("info base.matlib");
  EXPECT_EQ(base.status, 0);
  EXPECT_NE(base.out.find("\n  types (11): \"float\", \"int\", \"bool\","), std::string::npos);
  EXPECT_NE(base.out.find("\n  deepest graph nesting: 0\n"), std::string::npos);
}

TEST_F(InfoCommand, ListsTheUUIDsFoundNowhere) {
  const std::string colour = "\"type\" : \"824ba76c-18d9-4205-ab13-6e615de8479f\"";
  Write("unresolved.matlib", replaced(Example("materials.matlib"), colour,
                                      "\"type\" : \"824ba76c-18d9-4205-ab13-000000000000\""));
  const ToolRun run = Run("info --parent base.matlib unresolved.matlib");
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.out.find("  unresolved references (1):\n"
                         "    type 824ba76c-18d9-4205-ab13-000000000000, used at "
                         "/1/0/input/0/type\n"),
            std::string::npos)
      << run.out;
}

TEST_F(InfoCommand, TellsWhyAFileDoesNotLoad) {
  const ToolRun run = Run("info materials.matlib");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err,
            "matgraph: materials.matlib: MG107 does not load: InputFileParsingException: Node "
            "1230e816-9771-4b31-9240-9ab76a92560e: node class "
            "8406efa0-fb6c-4697-a56b-9dbfe4545b88 not found\n");
}

}  // namespace
}  // namespace matgraph::test
