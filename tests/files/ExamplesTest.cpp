// The shipped examples: examples/base.matlib (types, semantics and node classes of a small
// material toolkit) and examples/materials.matlib (graphs loaded under it). Hosts copy
// them and the main job prints them, so they must be saved files; that every reference in
// them resolves is checked in CheckLibrary.FindsNothingInTheExamples.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "mat/mat.h"
#include "support/LibraryText.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

using test::files::LibraryHandle;
using test::files::loadLibrary;
using test::files::saveLibrary;

std::wstring wideText(const UUID& uuid) {
  char buffer[37];
  UUIDToString(uuid, buffer);
  return std::wstring(buffer, buffer + 36);
}

// Both files, the graphs under the base library. Members are destroyed in reverse order,
// so the child goes before its parent.
struct Examples {
  std::string baseText = test::readFile(test::sourcePath("examples/base.matlib"));
  std::string materialsText = test::readFile(test::sourcePath("examples/materials.matlib"));
  LibraryHandle base = loadLibrary(baseText, nullptr, "base");
  LibraryHandle materials = loadLibrary(materialsText, base.get(), "materials");
};

// 1 for a graph of node classes only, plus one for every level of graphs nested in it.
int nestingDepth(const IGraph& graph) {
  int deepest = 0;
  for (size_t i = 0; i < graph.GetNodeCount(); ++i) {
    const IGraphNode* node = graph.GetNode(i);
    if (node->GetNodeKind() != NestedGraphNode) continue;
    deepest = std::max(deepest, nestingDepth(*node->GetNodeClass()->AsGraph()));
  }
  return deepest + 1;
}

TEST(Examples, SaveBackToTheirOwnBytes) {
  const Examples examples;
  ASSERT_NE(examples.base, nullptr);
  ASSERT_NE(examples.materials, nullptr);
  EXPECT_EQ(saveLibrary(*examples.base), examples.baseText);
  EXPECT_EQ(saveLibrary(*examples.materials), examples.materialsText);
}

// The host guide describes Wood as nesting three levels deep.
TEST(Examples, NestGraphsThreeLevelsDeep) {
  const Examples examples;
  ASSERT_NE(examples.materials, nullptr);
  const struct {
    const char* graph;
    int depth;
  } expected[] = {{"Wood", 3}, {"GrainPattern", 2}, {"RingNoise", 1}, {"Plastic", 1}};
  for (const auto& row : expected) {
    SCOPED_TRACE(row.graph);
    const auto graph = examples.materials->FindGraphByName(row.graph);
    ASSERT_NE(graph, nullptr);
    EXPECT_EQ(nestingDepth(*graph), row.depth);
  }
}

// Node classes are needed to read a node, so the graphs do not load without the base
// library; the load names the first node whose class lies there.
TEST(Examples, MaterialsNeedTheirParentLibrary) {
  const Examples examples;
  ASSERT_NE(examples.materials, nullptr);
  const auto wood = examples.materials->GetGraph(0);
  const IGraphNode* firstNode = wood->GetNode(2);
  const std::wstring expected = L"InputFileParsingException: Node " +
                                wideText(firstNode->GetUUID()) + L": node class " +
                                wideText(firstNode->GetNodeClass()->GetUUID()) + L" not found\n";
  test::WideErrorCapture errors;
  EXPECT_EQ(loadLibrary(examples.materialsText, nullptr, "orphan"), nullptr);
  EXPECT_EQ(errors.text(), expected);
}

}  // namespace
}  // namespace mat
