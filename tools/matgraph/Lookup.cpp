#include "Lookup.h"

#include "Text.h"
#include "mat/Functions.h"
#include "mat/IGraphNode.h"
#include "mat/IGraphResolver.h"
#include "mat/IParameter.h"
#include "mat/IPortPath.h"

namespace matgraph {
namespace {

bool parseIndex(const std::string& text, size_t& index) {
  if (text.empty() || text.size() > 18) return false;
  index = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return false;
    index = index * 10 + static_cast<size_t>(c - '0');
  }
  return true;
}

// A UUID written out in full; the empty text, which reads as nil, names nothing here.
bool parseUUID(const std::string& text, mat::UUID& uuid) {
  return !text.empty() && mat::makeUUID(text.c_str(), uuid);
}

template <typename NameAt>
std::string nameList(size_t count, NameAt nameAt) {
  std::string list;
  for (size_t i = 0; i < count; ++i) list += (i == 0 ? "" : ", ") + nameAt(i);
  return list.empty() ? "none" : list;
}

size_t findNodeIndex(const mat::IGraph& graph, const std::string& step) {
  std::vector<size_t> named;
  for (size_t i = 0; i < graph.GetNodeCount(); ++i) {
    if (step == graph.GetNode(i)->GetName()) named.push_back(i);
  }
  if (named.size() == 1) return named.front();
  const std::string where = " in graph " + quotedName(graph.GetName(), graph.GetUUID());
  if (named.size() > 1) {
    throw ToolError("MG306", "",
                    std::to_string(named.size()) + " nodes are named \"" + step + "\"" + where +
                        "; name one by its UUID or index");
  }
  mat::UUID uuid;
  size_t index = 0;
  for (size_t i = 0; parseUUID(step, uuid) && i < graph.GetNodeCount(); ++i) {
    if (graph.GetNode(i)->GetUUID() == uuid) return i;
  }
  if (parseIndex(step, index) && index < graph.GetNodeCount()) return index;
  throw ToolError("MG306", "",
                  "no node \"" + step + "\"" + where + "; its nodes are " +
                      nameList(graph.GetNodeCount(), [&](size_t i) {
                        const mat::IGraphNode& node = *graph.GetNode(i);
                        return std::to_string(i) + " " + quotedName(node.GetName(), node.GetUUID());
                      }));
}

}  // namespace

std::shared_ptr<const mat::IGraph> findGraph(const mat::IGraphLibrary& library,
                                             const ParentChain& parents,
                                             const std::string& nameOrUUID) {
  mat::UUID uuid;
  if (parseUUID(nameOrUUID, uuid)) {
    if (auto graph = library.FindGraph(uuid, true)) return graph;
  }
  if (auto graph = library.FindGraphByName(nameOrUUID.c_str())) return graph;
  const auto& chain = parents.Libraries();
  for (auto parent = chain.rbegin(); parent != chain.rend(); ++parent) {
    if (auto graph = (*parent)->FindGraphByName(nameOrUUID.c_str())) return graph;
  }
  const std::string graphs =
      library.GetGraphCount() == 0
          ? "the file has none"
          : "the graphs of the file are " + nameList(library.GetGraphCount(), [&](size_t i) {
              const auto graph = library.GetGraph(i);
              return quotedName(graph->GetName(), graph->GetUUID());
            });
  throw ToolError("MG306", library.GetName(), "no graph \"" + nameOrUUID + "\"; " + graphs);
}

NodePath findNode(const mat::IGraph& root, const std::string& path) {
  NodePath found;
  found.graph = &root;
  size_t begin = 0;
  while (true) {
    const size_t end = path.find('/', begin);
    const std::string step = path.substr(begin, end == std::string::npos ? end : end - begin);
    if (!found.indices.empty()) {
      const mat::IGraphNode& outer = *found.graph->GetNode(found.indices.back());
      const auto nested = outer.GetNodeClass()->AsGraph();
      if (outer.GetNodeKind() != mat::NestedGraphNode || !nested) {
        throw ToolError("MG306", "",
                        "node " + quotedName(outer.GetName(), outer.GetUUID()) +
                            " holds no nested graph, so \"" + step + "\" cannot be inside it");
      }
      found.graph = nested.get();
    }
    found.indices.push_back(findNodeIndex(*found.graph, step));
    if (end == std::string::npos) return found;
    begin = end + 1;
  }
}

size_t findInput(const mat::INodeClass& nodeClass, const std::string& nameOrIndex) {
  size_t index = 0;
  if (nodeClass.FindInput(nameOrIndex.c_str(), &index)) return index;
  if (parseIndex(nameOrIndex, index) && index < nodeClass.GetInputCount()) return index;
  throw ToolError("MG306", "",
                  "no input \"" + nameOrIndex + "\" on class " +
                      quotedName(nodeClass.GetName(), nodeClass.GetUUID()) + "; its inputs are " +
                      nameList(nodeClass.GetInputCount(), [&](size_t i) {
                        return "\"" + std::string(nodeClass.GetInput(i)->GetName()) + "\"";
                      }));
}

mat::NodeKey keyOf(mat::IGraphResolver& resolver, const std::vector<size_t>& indices) {
  if (indices.size() == 1) return resolver.GetKeyFromNodeIndex(indices.front());
  std::unique_ptr<mat::IPortPath, void (*)(const mat::IPortPath*)> path(mat::createPortPath(),
                                                                        mat::releasePortPath);
  for (const size_t index : indices) path->AppendNodeIndex(index);
  return resolver.GetKeyFromPath(*path);
}

}  // namespace matgraph
