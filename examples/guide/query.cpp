// Querying: find a graph by name, walk its nodes and connections, read defaults, and
// look objects up by UUID along the parent chain.
//
//   matgraph_guide_query examples/base.matlib examples/materials.matlib
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

// Prints one node: its class, and for each input where its value comes from.
static void printNode(const mat::IGraph& graph, size_t index) {
  const mat::IGraphNode* node = graph.GetNode(index);
  const std::shared_ptr<const mat::INodeClass> nodeClass = node->GetNodeClass();
  std::printf("  [%zu] %s: %s%s\n", index, node->GetName(), nodeClass->GetName(),
              node->GetNodeKind() == mat::NestedGraphNode ? " (a graph)" : "");
  for (size_t input = 0; input < nodeClass->GetInputCount(); ++input) {
    size_t sourceNode = 0;
    size_t sourceOutput = 0;
    const char* name = nodeClass->GetInput(input)->GetName();
    if (node->GetInputConnection(input, &sourceNode, &sourceOutput)) {
      const mat::IGraphNode* source = graph.GetNode(sourceNode);
      std::printf("      %s <- %s.%s\n", name, source->GetName(),
                  source->GetNodeClass()->GetOutput(sourceOutput)->GetName());
    } else if (const mat::IValue* value = node->GetInputDefault(input)) {
      std::printf("      %s = a default of %zu element(s)\n", name, value->GetCount());
    }
  }
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

  // Node 0 is the graph's input node, node 1 its output node; the others follow.
  const std::shared_ptr<const mat::IGraph> wood = materials->FindGraphByName("Wood");
  bool ok = wood != nullptr;
  if (ok) {
    std::printf("%s: %zu inputs, %zu outputs\n", wood->GetName(), wood->GetInputCount(),
                wood->GetOutputCount());
    for (size_t i = 0; i < wood->GetNodeCount(); ++i) printNode(*wood, i);
  }

  // Types have no lookup by name; a host walks them by index. A type of the base library
  // is found from the graph library only when the parent chain is searched.
  const mat::IType* color3 = nullptr;
  for (size_t i = 0; i < base->GetTypeCount(); ++i) {
    if (std::strcmp(base->GetType(i)->GetName(), "color3") == 0) color3 = base->GetType(i);
  }
  ok = ok && color3 != nullptr && color3->GetDefault()->GetCount() == 3 &&
       materials->FindType(color3->GetUUID(), false) == nullptr &&
       materials->FindType(color3->GetUUID(), true) == color3;

  // Anything that can be a node's class: a graph or a node class, here or in a parent.
  ok = ok && materials->FindAnyNodeClass(wood->GetUUID(), true) == wood;
  const std::shared_ptr<const mat::INodeClass> mix = base->FindNodeClassByName("MixColor");
  size_t factor = 0;
  ok = ok && mix != nullptr && mix->FindInput("factor", &factor) &&
       mix->GetInput(factor)->GetDefault()->GetFloat(0) == 0.5f;

  mat::releaseGraphLibrary(materials);
  mat::releaseGraphLibrary(base);
  return ok ? 0 : 1;
}
