// matgraph dot: one graph as Graphviz DOT, one level or flattened, and rendered to SVG by
// Graphviz where it is installed.

#include <string>

#include "tools/ToolRun.h"

namespace matgraph::test {
namespace {

using DotCommand = ToolTest;

size_t countOf(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

TEST_F(DotCommand, DrawsEachConnectionBetweenPorts) {
  const ToolRun run = Run("dot --parent base.matlib materials.matlib --graph Wood");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out.rfind("digraph \"Wood\" {\n", 0), 0u);
  EXPECT_EQ(countOf(run.out, " -> "), 11u);  // Wood's node inputs and graph outputs
  // pattern's output "grain" feeds tint's "factor"; the graph input "roughness" feeds the
  // graph output "roughness".
  EXPECT_NE(run.out.find("  n4:o0:e -> n5:i2:w;\n"), std::string::npos);
  EXPECT_NE(run.out.find("  n0:o3:e -> n1:i2:w;\n"), std::string::npos);
  EXPECT_EQ(countOf(run.out, "subgraph cluster_"), 0u);
  // A graph is found by its UUID too.
  EXPECT_EQ(Run("dot --parent base.matlib materials.matlib --graph "
                "2debc7d4-a247-439e-b70b-cbc267dfb6b9")
                .out,
            run.out);
}

TEST_F(DotCommand, ExpandsNestedGraphsAsClustersWhenFlattened) {
  const ToolRun run = Run("dot --parent base.matlib materials.matlib --graph Wood --flatten");
  EXPECT_EQ(run.status, 0);
  // pattern (GrainPattern) holds coarse and fine (RingNoise).
  EXPECT_EQ(countOf(run.out, "subgraph cluster_"), 3u);
  EXPECT_NE(run.out.find("label=\"pattern: GrainPattern\""), std::string::npos);
  EXPECT_EQ(run.out.find("\n  n4 [label="), std::string::npos);  // pattern is a cluster now
  EXPECT_EQ(countOf(run.out, "<b>GraphOutputs</b>"), 4u);
}

TEST_F(DotCommand, NamesTheGraphsThereAreWhenOneIsMissing) {
  const ToolRun run = Run("dot --parent base.matlib materials.matlib --graph Oak");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err,
            "matgraph: materials.matlib: MG306 no graph \"Oak\"; the graphs of the file are "
            "\"Wood\", \"GrainPattern\", \"RingNoise\", \"Plastic\"\n");
}

TEST_F(DotCommand, RendersWithGraphviz) {
  if (Shell("command -v dot").status != 0) GTEST_SKIP() << "Graphviz is not installed";
  for (const char* flatten : {"", " --flatten"}) {
    SCOPED_TRACE(flatten);
    const ToolRun run =
        Shell(std::string("\"$MATGRAPH\" dot --parent base.matlib materials.matlib --graph Wood") +
              flatten + " > wood.dot && dot -Tsvg wood.dot -o wood.svg");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");  // Graphviz warns of unknown ports and bad labels
    EXPECT_NE(Read("wood.svg").find("<svg"), std::string::npos);
  }
}

}  // namespace
}  // namespace matgraph::test
