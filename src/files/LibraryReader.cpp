#include "files/LibraryReader.h"

#include <cstring>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/JsonMembers.h"
#include "core/LoadTrail.h"
#include "graph/Graph.h"
#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "model/NodeClass.h"
#include "model/Semantic.h"
#include "model/Type.h"

namespace mat {

// The item being read, for the diagnostic of a failure.
struct LoadProgress {
  bool inItem = false;
  size_t itemIndex = 0;
  UUID itemUUID{};

  void EnterItem(size_t index, const UUID& uuid = UUID{}) {
    inItem = true;
    itemIndex = index;
    itemUUID = uuid;
  }
};

namespace {

struct GraphItem {
  const picojson::object* item;
  UUID uuid;
  size_t index;  // in the content array
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
                                                        const picojson::array& content,
                                                        LoadProgress& progress) {
  std::vector<GraphItem> graphItems;
  for (size_t index = 0; index < content.size(); ++index) {
    progress.EnterItem(index);
    TrailStep step(index);
    const picojson::object& item = itemObject(content[index]);
    const std::string& kind = getStringMember(item, "content");
    const UUID uuid = getUUIDMember(item, "uuid");
    progress.itemUUID = uuid;
    if (kind == "type") {
      library.AddType(std::make_shared<Type>(uuid, item, &library));
    } else if (kind == "graph") {
      graphItems.push_back({&item, uuid, index});
    } else if (kind == "nodeclass") {
      library.AddNodeClass(std::make_shared<NodeClass>(uuid, item, &library));
    } else if (kind == "semantic") {
      library.AddSemantic(std::make_shared<Semantic>(uuid, item, &library));
    } else {
      appendTrailStep("content");
      throw InputFileParsingException("Object with unknown type encountered");
    }
  }
  progress.inItem = false;
  return graphItems;
}

// Pass 2: every graph with its nodes, but without their classes and connections.
std::vector<std::shared_ptr<Graph>> readGraphs(GraphLibrary& library,
                                               const std::vector<GraphItem>& graphItems,
                                               LoadProgress& progress) {
  std::vector<std::shared_ptr<Graph>> graphs;
  graphs.reserve(graphItems.size());
  library.ReserveGraphs(graphItems.size());
  for (const GraphItem& graphItem : graphItems) {
    progress.EnterItem(graphItem.index, graphItem.uuid);
    TrailStep step(graphItem.index);
    graphs.push_back(std::make_shared<Graph>(graphItem.uuid, *graphItem.item, &library));
    library.AddGraph(graphs.back());
  }
  progress.inItem = false;
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

// Until a file is known to hold no nesting ring, a failing load must not leave graphs
// that keep one another alive through the classes of their nodes: unless dismissed, the
// guard drops the nodes of every graph when it goes out of scope.
class NestingRingGuard {
 public:
  explicit NestingRingGuard(const std::vector<std::shared_ptr<Graph>>& graphs) : graphs_(graphs) {}
  ~NestingRingGuard() {
    if (!dismissed_) {
      for (const auto& graph : graphs_) graph->DropNodes();
    }
  }
  NestingRingGuard(const NestingRingGuard&) = delete;
  NestingRingGuard& operator=(const NestingRingGuard&) = delete;
  void Dismiss() { dismissed_ = true; }

 private:
  const std::vector<std::shared_ptr<Graph>>& graphs_;
  bool dismissed_ = false;
};

std::wstring widen(const std::string& text) {
  std::wstring wide;
  wide.reserve(text.size() + 1);
  for (const char c : text) wide.push_back(static_cast<unsigned char>(c));
  return wide;
}

constexpr size_t maxNesting = 512;

// Builds the document as picojson's own context does, but limits the nesting of objects
// as well as of arrays: its parser descends recursively, and a text nested tens of
// thousands deep would exhaust the stack. Going deeper than maxNesting stops the parse
// and sets `tooDeep`.
class BoundedParseContext {
 public:
  BoundedParseContext(picojson::value* out, size_t levelsLeft, bool* tooDeep, const char* end)
      : out_(out), levelsLeft_(levelsLeft), tooDeep_(tooDeep), end_(end) {}

  bool set_null() {
    *out_ = picojson::value();
    return true;
  }
  bool set_bool(bool value) {
    *out_ = picojson::value(value);
    return true;
  }
  bool set_number(double number) {
    *out_ = picojson::value(number);
    return true;
  }
  // A string is given its room before it is read, so that a long one (most are UUID
  // texts) is not copied from buffer to growing buffer.
  bool parse_string(picojson::input<const char*>& in) {
    *out_ = picojson::value(picojson::string_type, false);
    std::string& text = out_->get<std::string>();
    const char* start = in.cur();
    if (const void* quote = std::memchr(start, '"', static_cast<size_t>(end_ - start))) {
      text.reserve(static_cast<size_t>(static_cast<const char*>(quote) - start));
    }
    return picojson::_parse_string(text, in);
  }
  bool parse_array_start() { return Open(picojson::array_type); }
  bool parse_array_item(picojson::input<const char*>& in, size_t) {
    picojson::array& array = out_->get<picojson::array>();
    array.push_back(picojson::value());
    BoundedParseContext element(&array.back(), levelsLeft_ - 1, tooDeep_, end_);
    return picojson::_parse(element, in);
  }
  bool parse_array_stop(size_t) { return true; }
  bool parse_object_start() { return Open(picojson::object_type); }
  bool parse_object_item(picojson::input<const char*>& in, const std::string& key) {
    BoundedParseContext member(&out_->get<picojson::object>()[key], levelsLeft_ - 1, tooDeep_,
                               end_);
    return picojson::_parse(member, in);
  }
  bool parse_object_stop() { return true; }

 private:
  bool Open(int type) {
    if (levelsLeft_ == 0) {
      *tooDeep_ = true;
      return false;
    }
    *out_ = picojson::value(type, false);
    return true;
  }

  picojson::value* out_;
  size_t levelsLeft_;
  bool* tooDeep_;
  const char* end_;
};

// 1-based line and column of `position` in `text`.
void locate(const char* text, const char* position, LoadDiagnostic& diagnostic) {
  diagnostic.line = 1;
  const char* lineStart = text;
  for (const char* c = text; c < position; ++c) {
    if (*c == '\n') {
      ++diagnostic.line;
      lineStart = c + 1;
    }
  }
  diagnostic.column = static_cast<size_t>(position - lineStart) + 1;
}

const IGraphLibrary* load(const char* text, const IGraphLibrary* parent, const char* name,
                          LoadDiagnostic& diagnostic) {
  diagnostic = LoadDiagnostic();
  picojson::value root;
  std::string syntaxError;
  bool tooDeep = false;
  try {
    // The text ends at its first NUL. A syntax error leaves in `root` what was read
    // before it, and so does a number beyond the double range, which picojson throws for.
    const char* end = text + std::strlen(text);
    BoundedParseContext context(&root, maxNesting, &tooDeep, end);
    // Parsing through the input directly leaves it at the byte where the parser stopped;
    // picojson's own entry point reads on to the end of the line for its message.
    picojson::input<const char*> input(text, end);
    if (!picojson::_parse(context, input)) {
      locate(text, input.cur(), diagnostic);
      syntaxError = "syntax error at line " + std::to_string(diagnostic.line) + ", column " +
                    std::to_string(diagnostic.column);
    }
  } catch (const std::overflow_error&) {
    syntaxError = "number beyond the range of a double";
  }
  if (tooDeep) {
    diagnostic.outcome = LoadDiagnostic::Refused;
    diagnostic.message = InputFileParsingException("Nesting too deep: more than " +
                                                   std::to_string(maxNesting) + " levels")
                             .what();
    return nullptr;
  }
  diagnostic.message = syntaxError;
  if (!root.is<picojson::array>()) {
    diagnostic.outcome = LoadDiagnostic::NotALibrary;
    if (diagnostic.message.empty()) diagnostic.message = "the root of the text is not an array";
    return nullptr;
  }
  if (!syntaxError.empty()) diagnostic.outcome = LoadDiagnostic::LoadedPartially;

  LoadProgress progress;
  clearTrail();
  try {
    auto library = std::make_unique<GraphLibrary>(parent, name);
    readLibrary(*library, root.get<picojson::array>(), progress, diagnostic);
    clearTrail();
    return library.release();
  } catch (const std::exception& error) {
    diagnostic.outcome = LoadDiagnostic::Refused;
    diagnostic.message = error.what();
    diagnostic.hasItem = progress.inItem;
    diagnostic.itemIndex = progress.itemIndex;
    diagnostic.itemUUID = progress.itemUUID;
    diagnostic.jsonPath = trailPointer();
    clearTrail();
    return nullptr;
  }
}

}  // namespace

void readLibrary(GraphLibrary& library, const picojson::array& root, LoadProgress& progress,
                 LoadDiagnostic& diagnostic) {
  const picojson::array* content = chooseContentArray(root);
  if (content == nullptr) {  // a header without "fileversion" leaves the library empty
    diagnostic.headerWithoutVersion = true;
    return;
  }
  // In a versioned file the content array is element 1 of the root.
  std::unique_ptr<TrailStep> contentStep;
  if (content != &root) contentStep = std::make_unique<TrailStep>(size_t{1});
  const std::vector<GraphItem> graphItems =
      readTypesSemanticsAndNodeClasses(library, *content, progress);
  const std::vector<std::shared_ptr<Graph>> graphs = readGraphs(library, graphItems, progress);
  // Graphs may use one another as node classes in any order, so connections are read
  // only once every graph exists.
  NestingRingGuard ringGuard(graphs);
  NodeClassCache nodeClasses;
  for (size_t i = 0; i < graphs.size(); ++i) {
    progress.EnterItem(graphItems[i].index, graphItems[i].uuid);
    TrailStep step(graphItems[i].index);
    graphs[i]->ReadConnections(*graphItems[i].item, &nodeClasses);
  }
  progress.inItem = false;
  refuseRecursiveNesting(graphs);
  ringGuard.Dismiss();
}

const IGraphLibrary* loadGraphLibraryWithDiagnostic(const char* text, size_t /*size*/,
                                                    const IGraphLibrary* parent, const char* name,
                                                    LoadDiagnostic& diagnostic) {
  return load(text, parent, name, diagnostic);
}

const IGraphLibrary* loadGraphLibrary(const char* text, size_t /*size*/,
                                      const IGraphLibrary* parent, const char* name) {
  LoadDiagnostic diagnostic;
  const IGraphLibrary* library = load(text, parent, name, diagnostic);
  if (diagnostic.outcome == LoadDiagnostic::Refused) {
    std::wcerr << widen(diagnostic.message) + L"\n" << std::flush;
  }
  return library;
}

}  // namespace mat
