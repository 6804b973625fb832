#include "files/LibraryReader.h"

#include <cstring>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/JsonMembers.h"
#include "graph/Graph.h"
#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "model/NodeClass.h"
#include "model/Semantic.h"
#include "model/Type.h"

namespace mat {
namespace {

struct GraphItem {
  const picojson::object* item;
  UUID uuid;
};

const picojson::array* chooseContentArray(const picojson::array& root) {
  const bool versioned =
      root.size() == 2 && root[0].is<picojson::object>() && root[1].is<picojson::array>();
  if (!versioned) return &root;
  const picojson::object& header = root[0].get<picojson::object>();
  if (header.find("fileversion") == header.end()) return nullptr;
  return &root[1].get<picojson::array>();
}

const picojson::object& itemObject(const picojson::value& item) {
  if (!item.is<picojson::object>()) throw InputFileParsingException("Expected object");
  return item.get<picojson::object>();
}

// Pass 1: types, semantics and node classes, each registered as soon as it is built,
// so that an item sees those before it. Graph items are only noted.
std::vector<GraphItem> readTypesSemanticsAndNodeClasses(GraphLibrary& library,
                                                        const picojson::array& content) {
  std::vector<GraphItem> graphItems;
  for (const picojson::value& element : content) {
    const picojson::object& item = itemObject(element);
    const std::string& kind = getStringMember(item, "content");
    const UUID uuid = getUUIDMember(item, "uuid");
    if (kind == "type") {
      library.AddType(std::make_shared<Type>(uuid, item, &library));
    } else if (kind == "graph") {
      graphItems.push_back({&item, uuid});
    } else if (kind == "nodeclass") {
      library.AddNodeClass(std::make_shared<NodeClass>(uuid, item, &library));
    } else if (kind == "semantic") {
      library.AddSemantic(std::make_shared<Semantic>(uuid, item, &library));
    } else {
      throw InputFileParsingException("Object with unknown type encountered");
    }
  }
  return graphItems;
}

// Pass 2: every graph with its nodes, but without their classes and connections.
std::vector<std::shared_ptr<Graph>> readGraphs(GraphLibrary& library,
                                               const std::vector<GraphItem>& graphItems) {
  std::vector<std::shared_ptr<Graph>> graphs;
  graphs.reserve(graphItems.size());
  library.ReserveGraphs(graphItems.size());
  for (const GraphItem& graphItem : graphItems) {
    graphs.push_back(std::make_shared<Graph>(graphItem.uuid, *graphItem.item, &library));
    library.AddGraph(graphs.back());
  }
  return graphs;
}

// A graph that contains itself, directly or through other graphs, can never be
// resolved; such a file is refused. Only the file's own graphs can form a ring: a parent
// never sees its children.
void refuseRecursiveNesting(const std::vector<std::shared_ptr<Graph>>& graphs) {
  enum class State { Unvisited, InProgress, Done };
  std::unordered_map<const IGraph*, State> states;
  for (const auto& graph : graphs) states.emplace(graph.get(), State::Unvisited);

  struct Frame {
    const IGraph* graph;
    size_t nextNode;
  };
  std::vector<Frame> stack;
  for (const auto& start : graphs) {
    if (states[start.get()] != State::Unvisited) continue;
    states[start.get()] = State::InProgress;
    stack.push_back({start.get(), 0});
    while (!stack.empty()) {
      Frame& frame = stack.back();
      if (frame.nextNode == frame.graph->GetNodeCount()) {
        states[frame.graph] = State::Done;
        stack.pop_back();
        continue;
      }
      const IGraphNode* node = frame.graph->GetNode(frame.nextNode++);
      if (node->GetNodeKind() != NestedGraphNode) continue;
      const auto* nested = dynamic_cast<const IGraph*>(node->GetNodeClass().get());
      const auto state = states.find(nested);
      if (state == states.end() || state->second == State::Done) continue;
      if (state->second == State::InProgress) {
        throw InputFileParsingException("Recursive graph nesting: graph " +
                                        uuidText(nested->GetUUID()) + " contains itself");
      }
      state->second = State::InProgress;
      stack.push_back({nested, 0});
    }
  }
}

std::wstring widen(const char* text) {
  std::wstring wide;
  for (const char* c = text; *c != '\0'; ++c) wide.push_back(static_cast<unsigned char>(*c));
  return wide;
}

}  // namespace

void readLibrary(GraphLibrary& library, const picojson::array& root) {
  const picojson::array* content = chooseContentArray(root);
  if (content == nullptr) return;  // a header without "fileversion" leaves the library empty
  const std::vector<GraphItem> graphItems = readTypesSemanticsAndNodeClasses(library, *content);
  const std::vector<std::shared_ptr<Graph>> graphs = readGraphs(library, graphItems);
  // Graphs may use one another as node classes in any order, so connections are read
  // only once every graph exists.
  for (size_t i = 0; i < graphs.size(); ++i) graphs[i]->ReadConnections(*graphItems[i].item);
  refuseRecursiveNesting(graphs);
}

const IGraphLibrary* loadGraphLibrary(const char* text, size_t /*size*/,
                                      const IGraphLibrary* parent, const char* name) {
  picojson::value root;
  try {
    // The text ends at its first NUL. A syntax error leaves in `root` what was read
    // before it, and so does a number beyond the double range, which picojson throws for.
    picojson::parse(root, text, text + std::strlen(text), nullptr);
  } catch (const std::overflow_error&) {
  }
  if (!root.is<picojson::array>()) return nullptr;
  try {
    auto library = std::make_unique<GraphLibrary>(parent, name);
    readLibrary(*library, root.get<picojson::array>());
    return library.release();
  } catch (const std::exception& error) {
    std::wcerr << widen(error.what()) + L"\n" << std::flush;
    return nullptr;
  }
}

}  // namespace mat
