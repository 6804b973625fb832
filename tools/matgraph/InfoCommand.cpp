// matgraph info FILE: what a library file holds — counts and names of each kind, the
// deepest nesting of its graphs, and the references that are found nowhere.
#include <iostream>
#include <map>
#include <memory>

#include "Commands.h"
#include "Inputs.h"
#include "Text.h"
#include "mat/IGraph.h"
#include "mat/IGraphNode.h"
#include "mat/INodeClass.h"
#include "mat/ISemantic.h"
#include "mat/IType.h"

namespace matgraph {
namespace {

struct InfoOptions {
  std::string file;
  std::vector<std::string> parents;
};

template <typename Object>
void printKind(const char* noun, size_t count, Object objectAt) {
  std::cout << "  " << noun << " (" << count << ")";
  for (size_t i = 0; i < count; ++i) {
    const auto object = objectAt(i);
    std::cout << (i == 0 ? ": " : ", ") << quotedName(object->GetName(), object->GetUUID());
  }
  std::cout << '\n';
}

// The longest chain of graphs nested in one another under each graph, found without
// recursion: a file may nest its graphs many thousands deep.
class NestingDepth {
 public:
  // The chain under `graph`, `graph` first.
  std::vector<const mat::IGraph*> Deepest(const mat::IGraph& graph) {
    Measure(graph);
    std::vector<const mat::IGraph*> chain;
    for (const mat::IGraph* next = &graph; next != nullptr; next = levels_[next].deepestChild) {
      chain.push_back(next);
    }
    return chain;
  }

 private:
  struct Level {
    size_t depth = 0;  // 0 while being measured
    const mat::IGraph* deepestChild = nullptr;
  };

  static const mat::IGraph* nestedGraphAt(const mat::IGraph& graph, size_t index) {
    const mat::IGraphNode& node = *graph.GetNode(index);
    if (node.GetNodeKind() != mat::NestedGraphNode) return nullptr;
    return node.GetNodeClass()->AsGraph().get();  // kept alive by the node
  }

  void Measure(const mat::IGraph& root) {
    struct Frame {
      const mat::IGraph* graph;
      size_t nextNode;
    };
    if (levels_.count(&root) != 0) return;
    std::vector<Frame> stack{{&root, 0}};
    levels_[&root];
    while (!stack.empty()) {
      Frame& frame = stack.back();
      if (frame.nextNode == frame.graph->GetNodeCount()) {
        Level& level = levels_[frame.graph];
        level.depth = 1 + (level.deepestChild ? levels_[level.deepestChild].depth : 0);
        stack.pop_back();
        continue;
      }
      const mat::IGraph* nested = nestedGraphAt(*frame.graph, frame.nextNode++);
      if (nested == nullptr) continue;
      const auto known = levels_.find(nested);
      if (known == levels_.end()) {  // measure it first, then look at this node again
        --frame.nextNode;
        levels_[nested];
        stack.push_back({nested, 0});
        continue;
      }
      Level& level = levels_[frame.graph];
      if (level.deepestChild == nullptr ||
          known->second.depth > levels_[level.deepestChild].depth) {
        level.deepestChild = nested;
      }
    }
  }

  std::map<const mat::IGraph*, Level> levels_;
};

void printNesting(const mat::IGraphLibrary& library) {
  NestingDepth depth;
  std::vector<const mat::IGraph*> deepest;
  for (size_t i = 0; i < library.GetGraphCount(); ++i) {
    const auto chain = depth.Deepest(*library.GetGraph(i));
    if (chain.size() > deepest.size()) deepest = chain;
  }
  std::cout << "  deepest graph nesting: " << deepest.size();
  for (size_t i = 0; i < deepest.size(); ++i) {
    std::cout << (i == 0 ? " (" : " > ")
              << quotedName(deepest[i]->GetName(), deepest[i]->GetUUID());
  }
  std::cout << (deepest.empty() ? "\n" : ")\n");
}

void printUnresolved(const mat::CheckResult& result) {
  struct Uses {
    std::string kind;
    std::vector<std::string> paths;
  };
  std::map<std::string, Uses> references;
  for (const mat::Finding& finding : result.findings) {
    if (finding.reference.empty()) continue;
    Uses& uses = references[finding.reference];
    uses.kind = finding.referenceKind;
    uses.paths.push_back(finding.jsonPath);
  }
  std::cout << "  unresolved references (" << references.size() << ")"
            << (references.empty() ? "\n" : ":\n");
  for (const auto& [uuid, uses] : references) {
    std::cout << "    " << uses.kind << ' ' << uuid << ", used at";
    for (const std::string& path : uses.paths) std::cout << ' ' << path;
    std::cout << '\n';
  }
}

int runInfo(const InfoOptions& options) {
  const ParentChain parents(options.parents);
  const std::string text = readLibraryFile(options.file);
  const mat::CheckResult result = checkFile(options.file, text, parents.Libraries());
  if (!result.library) {
    const mat::Finding* error = firstError(result);
    printError(error != nullptr ? error->code : "MG199", options.file,
               "does not load: " + (error != nullptr ? error->message : std::string()));
    return exitFindings;
  }
  const mat::IGraphLibrary& library = *result.library;
  std::cout << options.file << '\n';
  if (!options.parents.empty()) {
    std::cout << "  parents:";
    for (const std::string& parent : options.parents) std::cout << ' ' << parent;
    std::cout << '\n';
  }
  printKind("types", library.GetTypeCount(), [&](size_t i) { return library.GetType(i); });
  printKind("semantics", library.GetSemanticCount(),
            [&](size_t i) { return library.GetSemantic(i); });
  printKind("node classes", library.GetNodeClassCount(),
            [&](size_t i) { return library.GetNodeClass(i); });
  printKind("graphs", library.GetGraphCount(), [&](size_t i) { return library.GetGraph(i); });
  printNesting(library);
  printUnresolved(result);
  const size_t errors = result.CountOf(mat::Severity::Error);
  const size_t warnings = result.CountOf(mat::Severity::Warning);
  std::cout << "  problems: " << errors << " errors, " << warnings
            << " warnings (matgraph check tells them)\n";
  return errors > 0 ? exitFindings : exitClean;
}

}  // namespace

Command addInfoCommand(CLI::App& app) {
  auto options = std::make_shared<InfoOptions>();
  CLI::App* command = app.add_subcommand(
      "info",
      "Show what a library file holds: counts and names of each kind, the deepest graph "
      "nesting, and the UUIDs it uses that are found nowhere in the chain");
  command->add_option("file", options->file, "The library file")->required();
  addParentOption(*command, options->parents);
  return {command, [options] { return runInfo(*options); }};
}

}  // namespace matgraph
