// matgraph dot FILE --graph NAME|UUID [--flatten]: one graph in Graphviz's DOT language.
// Each node is a table with its inputs on the left and its outputs on the right, each a
// port that the connections start or end at. Without --flatten a node whose class is a
// graph is one box; with it, the node becomes a cluster holding that graph's nodes, nested
// as deep as the graphs go, and connections run through the clusters' input and output
// nodes. Node identifiers are the flattening resolver's flat indices.
#include <algorithm>
#include <iostream>
#include <memory>
#include <sstream>

#include "Commands.h"
#include "Inputs.h"
#include "Lookup.h"
#include "Text.h"
#include "mat/Functions.h"
#include "mat/IGraphNode.h"
#include "mat/IGraphResolver.h"
#include "mat/IParameter.h"

namespace matgraph {
namespace {

struct DotOptions {
  std::string file;
  std::vector<std::string> parents;
  std::string graph;
  bool flatten = false;
};

// A flattened drawing stops at these sizes: graphs may nest one another many times over.
constexpr size_t maxDrawnNodes = 20000;
constexpr size_t maxNestingLevels = 200;

std::string htmlText(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::string quotedText(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c == '\n' ? ' ' : c;
  }
  return quoted + "\"";
}

std::string displayName(const char* name, const mat::UUID& uuid) {
  return name[0] != '\0' ? name : uuidString(uuid);
}

class DotWriter {
 public:
  DotWriter(std::ostream& out, mat::IGraphResolver& resolver, bool flatten)
      : out_(out), resolver_(resolver), flatten_(flatten) {}

  void Write(const mat::IGraph& graph) {
    const std::string name = displayName(graph.GetName(), graph.GetUUID());
    out_ << "digraph " << quotedText(name) << " {\n"
         << "  graph [rankdir=LR, label=" << quotedText(name) << ", labelloc=t, "
         << "fontname=\"Helvetica\"];\n"
         << "  node [shape=plaintext, fontname=\"Helvetica\", fontsize=11];\n"
         << "  edge [arrowsize=0.7];\n";
    WriteInstance(graph, {}, 1);
    out_ << "}\n";
  }

 private:
  std::string NodeId(const std::vector<size_t>& instance, size_t node) {
    std::vector<size_t> indices = instance;
    indices.push_back(node);
    return "n" + std::to_string(resolver_.GetFlatIndex(keyOf(resolver_, indices)));
  }

  bool Expands(const mat::IGraphNode& node) const {
    return flatten_ && node.GetNodeKind() == mat::NestedGraphNode;
  }

  // The nodes of the graph instance entered through the nodes `instance`, then the
  // connections among them.
  void WriteInstance(const mat::IGraph& graph, const std::vector<size_t>& instance, size_t level) {
    if (level > maxNestingLevels) {
      throw ToolError("MG309", "",
                      "graphs nest deeper than " + std::to_string(maxNestingLevels) +
                          " levels; draw without --flatten");
    }
    const std::string indent(level * 2, ' ');
    for (size_t i = 0; i < graph.GetNodeCount(); ++i) {
      const mat::IGraphNode& node = *graph.GetNode(i);
      if (!Expands(node)) {
        WriteNode(node, NodeId(instance, i), indent);
        continue;
      }
      std::vector<size_t> nested = instance;
      nested.push_back(i);
      const auto nestedGraph = node.GetNodeClass()->AsGraph();
      out_ << indent << "subgraph cluster_" << NodeId(instance, i).substr(1) << " {\n"
           << indent << "  label="
           << quotedText(displayName(node.GetName(), node.GetUUID()) + ": " +
                         displayName(nestedGraph->GetName(), nestedGraph->GetUUID()))
           << "; style=rounded; color=\"#6688aa\";\n";
      WriteInstance(*nestedGraph, nested, level + 1);
      out_ << indent << "}\n";
    }
    for (size_t i = 0; i < graph.GetNodeCount(); ++i) {
      WriteConnections(graph, instance, i, indent);
    }
  }

  void WriteNode(const mat::IGraphNode& node, const std::string& id, const std::string& indent) {
    if (++drawnNodes_ > maxDrawnNodes) {
      throw ToolError(
          "MG309", "",
          "more than " + std::to_string(maxDrawnNodes) + " nodes to draw; draw without --flatten");
    }
    const auto nodeClass = node.GetNodeClass();
    const bool isInputNode = node.GetNodeKind() == mat::GraphInputNode;
    const bool isOutputNode = node.GetNodeKind() == mat::GraphOutputNode;
    const size_t inputs = isInputNode ? 0 : nodeClass->GetInputCount();
    const size_t outputs = isOutputNode ? 0 : nodeClass->GetOutputCount();
    const bool special = isInputNode || isOutputNode;  // one column of ports
    const char* colour = node.GetNodeKind() == mat::NestedGraphNode ? "#cce0ff"
                         : isInputNode || isOutputNode              ? "#e8e8e8"
                                                                    : "#fff2cc";
    out_ << indent << id << " [label=<<table border=\"0\" cellborder=\"1\" cellspacing=\"0\" "
         << "cellpadding=\"4\"><tr><td colspan=\"" << (special ? 1 : 2) << "\" bgcolor=\"" << colour
         << "\"><b>" << htmlText(displayName(node.GetName(), node.GetUUID())) << "</b>";
    if (!special) {
      out_ << "<br/><font point-size=\"9\">"
           << (node.GetNodeKind() == mat::NestedGraphNode ? "graph " : "")
           << htmlText(displayName(nodeClass->GetName(), nodeClass->GetUUID())) << "</font>";
    }
    out_ << "</td></tr>";
    for (size_t row = 0; row < std::max<size_t>(std::max(inputs, outputs), 1); ++row) {
      out_ << "<tr>";
      if (row < inputs) {
        std::string text = nodeClass->GetInput(row)->GetName();
        if (!node.GetInputConnection(row, nullptr, nullptr) && node.GetInputDefault(row)) {
          text += " = " + valueText(node.GetInputDefault(row));
        }
        out_ << "<td port=\"i" << row << "\" align=\"left\">" << htmlText(text) << "</td>";
      } else if (!isInputNode) {
        out_ << "<td></td>";
      }
      if (row < outputs) {
        out_ << "<td port=\"o" << row << "\" align=\"right\">"
             << htmlText(nodeClass->GetOutput(row)->GetName()) << "</td>";
      } else if (!isOutputNode) {
        out_ << "<td></td>";
      }
      out_ << "</tr>";
    }
    out_ << "</table>>];\n";
  }

  // An edge for each connected input of node `target` of the instance.
  void WriteConnections(const mat::IGraph& graph, const std::vector<size_t>& instance,
                        size_t target, const std::string& indent) {
    const mat::IGraphNode& node = *graph.GetNode(target);
    const auto nodeClass = node.GetNodeClass();
    for (size_t input = 0; input < nodeClass->GetInputCount(); ++input) {
      size_t source = 0;
      size_t output = 0;
      if (!node.GetInputConnection(input, &source, &output) || source >= graph.GetNodeCount()) {
        continue;
      }
      out_ << indent << SourcePort(graph, instance, source, output) << " -> "
           << TargetPort(graph, instance, target, input) << ";\n";
    }
  }

  // Where an edge from output `output` of node `source` starts: on the node, or for an
  // expanded graph on its output node's port for that graph output.
  std::string SourcePort(const mat::IGraph& graph, const std::vector<size_t>& instance,
                         size_t source, size_t output) {
    if (!Expands(*graph.GetNode(source))) {
      return NodeId(instance, source) + ":o" + std::to_string(output) + ":e";
    }
    std::vector<size_t> nested = instance;
    nested.push_back(source);
    const auto nestedGraph = graph.GetNode(source)->GetNodeClass()->AsGraph();
    return NodeId(nested, nestedGraph->GetOutputNodeIndex()) + ":i" + std::to_string(output) + ":e";
  }

  std::string TargetPort(const mat::IGraph& graph, const std::vector<size_t>& instance,
                         size_t target, size_t input) {
    if (!Expands(*graph.GetNode(target))) {
      return NodeId(instance, target) + ":i" + std::to_string(input) + ":w";
    }
    std::vector<size_t> nested = instance;
    nested.push_back(target);
    const auto nestedGraph = graph.GetNode(target)->GetNodeClass()->AsGraph();
    return NodeId(nested, nestedGraph->GetInputNodeIndex()) + ":o" + std::to_string(input) + ":w";
  }

  std::ostream& out_;
  mat::IGraphResolver& resolver_;
  bool flatten_;
  size_t drawnNodes_ = 0;
};

int runDot(const DotOptions& options) {
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
  std::unique_ptr<mat::IGraphResolver, void (*)(const mat::IGraphResolver*)> resolver(
      mat::createGraphResolver(graph.get(), true), mat::releaseGraphResolver);
  std::ostringstream dot;  // written whole, so that a drawing too large leaves nothing
  DotWriter(dot, *resolver, options.flatten).Write(*graph);
  std::cout << dot.str();
  return exitClean;
}

}  // namespace

Command addDotCommand(CLI::App& app) {
  auto options = std::make_shared<DotOptions>();
  CLI::App* command = app.add_subcommand(
      "dot",
      "Draw one graph in Graphviz's DOT language (render it with: dot -Tsvg). With --flatten "
      "each nested graph is expanded as a cluster");
  command->add_option("file", options->file, "The library file")->required();
  command->add_option("--graph", options->graph, "The graph to draw, by name or UUID")
      ->type_name("NAME|UUID")
      ->required();
  command->add_flag("--flatten", options->flatten, "Expand nested graphs through the resolver");
  addParentOption(*command, options->parents);
  return {command, [options] { return runDot(*options); }};
}

}  // namespace matgraph
