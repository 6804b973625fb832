// matgraph diff: what changed for the users of a library, and which changes break them.

#include <string>

#include "tools/ToolRun.h"

namespace matgraph::test {
namespace {

using DiffCommand = ToolTest;

const std::string fresnelEnd = "\"uuid\" : \"d284f3a5-5952-483c-89dc-eebef798777e\"\n\t\t},\n";

struct Change {
  const char* why;
  std::string newText;
  int status;
  const char* out;
};

TEST_F(DiffCommand, ReportsChangesAndFailsOnIncompatibleOnes) {
  const std::string base = Example("base.matlib");
  const size_t fresnelStart = base.rfind("\t\t{", base.find("\"desc\" : \"Fresnel\""));
  const size_t fresnelStop = base.find(fresnelEnd) + fresnelEnd.size();
  const std::string withoutFresnel =
      base.substr(0, fresnelStart) + base.substr(fresnelStop, std::string::npos);
  const Change changes[] = {
      {"nothing", base, 0, "no changes\n"},
      {"a default and an added node class",
       replaced(replaced(base, "\"value\" : 1.5\n\t\t\t\t\t},\n\t\t\t\t\t\"name\" : \"ior\"",
                         "\"value\" : 1.25\n\t\t\t\t\t},\n\t\t\t\t\t\"name\" : \"ior\""),
                fresnelEnd,
                fresnelEnd + "{\"content\":\"nodeclass\",\"desc\":\"Glow\","
                             "\"uuid\":\"c1000000-0000-0000-0000-000000000001\"},\n"),
       0,
       "node class \"Fresnel\": default of input \"ior\" changed from 1.5 to 1.25\n"
       "node class \"Glow\" (c1000000-0000-0000-0000-000000000001) added\n"
       "2 changes, 0 incompatible\n"},
      {"a renamed input and a renamed class",
       replaced(replaced(base, "\"name\" : \"ior\"", "\"name\" : \"eta\""), "\"desc\" : \"Fract\"",
                "\"desc\" : \"Fraction\""),
       1,
       "node class \"Fract\" renamed to \"Fraction\"\n"
       "node class \"Fresnel\": input \"ior\" renamed to \"eta\"  [incompatible]\n"
       "2 changes, 1 incompatible\n"},
      {"a retyped output",
       replaced(base,
                "\"type\" : \"6448c681-b973-4f28-bd17-0518157028ec\"\n\t\t\t\t}\n\t\t\t],\n\t\t\t" +
                    fresnelEnd,
                "\"type\" : \"7ef90f66-e903-4700-81f1-ee6427890df3\"\n\t\t\t\t}\n\t\t\t],\n\t\t\t" +
                    fresnelEnd),
       1,
       "node class \"Fresnel\": output \"factor\" retyped from float to vector3  "
       "[incompatible]\n"
       "1 change, 1 incompatible\n"},
      {"a removed node class", withoutFresnel, 1,
       "node class \"Fresnel\" (d284f3a5-5952-483c-89dc-eebef798777e) removed  [incompatible]\n"
       "1 change, 1 incompatible\n"},
  };
  for (const Change& change : changes) {
    SCOPED_TRACE(change.why);
    Write("new.matlib", change.newText);
    const ToolRun run = Run("diff base.matlib new.matlib");
    EXPECT_EQ(run.status, change.status);
    EXPECT_EQ(run.out, change.out);
    EXPECT_EQ(run.err, "");
  }
}

TEST_F(DiffCommand, ComparesOnlyFilesThatLoad) {
  const ToolRun run = Run("diff materials.matlib materials.matlib");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err.rfind("matgraph: materials.matlib: MG107 cannot be compared: ", 0), 0u)
      << run.err;
  EXPECT_EQ(Run("diff --parent base.matlib materials.matlib materials.matlib").out, "no changes\n");
}

}  // namespace
}  // namespace matgraph::test
