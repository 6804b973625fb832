// matgraph resolve FILE --graph G --node N --input I: the hops that resolving one input
// walks — into nested graphs through their output nodes, out of them through their input
// nodes — and where it ends: the output of an ordinary node, an input of the graph itself,
// or the default value that applies. The end is the flattening resolver's answer.
#include <iostream>
#include <memory>

#include "Commands.h"
#include "Inputs.h"
#include "Lookup.h"
#include "Text.h"
#include "mat/Functions.h"
#include "mat/IGraphNode.h"
#include "mat/IGraphResolver.h"
#include "mat/IParameter.h"
#include "mat/IType.h"

namespace matgraph {
namespace {

struct ResolveOptions {
  std::string file;
  std::vector<std::string> parents;
  std::string graph;
  std::string node;
  std::string input;
};

// Where the walk is: the graph of each nesting level and the nodes it entered them by.
struct Position {
  std::vector<const mat::IGraph*> graphs;  // graphs[0] is the graph resolved in
  std::vector<size_t> entered;             // node of graphs[k] that holds graphs[k + 1]
  size_t node = 0;                         // in graphs.back()
  size_t input = 0;

  const mat::IGraphNode& Node() const { return *graphs.back()->GetNode(node); }
  std::vector<size_t> Indices() const {
    std::vector<size_t> indices = entered;
    indices.push_back(node);
    return indices;
  }
};

std::string nodeText(const mat::IGraphNode& node) {
  return "node " + quotedName(node.GetName(), node.GetUUID());
}

// "Wood", or "Wood/pattern" inside the nested graph of node "pattern".
std::string placeText(const Position& position) {
  const mat::IGraph& root = *position.graphs.front();
  std::string place = root.GetName()[0] != '\0' ? root.GetName() : uuidString(root.GetUUID());
  for (size_t k = 0; k < position.entered.size(); ++k) {
    const mat::IGraphNode& node = *position.graphs[k]->GetNode(position.entered[k]);
    place += "/" + std::string(node.GetName()[0] != '\0' ? node.GetName()
                                                         : uuidString(node.GetUUID()).c_str());
  }
  return place;
}

std::string inputText(const Position& position) {
  const mat::IGraphNode& node = position.Node();
  const char* name = node.GetNodeClass()->GetInput(position.input)->GetName();
  if (node.GetNodeKind() == mat::GraphOutputNode) {
    return "graph output \"" + std::string(name) + "\" in " + placeText(position);
  }
  return "input \"" + std::string(name) + "\" of " + nodeText(node) + " in " + placeText(position);
}

std::string outputName(const mat::IGraphNode& node, size_t output) {
  return "\"" + std::string(node.GetNodeClass()->GetOutput(output)->GetName()) + "\"";
}

// Follows connections from `position` as the flattening resolver does, printing each hop,
// until an unconnected input or a source. The resolver has already answered for this
// input, so the walk ends.
void walk(Position& position) {
  while (true) {
    std::cout << inputText(position) << '\n';
    const mat::IGraph& graph = *position.graphs.back();
    size_t source = 0;
    size_t output = 0;
    if (!position.Node().GetInputConnection(position.input, &source, &output)) {
      std::cout << "  not connected\n";
      return;
    }
    const mat::IGraphNode& sourceNode = *graph.GetNode(source);
    const auto sourceClass = sourceNode.GetNodeClass();
    switch (sourceNode.GetNodeKind()) {
      case mat::ClassNode:
        std::cout << "  <- output " << outputName(sourceNode, output) << " of "
                  << nodeText(sourceNode) << " (class "
                  << quotedName(sourceClass->GetName(), sourceClass->GetUUID()) << ")\n";
        return;
      case mat::GraphInputNode:
        std::cout << "  <- graph input " << outputName(sourceNode, output);
        if (position.entered.empty()) {
          std::cout << '\n';
          return;
        }
        std::cout << ": out of the nested graph\n";
        position.node = position.entered.back();
        position.entered.pop_back();
        position.graphs.pop_back();
        break;
      case mat::NestedGraphNode: {
        const auto nested = sourceClass->AsGraph();
        std::cout << "  <- output " << outputName(sourceNode, output) << " of "
                  << nodeText(sourceNode) << " (graph "
                  << quotedName(nested->GetName(), nested->GetUUID())
                  << "): into the nested graph\n";
        position.graphs.push_back(nested.get());
        position.entered.push_back(source);
        position.node = nested->GetOutputNodeIndex();
        break;
      }
      case mat::GraphOutputNode:
        std::cout << "  <- the graph's output node\n";
        position.node = source;
        break;
    }
    position.input = output;
  }
}

std::string keyText(mat::IGraphResolver& resolver, mat::NodeKey key) {
  return "resolver key {" + std::to_string(key.instance) + ", " + std::to_string(key.node) +
         "}, flat index " + std::to_string(resolver.GetFlatIndex(key));
}

// Where the default that applies to the unconnected input at `position` comes from.
std::string defaultOrigin(const Position& position, const mat::IValue* value) {
  const mat::IGraphNode& node = position.Node();
  const mat::IParameter& parameter = *node.GetNodeClass()->GetInput(position.input);
  if (value == node.GetInputDefault(position.input)) return "the node's own default";
  if (value == parameter.GetDefault()) return "the default of the input's declaration";
  if (parameter.GetType() != nullptr && value == parameter.GetType()->GetDefault()) {
    return "the default of type " + typeText(parameter.GetType());
  }
  return "the default held by the nested graph's input node";
}

int runResolve(const ResolveOptions& options) {
  const ParentChain parents(options.parents);
  const std::string text = readLibraryFile(options.file);
  const mat::CheckResult result = checkFile(options.file, text, parents.Libraries());
  if (!result.library) {
    const mat::Finding* error = firstError(result);
    throw ToolError(error != nullptr ? error->code : "MG199", options.file,
                    "does not load: " + (error != nullptr ? error->message : std::string()),
                    exitFindings);
  }
  const auto graph = findGraph(*result.library, parents, options.graph);
  const NodePath nodePath = findNode(*graph, options.node);
  const mat::IGraphNode& node = *nodePath.graph->GetNode(nodePath.indices.back());
  const size_t input = findInput(*node.GetNodeClass(), options.input);

  std::unique_ptr<mat::IGraphResolver, void (*)(const mat::IGraphResolver*)> resolver(
      mat::createGraphResolver(graph.get(), true), mat::releaseGraphResolver);
  const mat::NodeKey start = keyOf(*resolver, nodePath.indices);
  mat::NodeKey sourceKey{0, 0};
  size_t sourceOutput = 0;
  const mat::IValue* value = nullptr;
  bool connected = false;
  try {
    connected = resolver->ResolveInput(start, input, &sourceKey, &sourceOutput, &value);
  } catch (const std::exception& error) {
    throw ToolError("MG212", options.file,
                    std::string("the connections run in a ring: ") + error.what(), exitFindings);
  }

  Position position{{graph.get()}, {}, nodePath.indices.back(), input};
  position.entered.assign(nodePath.indices.begin(), nodePath.indices.end() - 1);
  for (size_t k = 0; k + 1 < nodePath.indices.size(); ++k) {
    position.graphs.push_back(
        position.graphs.back()->GetNode(nodePath.indices[k])->GetNodeClass()->AsGraph().get());
  }
  walk(position);
  if (connected) {
    const mat::IGraphNode& source = *resolver->GetNode(sourceKey);
    std::cout << "source: output " << outputName(source, sourceOutput) << " of "
              << (source.GetNodeKind() == mat::GraphInputNode ? "the graph's input node"
                                                              : nodeText(source))
              << " in " << placeText(position) << " (" << keyText(*resolver, sourceKey) << ")\n";
  } else if (value != nullptr) {
    std::cout << "default: " << valueText(value) << " (" << defaultOrigin(position, value) << ")\n";
  } else {
    std::cout << "default: none (no default is set anywhere)\n";
  }
  return exitClean;
}

}  // namespace

Command addResolveCommand(CLI::App& app) {
  auto options = std::make_shared<ResolveOptions>();
  CLI::App* command = app.add_subcommand(
      "resolve",
      "Show the hops that resolving one input walks through nested graphs, ending at the "
      "output that feeds it or the default value that applies");
  command->add_option("file", options->file, "The library file")->required();
  command->add_option("--graph", options->graph, "The graph, by name or UUID")
      ->type_name("NAME|UUID")
      ->required();
  command
      ->add_option("--node", options->node,
                   "The node, by name, UUID or index; reach into nested graphs with "
                   "outer/inner")
      ->type_name("NODE")
      ->required();
  command->add_option("--input", options->input, "The input, by name or index")
      ->type_name("INPUT")
      ->required();
  addParentOption(*command, options->parents);
  return {command, [options] { return runResolve(*options); }};
}

}  // namespace matgraph
