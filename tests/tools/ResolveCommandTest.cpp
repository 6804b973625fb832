// matgraph resolve: the hops into and out of nested graphs, the source or default where
// they end, and a ring of connections that never ends.

#include <string>

#include "tools/ToolRun.h"

namespace matgraph::test {
namespace {

using ResolveCommand = ToolTest;

struct Resolution {
  const char* node;
  const char* input;
  const char* out;
};

TEST_F(ResolveCommand, WalksThroughEveryNestingLevel) {
  const Resolution resolutions[] = {
      {"tint", "factor",
       R"(input "factor" of node "tint" in Wood
  <- output "grain" of node "pattern" (graph "GrainPattern"): into the nested graph
graph output "grain" in Wood/pattern
  <- output "result" of node "sharpen" (class "SmoothStep")
source: output "result" of node "sharpen" in Wood/pattern (resolver key {1, 8}, flat index 15)
)"},
      {"pattern/coarse/noise", "position",
       R"(input "position" of node "noise" in Wood/pattern/coarse
  <- graph input "position": out of the nested graph
input "position" of node "coarse" in Wood/pattern
  <- output "result" of node "stretch" (class "ScaleVector3")
source: output "result" of node "stretch" in Wood/pattern (resolver key {1, 2}, flat index 9)
)"},
      {"GraphOutputs", "roughness",
       R"(graph output "roughness" in Wood
  <- graph input "roughness"
source: output "roughness" of the graph's input node in Wood (resolver key {0, 0}, flat index 0)
)"},
      {"shader", "metallic",
       R"(input "metallic" of node "shader" in Wood
  not connected
default: 0 (the node's own default)
)"},
      {"6", "5",  // shader's "ior", by index
       R"(input "ior" of node "shader" in Wood
  not connected
default: 1.5 (the default of the input's declaration)
)"},
  };
  for (const Resolution& resolution : resolutions) {
    SCOPED_TRACE(resolution.node);
    const ToolRun run =
        Run(std::string("resolve --parent base.matlib materials.matlib ") + "--graph Wood --node " +
            resolution.node + " --input " + resolution.input);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, resolution.out);
    EXPECT_EQ(run.err, "");
  }
}

TEST_F(ResolveCommand, ListsWhatThereIsWhenANameIsWrong) {
  const ToolRun node =
      Run("resolve --parent base.matlib materials.matlib --graph Wood --node pattern/coarse/nois "
          "--input x");
  EXPECT_EQ(node.status, 2);
  EXPECT_EQ(node.err,
            "matgraph: MG306 no node \"nois\" in graph \"RingNoise\"; its nodes are 0 "
            "\"GraphInputs\", 1 \"GraphOutputs\", 2 \"split\", 3 \"radial\", 4 \"radius\", 5 "
            "\"noise\", 6 \"wobble\", 7 \"distorted\", 8 \"scaled\", 9 \"rings\"\n");
  const ToolRun input =
      Run("resolve --parent base.matlib materials.matlib --graph Wood --node tint --input c");
  EXPECT_EQ(input.status, 2);
  EXPECT_EQ(input.err,
            "matgraph: MG306 no input \"c\" on class \"MixColor\"; its inputs are \"a\", \"b\", "
            "\"factor\"\n");
  const ToolRun into =
      Run("resolve --parent base.matlib materials.matlib --graph Wood --node tint/a --input 0");
  EXPECT_EQ(into.status, 2);
  EXPECT_EQ(into.err,
            "matgraph: MG306 node \"tint\" holds no nested graph, so \"a\" cannot be inside it\n");
}

// A nested graph that passes its input straight to its output, used by a node whose input
// is fed by its own output.
const char* const ringLibrary = R"([
 {"content":"type","uuid":"7e000000-0000-0000-0000-000000000001","desc":"float"},
 {"content":"graph","uuid":"9a000000-0000-0000-0000-000000000002","desc":"Pass",
  "input":[{"name":"x","type":"7e000000-0000-0000-0000-000000000001"}],
  "output":[{"name":"y","type":"7e000000-0000-0000-0000-000000000001","from":["","x"]}]},
 {"content":"graph","uuid":"9a000000-0000-0000-0000-000000000001","desc":"Loop",
  "output":[{"name":"out","type":"7e000000-0000-0000-0000-000000000001",
             "from":["0d000000-0000-0000-0000-000000000001","y"]}],
  "nodes":[{"uuid":"0d000000-0000-0000-0000-000000000001","desc":"again",
            "node":"9a000000-0000-0000-0000-000000000002",
            "input":[{"name":"x","from":["0d000000-0000-0000-0000-000000000001","y"]}]}]}])";

TEST_F(ResolveCommand, StopsAtARingOfConnections) {
  Write("ring.matlib", ringLibrary);
  const ToolRun run = Run("resolve ring.matlib --graph Loop --node GraphOutputs --input out");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err,
            "matgraph: ring.matlib: MG212 the connections run in a ring: Connection cycle at "
            "node key {1, 1}\n");
  const ToolRun check = Run("check ring.matlib");
  EXPECT_EQ(check.status, 0);
  EXPECT_NE(check.out.find("warning MG212: Nodes feed one another in a ring: node \"again\" "
                           "<- node \"again\"\n"),
            std::string::npos);
}

}  // namespace
}  // namespace matgraph::test
