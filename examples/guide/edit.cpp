// Editing: build a new graph with a factory, then change a copy of an existing graph.
// Graphs read from files never change; a factory registers each graph it finishes in the
// graph library, after which that graph never changes either.
//
//   matgraph_guide_edit examples/base.matlib examples/materials.matlib
#include <mat/mat.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

static std::string readFile(const char* path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The node of the factory's graph named `name`, or null.
static const mat::IGraphNode* nodeNamed(mat::IGraphFactory& factory, const char* name) {
  for (size_t i = 0; i < factory.GetNodeCount(); ++i) {
    const mat::IGraphNode* node = nullptr;
    if (factory.GetNode(i, &node) == mat::ConnectionOk && std::strcmp(node->GetName(), name) == 0)
      return node;
  }
  return nullptr;
}

// A new graph "Darken": its input "color" feeds a ScaleColor node with the scale 0.5,
// whose result is the graph's output "result".
static std::shared_ptr<const mat::IGraph> buildDarken(const mat::IGraphLibrary* base,
                                                      const mat::IGraphLibrary* materials) {
  const std::shared_ptr<const mat::INodeClass> scaleColor = base->FindNodeClassByName("ScaleColor");
  if (scaleColor == nullptr) return nullptr;
  const mat::IType* color3 = scaleColor->GetOutput(0)->GetType();

  mat::IGraphFactory* factory = mat::createNewGraphFactory(materials, "Darken", mat::UUID{});
  const mat::IGraphNode* darken = nullptr;
  bool ok = factory->AddInput(color3, "color", nullptr) == mat::ConnectionOk &&
            factory->AddOutput(color3, "result") == mat::ConnectionOk &&
            factory->AddNode(scaleColor, "darken", &darken) == mat::ConnectionOk;
  // A graph input is an output of the input node, a graph output an input of the output node.
  ok = ok &&
       factory->Connect(factory->GetInputNode(), "color", darken, "color") == mat::ConnectionOk &&
       factory->Connect(darken, "result", factory->GetOutputNode(), "result") == mat::ConnectionOk;
  // A failed edit says why and changes nothing: "scale" is a float, "color" a color3.
  ok = ok && factory->Connect(factory->GetInputNode(), "color", darken, "scale") ==
                 mat::ConnectionTypeMismatch;

  // The factory copies the value; the host still owns (and releases) its own.
  const float half = 0.5f;
  const mat::IValue* scale = mat::createValueFloat(&half, 1);
  size_t scaleInput = 0;
  if (ok && scaleColor->FindInput("scale", &scaleInput)) {
    factory->SetInputDefault(darken, scaleInput, scale);
  }
  mat::releaseValue(scale);
  factory->SetEditorPosition(darken, 200, 40);

  std::shared_ptr<const mat::IGraph> darkenGraph = ok ? factory->FinishGraph() : nullptr;
  mat::releaseGraphFactory(factory);  // an unfinished graph would go with it
  return darkenGraph;
}

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string baseText = readFile(argv[1]);
  const std::string materialsText = readFile(argv[2]);
  const mat::IGraphLibrary* base =
      mat::loadGraphLibrary(baseText.c_str(), baseText.size(), nullptr, "base");
  if (base == nullptr) return 1;
  const mat::IGraphLibrary* materials =
      mat::loadGraphLibrary(materialsText.c_str(), materialsText.size(), base, "materials");
  if (materials == nullptr) {
    mat::releaseGraphLibrary(base);
    return 1;
  }

  const std::shared_ptr<const mat::IGraph> darken = buildDarken(base, materials);
  bool ok = darken != nullptr && materials->FindGraphByName("Darken") == darken;

  // A copy of "Wood" that darkens the tint before the shader sees it. The copy has new
  // UUIDs and the same node indices; "Wood" itself stays as it was.
  const std::shared_ptr<const mat::IGraph> wood = materials->FindGraphByName("Wood");
  mat::IGraphFactory* factory = mat::cloneNewGraphFactory(materials, wood);
  ok = ok && factory != nullptr;
  if (ok) {
    factory->SetName("DarkWood");
    const mat::IGraphNode* tint = nodeNamed(*factory, "tint");
    const mat::IGraphNode* shader = nodeNamed(*factory, "shader");
    const mat::IGraphNode* darkenNode = nullptr;
    // A graph is a node class: the new node is a nested-graph node.
    ok = factory->AddNode(darken, "darken", &darkenNode) == mat::ConnectionOk &&
         darkenNode->GetNodeKind() == mat::NestedGraphNode &&
         factory->Connect(tint, "result", darkenNode, "color") == mat::ConnectionOk &&
         factory->Connect(darkenNode, "result", shader, "baseColor") == mat::ConnectionOk;
  }
  const std::shared_ptr<const mat::IGraph> darkWood = ok ? factory->FinishGraph() : nullptr;
  mat::releaseGraphFactory(factory);

  ok = ok && darkWood != nullptr && darkWood->GetNodeCount() == wood->GetNodeCount() + 1 &&
       materials->GetGraphCount() == 6;
  std::printf("%zu graphs now, %s has %zu nodes\n", materials->GetGraphCount(),
              darkWood ? darkWood->GetName() : "(none)", darkWood ? darkWood->GetNodeCount() : 0);

  mat::releaseGraphLibrary(materials);
  mat::releaseGraphLibrary(base);
  return ok ? 0 : 1;
}
