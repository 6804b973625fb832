// The shipped examples: examples/base.matlib (types, semantics and node classes of a small
// material toolkit) and examples/materials.matlib (graphs loaded under it). Hosts copy
// them and the main job prints them, so they must be saved files, and every reference in
// them must resolve.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "mat/mat.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

using LibraryPtr = std::unique_ptr<const IGraphLibrary, void (*)(const IGraphLibrary*)>;

LibraryPtr load(const std::string& text, const IGraphLibrary* parent, const char* name) {
  return LibraryPtr(loadGraphLibrary(text.c_str(), text.size(), parent, name),
                    &releaseGraphLibrary);
}

std::string save(const IGraphLibrary& library) {
  std::ostringstream out;
  saveGraphLibrary(&library, out);
  return out.str();
}

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
  LibraryPtr base = load(baseText, nullptr, "base");
  LibraryPtr materials = load(materialsText, base.get(), "materials");
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

// Every reference of a library's own objects that found nothing, as "where: what".
class UnresolvedReferences {
 public:
  explicit UnresolvedReferences(const IGraphLibrary& library) {
    for (size_t i = 0; i < library.GetTypeCount(); ++i) {
      const IType* type = library.GetType(i);
      checkValue(type->GetDefault(), std::string("type ") + type->GetName());
    }
    for (size_t i = 0; i < library.GetSemanticCount(); ++i) {
      const ISemantic* semantic = library.GetSemantic(i);
      if (semantic->GetType() == nullptr) found(std::string("semantic ") + semantic->GetName());
    }
    for (size_t i = 0; i < library.GetNodeClassCount(); ++i) {
      checkSignature(*library.GetNodeClass(i), "node class ");
    }
    for (size_t i = 0; i < library.GetGraphCount(); ++i) checkGraph(*library.GetGraph(i));
  }
  const std::vector<std::string>& list() const { return places_; }

 private:
  void found(const std::string& place) { places_.push_back(place); }

  void checkValue(const IValue* value, const std::string& place) {
    if (value == nullptr || value->GetValueType() != ValueType::Semantic) return;
    for (size_t i = 0; i < value->GetCount(); ++i) {
      if (value->GetSemantic(i) == nullptr) found(place + ": semantic element");
    }
  }

  void checkSignature(const INodeClass& nodeClass, const std::string& kind) {
    const std::string place = kind + nodeClass.GetName();
    for (size_t i = 0; i < nodeClass.GetInputCount(); ++i) {
      const IParameter* input = nodeClass.GetInput(i);
      if (input->GetType() == nullptr) found(place + " input " + input->GetName() + ": type");
      checkValue(input->GetDefault(), place + " input " + input->GetName());
    }
    for (size_t i = 0; i < nodeClass.GetOutputCount(); ++i) {
      const IParameter* output = nodeClass.GetOutput(i);
      if (output->GetType() == nullptr) found(place + " output " + output->GetName() + ": type");
      checkValue(output->GetDefault(), place + " output " + output->GetName());
    }
  }

  void checkGraph(const IGraph& graph) {
    checkSignature(graph, "graph ");
    for (size_t n = 0; n < graph.GetNodeCount(); ++n) {
      const IGraphNode* node = graph.GetNode(n);
      const auto nodeClass = node->GetNodeClass();
      for (size_t i = 0; i < nodeClass->GetInputCount(); ++i) {
        checkValue(node->GetInputDefault(i), std::string("graph ") + graph.GetName() + " node " +
                                                 node->GetName() + " input " +
                                                 nodeClass->GetInput(i)->GetName());
      }
    }
  }

  std::vector<std::string> places_;
};

::testing::AssertionResult resolvesEverything(const IGraphLibrary& library) {
  const UnresolvedReferences unresolved(library);
  if (unresolved.list().empty()) return ::testing::AssertionSuccess();
  ::testing::AssertionResult failure = ::testing::AssertionFailure();
  for (const std::string& place : unresolved.list()) failure << "\n  unresolved: " << place;
  return failure;
}

TEST(Examples, SaveBackToTheirOwnBytes) {
  const Examples examples;
  ASSERT_NE(examples.base, nullptr);
  ASSERT_NE(examples.materials, nullptr);
  EXPECT_EQ(save(*examples.base), examples.baseText);
  EXPECT_EQ(save(*examples.materials), examples.materialsText);
}

TEST(Examples, HoldTheToolkitAndItsGraphs) {
  const Examples examples;
  ASSERT_NE(examples.materials, nullptr);
  const IGraphLibrary& base = *examples.base;
  const IGraphLibrary& materials = *examples.materials;
  EXPECT_EQ(base.GetTypeCount(), 11u);
  EXPECT_EQ(base.GetSemanticCount(), 12u);
  EXPECT_EQ(base.GetNodeClassCount(), 24u);
  EXPECT_EQ(base.GetGraphCount(), 0u);
  EXPECT_EQ(materials.GetTypeCount(), 0u);
  EXPECT_EQ(materials.GetSemanticCount(), 0u);
  EXPECT_EQ(materials.GetNodeClassCount(), 0u);
  EXPECT_EQ(materials.GetGraphCount(), 4u);
  EXPECT_TRUE(resolvesEverything(base));
  EXPECT_TRUE(resolvesEverything(materials));
}

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

  // GrainPattern uses RingNoise twice, each node with its own connections and defaults.
  const auto grain = examples.materials->FindGraphByName("GrainPattern");
  const auto rings = examples.materials->FindGraphByName("RingNoise");
  size_t distortion = 0;
  ASSERT_TRUE(rings->FindInput("distortion", &distortion));
  std::vector<float> distortions;
  for (size_t i = 0; i < grain->GetNodeCount(); ++i) {
    const IGraphNode* node = grain->GetNode(i);
    if (node->GetNodeClass() != rings) continue;
    ASSERT_NE(node->GetInputDefault(distortion), nullptr);
    distortions.push_back(node->GetInputDefault(distortion)->GetFloat(0));
  }
  EXPECT_EQ(distortions, (std::vector<float>{0.25f, 0.5f}));
}

TEST(Examples, ResolveReferencesIntoTheBaseLibrary) {
  const Examples examples;
  ASSERT_NE(examples.materials, nullptr);
  const IGraphLibrary& base = *examples.base;
  const auto plastic = examples.materials->FindGraphByName("Plastic");
  const auto imageTexture = base.FindNodeClassByName("ImageTexture");
  ASSERT_NE(plastic, nullptr);
  ASSERT_NE(imageTexture, nullptr);

  // A node class of the base is shared, not copied, by the nodes that use it.
  size_t usage = 0;
  ASSERT_TRUE(imageTexture->FindInput("usage", &usage));
  std::vector<const IGraphNode*> textureNodes;
  for (size_t i = 0; i < plastic->GetNodeCount(); ++i) {
    if (plastic->GetNode(i)->GetNodeClass() == imageTexture) {
      textureNodes.push_back(plastic->GetNode(i));
    }
  }
  ASSERT_EQ(textureNodes.size(), 2u);

  // Semantic defaults find the base's semantics: the class's in its own library, the
  // node's through the parent chain.
  EXPECT_EQ(imageTexture->GetInput(usage)->GetDefault()->GetSemantic(0),
            base.FindSemanticByName("color"));
  EXPECT_EQ(textureNodes[0]->GetInputDefault(usage), nullptr);
  ASSERT_NE(textureNodes[1]->GetInputDefault(usage), nullptr);
  EXPECT_EQ(textureNodes[1]->GetInputDefault(usage)->GetSemantic(0),
            base.FindSemanticByName("normal"));

  const IType* surface = plastic->GetOutput(0)->GetType();
  ASSERT_NE(surface, nullptr);
  EXPECT_EQ(base.FindType(surface->GetUUID(), false), surface);
  EXPECT_EQ(examples.materials->FindType(surface->GetUUID(), false), nullptr);
}

TEST(Examples, PassAGraphInputStraightToAGraphOutput) {
  const Examples examples;
  ASSERT_NE(examples.materials, nullptr);
  const auto wood = examples.materials->FindGraphByName("Wood");
  ASSERT_NE(wood, nullptr);
  size_t input = 0;
  size_t output = 0;
  ASSERT_TRUE(wood->FindInput("roughness", &input));
  ASSERT_TRUE(wood->FindOutput("roughness", &output));
  size_t sourceNode = 99;
  size_t sourceOutput = 99;
  ASSERT_TRUE(wood->GetNode(wood->GetOutputNodeIndex())
                  ->GetInputConnection(output, &sourceNode, &sourceOutput));
  EXPECT_EQ(sourceNode, wood->GetInputNodeIndex());
  EXPECT_EQ(sourceOutput, input);

  // Every graph output of the examples is fed by something.
  for (size_t g = 0; g < examples.materials->GetGraphCount(); ++g) {
    const auto graph = examples.materials->GetGraph(g);
    for (size_t i = 0; i < graph->GetOutputCount(); ++i) {
      SCOPED_TRACE(std::string(graph->GetName()) + " output " + graph->GetOutput(i)->GetName());
      EXPECT_TRUE(
          graph->GetNode(graph->GetOutputNodeIndex())->GetInputConnection(i, nullptr, nullptr));
    }
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
  EXPECT_EQ(load(examples.materialsText, nullptr, "orphan"), nullptr);
  EXPECT_EQ(errors.text(), expected);
}

}  // namespace
}  // namespace mat
