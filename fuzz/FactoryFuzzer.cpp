// Fuzzes graph factories: the input bytes are a sequence of edits, applied to a new graph
// or to a copy of a graph of the example libraries. The target checks what a host relies on:
// - no edit crashes, leaks or throws, except Connect from a node of another graph, which
//   throws InvalidDataAccess "Index out of Range: Node not present";
// - an edit that reports a failure, or throws, leaves the graph exactly as it was;
// - the codes and node counts agree with what each edit promises;
// - every finished graph saves, and its library loads back under the same parent and
//   saves to the same bytes.
//
// Input layout: one byte chooses the first graph (new, or a copy of a library graph);
// then each edit is one byte of operation followed by its argument bytes. A missing byte
// reads as 0, so every input decodes to some session.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "FuzzCheck.h"
#include "mat/mat.h"
#include "model/Value.h"

namespace {

using namespace mat;

struct LibraryRelease {
  void operator()(const IGraphLibrary* library) const { releaseGraphLibrary(library); }
};
using LibraryPtr = std::unique_ptr<const IGraphLibrary, LibraryRelease>;

struct FactoryRelease {
  void operator()(IGraphFactory* factory) const { releaseGraphFactory(factory); }
};
using FactoryPtr = std::unique_ptr<IGraphFactory, FactoryRelease>;

struct ValueRelease {
  void operator()(const IValue* value) const { releaseValue(value); }
};
using ValuePtr = std::unique_ptr<const IValue, ValueRelease>;

// Used when the example libraries are missing or do not load: a few types, node classes
// and a graph that nests another one.
const char* const fallbackBase = R"([
  {"content": "type", "uuid": "00000000-0000-4000-8000-000000000001", "desc": "float",
   "default": {"component": "float", "value": 0}},
  {"content": "type", "uuid": "00000000-0000-4000-8000-000000000002", "desc": "int"},
  {"content": "nodeclass", "uuid": "00000000-0000-4000-8000-000000000101", "desc": "add",
   "input": [{"name": "a", "type": "00000000-0000-4000-8000-000000000001"},
             {"name": "b", "type": "00000000-0000-4000-8000-000000000001",
              "default": {"component": "float", "value": 1}}],
   "output": [{"name": "out", "type": "00000000-0000-4000-8000-000000000001"}]},
  {"content": "nodeclass", "uuid": "00000000-0000-4000-8000-000000000102", "desc": "round",
   "input": [{"name": "a", "type": "00000000-0000-4000-8000-000000000001"}],
   "output": [{"name": "out", "type": "00000000-0000-4000-8000-000000000002"}]}
])";
const char* const fallbackGraphs = R"([
  {"content": "graph", "uuid": "00000000-0000-4000-8000-000000000201", "desc": "doubler",
   "input": [{"name": "x", "type": "00000000-0000-4000-8000-000000000001"}],
   "output": [{"name": "out", "type": "00000000-0000-4000-8000-000000000001",
               "from": ["00000000-0000-4000-8000-000000000211", "out"]}],
   "nodes": [{"uuid": "00000000-0000-4000-8000-000000000211",
              "node": "00000000-0000-4000-8000-000000000101",
              "input": [{"name": "a", "from": ["", "x"]}, {"name": "b", "from": ["", "x"]}]}]},
  {"content": "graph", "uuid": "00000000-0000-4000-8000-000000000202", "desc": "twice",
   "input": [{"name": "a", "type": "00000000-0000-4000-8000-000000000001"}],
   "output": [{"name": "b", "type": "00000000-0000-4000-8000-000000000002",
               "from": ["00000000-0000-4000-8000-000000000222", "out"]}],
   "nodes": [{"uuid": "00000000-0000-4000-8000-000000000221",
              "node": "00000000-0000-4000-8000-000000000201",
              "input": [{"name": "x", "from": ["", "a"]}]},
             {"uuid": "00000000-0000-4000-8000-000000000222",
              "node": "00000000-0000-4000-8000-000000000102",
              "input": [{"name": "a", "from": ["00000000-0000-4000-8000-000000000221", "out"]}]}]}
])";

std::string readFile(const char* path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::string();
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

LibraryPtr load(const std::string& text, const IGraphLibrary* parent, const char* name) {
  return LibraryPtr(loadGraphLibrary(text.c_str(), text.size(), parent, name));
}

std::string save(const IGraphLibrary& library) {
  std::ostringstream out;
  saveGraphLibrary(&library, out);
  return out.str();
}

// What a session can draw on: the two libraries, and pools of types, classes, names and
// values gathered from them once.
struct World {
  World() {
    std::string baseText = readFile(MATGRAPH_SOURCE_DIR "/examples/base.matlib");
    std::string graphsText = readFile(MATGRAPH_SOURCE_DIR "/examples/materials.matlib");
    std::wstringbuf refusals;  // a refused example only means the fallback is used
    std::wstreambuf* errors = std::wcerr.rdbuf(&refusals);
    base = load(baseText, nullptr, "base");
    if (base) graphs = load(graphsText, base.get(), "materials");
    if (!graphs) {
      graphs.reset();
      base = load(fallbackBase, nullptr, "base");
      graphs = load(fallbackGraphs, base.get(), "graphs");
      std::fprintf(stderr, "factory fuzzer: example libraries unusable, using the fallback\n");
    }
    std::wcerr.rdbuf(errors);
    MAT_FUZZ_CHECK(base && graphs, "the fallback libraries do not load");

    for (const IGraphLibrary* library : {base.get(), graphs.get()}) {
      for (size_t i = 0; i < library->GetTypeCount(); ++i) types.push_back(library->GetType(i));
      for (size_t i = 0; i < library->GetSemanticCount(); ++i) {
        semantics.push_back(library->GetSemantic(i));
      }
      for (size_t i = 0; i < library->GetNodeClassCount(); ++i) {
        classes.push_back(library->GetNodeClass(i));
      }
      for (size_t i = 0; i < library->GetGraphCount(); ++i) {
        graphList.push_back(library->GetGraph(i));
        classes.push_back(graphList.back());
      }
    }
    std::set<std::string> nameSet = {"", "a", "b", "out", "x", "GraphInputs", "GraphOutputs"};
    for (const auto& nodeClass : classes) {
      nameSet.insert(nodeClass->GetName());
      for (size_t i = 0; i < nodeClass->GetInputCount(); ++i) {
        addParameter(*nodeClass->GetInput(i), nameSet);
      }
      for (size_t i = 0; i < nodeClass->GetOutputCount(); ++i) {
        addParameter(*nodeClass->GetOutput(i), nameSet);
      }
    }
    for (const IType* type : types) {
      const IValue* value = type->GetDefault();
      if (value != nullptr && value->GetCount() > 0) values.push_back(value);
    }
    names.assign(nameSet.begin(), nameSet.end());
  }

  void addParameter(const IParameter& parameter, std::set<std::string>& nameSet) {
    nameSet.insert(parameter.GetName());
    // A value with no elements saves to a text that does not load; the fuzzer keeps to
    // values that do.
    const IValue* value = parameter.GetDefault();
    if (value != nullptr && value->GetCount() > 0) values.push_back(value);
  }

  LibraryPtr base;
  LibraryPtr graphs;
  std::vector<const IType*> types;
  std::vector<const ISemantic*> semantics;
  std::vector<std::shared_ptr<const INodeClass>> classes;
  std::vector<std::shared_ptr<const IGraph>> graphList;
  std::vector<std::string> names;
  std::vector<const IValue*> values;
};

const World& world() {
  static const World* const instance = new World();  // lives as long as the process
  return *instance;
}

class ByteReader {
 public:
  ByteReader(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  bool AtEnd() const { return position_ >= size_; }
  uint8_t Next() { return position_ < size_ ? data_[position_++] : 0; }
  // One of `count` choices (count > 0).
  size_t Choose(size_t count) { return Next() % count; }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t position_ = 0;
};

// Every fact of the factory's graph that the public interfaces show, as text: the graph's
// inputs and outputs, and each node with its class, position, connections and defaults.
std::string describe(IGraphFactory& factory) {
  std::ostringstream out;
  auto value = [](const IValue* v) {
    return v != nullptr ? picojson::value(saveValue(*v)).serialize() : std::string("-");
  };
  const size_t count = factory.GetNodeCount();
  for (size_t index = 0; index < count; ++index) {
    const IGraphNode* node = nullptr;
    MAT_FUZZ_CHECK(factory.GetNode(index, &node) == ConnectionOk && node != nullptr,
                   "a node below the count is not found");
    const auto nodeClass = node->GetNodeClass();
    float x = 0;
    float y = 0;
    node->GetEditorPosition(&x, &y);
    char position[64];
    std::snprintf(position, sizeof position, "%a,%a", x, y);
    char uuid[37];
    UUIDToString(node->GetUUID(), uuid);
    out << index << ' ' << uuid << " \"" << node->GetName() << "\" " << node->GetNodeKind() << ' '
        << nodeClass.get() << ' ' << position;
    for (size_t input = 0; input < nodeClass->GetInputCount(); ++input) {
      const IParameter* parameter = nodeClass->GetInput(input);
      size_t sourceNode = 0;
      size_t sourceOutput = 0;
      out << " | " << parameter->GetName() << ' ' << parameter->GetType() << ' '
          << value(parameter->GetDefault()) << ' ';
      if (node->GetInputConnection(input, &sourceNode, &sourceOutput)) {
        out << sourceNode << '.' << sourceOutput;
      }
      out << ' ' << value(node->GetInputDefault(input));
    }
    out << '\n';
  }
  return out.str();
}

// One fuzzing session: the factory being edited, a second one whose nodes serve as foreign
// handles, and the library where finished graphs go.
class Session {
 public:
  Session(const World& world, ByteReader& bytes)
      : world_(world),
        bytes_(bytes),
        library_(createGraphLibrary(world.graphs.get(), "fuzz")),
        other_(createNewGraphFactory(library_.get(), "other", UUID{})) {
    if (!world.classes.empty()) other_->AddNode(world.classes.front(), "foreign", nullptr);
  }

  void Run() {
    StartFactory();
    for (size_t edits = 0; edits < maxEdits && !bytes_.AtEnd(); ++edits) Edit();
    Finish();
    CheckRoundTrip();
  }

 private:
  static constexpr size_t maxEdits = 300;
  static constexpr size_t maxNodes = 48;
  static constexpr size_t maxGraphs = 4;

  void StartFactory() {
    const size_t choice = bytes_.Next();
    std::vector<std::shared_ptr<const IGraph>> sources = world_.graphList;
    for (size_t i = 0; i < library_->GetGraphCount(); ++i) sources.push_back(library_->GetGraph(i));
    if (choice % 4 == 0 || sources.empty()) {
      factory_.reset(createNewGraphFactory(library_.get(), Name(), UUID{}));
    } else {
      factory_.reset(cloneNewGraphFactory(library_.get(), sources[choice % sources.size()]));
    }
    MAT_FUZZ_CHECK(factory_ != nullptr, "no factory");
  }

  void Finish() {
    const size_t countBefore = library_->GetGraphCount();
    const auto graph = factory_->FinishGraph();
    MAT_FUZZ_CHECK(graph != nullptr, "FinishGraph gave nothing");
    MAT_FUZZ_CHECK(library_->GetGraphCount() == countBefore + 1, "the graph was not registered");
    MAT_FUZZ_CHECK(library_->FindGraph(graph->GetUUID(), false) == graph,
                   "the finished graph is not found by its UUID");
    MAT_FUZZ_CHECK(library_->FindGraphByName(graph->GetName()) == graph || graph->GetName()[0] == 0,
                   "the finished graph is not found by its name");
    MAT_FUZZ_CHECK(factory_->FinishGraph() == nullptr && factory_->GetNodeCount() == 0,
                   "a finished factory still holds a graph");
  }

  void CheckRoundTrip() {
    const std::string saved = save(*library_);
    std::wstringbuf errorText;
    std::wstreambuf* errors = std::wcerr.rdbuf(&errorText);
    const LibraryPtr reloaded = load(saved, world_.graphs.get(), "fuzz");
    std::wcerr.rdbuf(errors);
    if (!reloaded) {
      std::fprintf(stderr, "saved text:\n%s\n", saved.c_str());
      std::string error;
      for (wchar_t c : errorText.str()) error.push_back(c < 0x80 ? static_cast<char>(c) : '?');
      MAT_FUZZ_CHECK(false, "a library of finished graphs does not load again: " + error);
    }
    const std::string savedAgain = save(*reloaded);
    if (savedAgain != saved) {
      std::fprintf(stderr, "first save:\n%s\nsecond save:\n%s\n", saved.c_str(),
                   savedAgain.c_str());
    }
    MAT_FUZZ_CHECK(savedAgain == saved, "a reloaded library saves to different bytes");
  }

  const char* Name() {
    const uint8_t choice = bytes_.Next();
    if (choice == 255) return nullptr;
    return world_.names[choice % world_.names.size()].c_str();
  }

  const IType* Type() {
    const uint8_t choice = bytes_.Next();
    if (choice == 255 || world_.types.empty()) return nullptr;
    return world_.types[choice % world_.types.size()];
  }

  std::shared_ptr<const INodeClass> Class() {
    const uint8_t choice = bytes_.Next();
    if (choice == 255) return nullptr;
    const size_t own = library_->GetGraphCount();
    const size_t index = choice % (world_.classes.size() + own);
    return index < world_.classes.size() ? world_.classes[index]
                                         : library_->GetGraph(index - world_.classes.size());
  }

  // A node of the graph; now and then null or a node of the other factory.
  const IGraphNode* Node() {
    const uint8_t choice = bytes_.Next();
    if (choice == 255) return nullptr;
    const IGraphNode* node = nullptr;
    if (choice == 254) {
      other_->GetNode(2, &node);
      return node;
    }
    factory_->GetNode(choice % factory_->GetNodeCount(), &node);
    return node;
  }

  float Coordinate() {
    const auto raw = static_cast<int8_t>(bytes_.Next());
    if (raw == INT8_MAX) return INFINITY;
    return static_cast<float>(raw) / 4;
  }

  // A value to give as a default: one the libraries hold, or a new one the session owns.
  const IValue* DefaultValue() {
    const uint8_t choice = bytes_.Next();
    if (choice == 255) return nullptr;
    const size_t count = 1 + bytes_.Choose(3);
    switch (choice % 6) {
      case 0: {
        float elements[3] = {Coordinate(), Coordinate(), Coordinate()};
        return Keep(createValueFloat(elements, count));
      }
      case 1: {
        int elements[3] = {int8_t(bytes_.Next()), int8_t(bytes_.Next()), int8_t(bytes_.Next())};
        return Keep(createValueInt(elements, count));
      }
      case 2: {
        bool elements[3] = {bytes_.Next() % 2 == 1, bytes_.Next() % 2 == 1, false};
        return Keep(createValueBool(elements, count));
      }
      case 3: {
        UUID elements[3] = {};
        elements[0].bytes[15] = bytes_.Next();
        return Keep(createValueUUID(elements, count));
      }
      case 4: {
        if (world_.semantics.empty()) return nullptr;
        const ISemantic* elements[3] = {};
        for (const ISemantic*& element : elements) {
          element = world_.semantics[bytes_.Choose(world_.semantics.size())];
        }
        return Keep(createValueSemantic(elements, count));
      }
      default:
        if (world_.values.empty()) return nullptr;
        return world_.values[bytes_.Choose(world_.values.size())];
    }
  }

  const IValue* Keep(const IValue* value) {
    values_.emplace_back(value);
    return value;
  }

  // The name of one of a class's inputs (or outputs), or any name of the pool.
  const char* ParameterName(const IGraphNode* node, bool output) {
    const uint8_t choice = bytes_.Next();
    if (node != nullptr && choice < 192) {
      const auto nodeClass = node->GetNodeClass();
      const size_t count = output ? nodeClass->GetOutputCount() : nodeClass->GetInputCount();
      if (count > 0) {
        const IParameter* parameter =
            output ? nodeClass->GetOutput(choice % count) : nodeClass->GetInput(choice % count);
        return parameter->GetName();
      }
    }
    return choice == 255 ? nullptr : world_.names[choice % world_.names.size()].c_str();
  }

  bool HasParameter(const IGraphNode* node, const char* name) {
    return name != nullptr && node->GetNodeClass()->FindInput(name, nullptr);
  }

  void Edit() {
    const std::string before = describe(*factory_);
    const size_t count = factory_->GetNodeCount();
    ConnectionResult result = ConnectionOk;
    switch (bytes_.Next() % 14) {
      case 0: {
        if (count >= maxNodes) return;
        const auto nodeClass = Class();
        const IGraphNode* node = nullptr;
        result = factory_->AddNode(nodeClass, Name(), &node);
        MAT_FUZZ_CHECK(result == (nodeClass ? ConnectionOk : ConnectionInvalidNodes),
                       "AddNode: unexpected code");
        if (result == ConnectionOk) {
          const IGraphNode* last = nullptr;
          factory_->GetNode(count, &last);
          MAT_FUZZ_CHECK(node == last && node->GetNodeKind() ==
                                             (nodeClass->IsGraph() ? NestedGraphNode : ClassNode),
                         "AddNode: the new node is not the last one, of its class's kind");
        } else {
          MAT_FUZZ_CHECK(node == nullptr, "AddNode: a refused node was handed out");
        }
        break;
      }
      case 1:
        factory_->SetName(Name());
        return;
      case 2: {
        const IGraphNode* node = Node();
        const float x = Coordinate();
        factory_->SetEditorPosition(node, x, Coordinate());
        return;
      }
      case 3: {
        const IType* type = Type();
        const char* name = Name();
        const bool taken = HasParameter(factory_->GetInputNode(), name ? name : "");
        result = factory_->AddInput(type, name, DefaultValue());
        MAT_FUZZ_CHECK(result == (taken ? ConnectionNameInUse : ConnectionOk), "AddInput: code");
        break;
      }
      case 4: {
        const IType* type = Type();
        const char* name = Name();
        const bool taken = HasParameter(factory_->GetOutputNode(), name ? name : "");
        result = factory_->AddOutput(type, name);
        MAT_FUZZ_CHECK(result == (taken ? ConnectionNameInUse : ConnectionOk), "AddOutput: code");
        break;
      }
      case 5: {
        const char* name = ParameterName(factory_->GetInputNode(), false);
        const bool present = HasParameter(factory_->GetInputNode(), name);
        result = factory_->RemoveInput(name);
        MAT_FUZZ_CHECK(result == (present ? ConnectionOk : ConnectionNotFound),
                       "RemoveInput: code");
        break;
      }
      case 6: {
        const char* name = ParameterName(factory_->GetOutputNode(), false);
        const bool present = HasParameter(factory_->GetOutputNode(), name);
        result = factory_->RemoveOutput(name);
        MAT_FUZZ_CHECK(result == (present ? ConnectionOk : ConnectionNotFound),
                       "RemoveOutput: code");
        break;
      }
      case 7: {
        const size_t index = bytes_.Choose(count + 2);
        result = factory_->RemoveNode(index);
        const bool removable = index >= 2 && index < count;
        MAT_FUZZ_CHECK(result == (removable ? ConnectionOk : ConnectionNotFound),
                       "RemoveNode: code");
        MAT_FUZZ_CHECK(factory_->GetNodeCount() == count - (removable ? 1 : 0),
                       "RemoveNode: count");
        break;
      }
      case 8:
        result = Replace(count);
        break;
      case 9: {
        const size_t index = bytes_.Choose(count + 2);
        const IGraphNode* node = nullptr;
        result = factory_->GetNode(index, &node);
        MAT_FUZZ_CHECK(
            (result == ConnectionOk) == (index < count) && (node != nullptr) == (index < count),
            "GetNode: code");
        break;
      }
      case 10:
      case 11:
        result = Connect(before);
        break;
      case 12: {
        const IGraphNode* node = Node();
        const size_t index = bytes_.Choose(8);
        factory_->SetInputDefault(node, index, DefaultValue());
        return;
      }
      default:
        if (library_->GetGraphCount() + 1 >= maxGraphs) return;
        Finish();
        StartFactory();
        return;
    }
    if (result != ConnectionOk) {
      MAT_FUZZ_CHECK(describe(*factory_) == before, "a refused edit changed the graph");
    }
  }

  ConnectionResult Replace(size_t count) {
    const size_t index = bytes_.Choose(count + 2);
    const auto nodeClass = Class();
    const bool allowChange = bytes_.Next() % 2 == 1;
    const IGraphNode* old = nullptr;
    factory_->GetNode(index, &old);
    const bool same =
        old != nullptr && identicalSignatures(old->GetNodeClass().get(), nodeClass.get());
    const IGraphNode* node = nullptr;
    const ConnectionResult result =
        factory_->ReplaceNode(index, nodeClass, allowChange, Name(), &node);
    if (index < 2 || index >= count) {
      MAT_FUZZ_CHECK(result == ConnectionNotFound, "ReplaceNode: code for a bad index");
    } else if (!nodeClass) {
      MAT_FUZZ_CHECK(result == ConnectionInvalidNodes, "ReplaceNode: code for no class");
    } else {
      MAT_FUZZ_CHECK(result == (same || allowChange ? ConnectionOk : ConnectionTypeMismatch),
                     "ReplaceNode: code");
    }
    if (result != ConnectionOk) {
      MAT_FUZZ_CHECK(node == nullptr, "ReplaceNode: a refused node was handed out");
      return result;
    }
    // The same signature keeps the place; another one goes last.
    const IGraphNode* placed = nullptr;
    factory_->GetNode(same ? index : count - 1, &placed);
    MAT_FUZZ_CHECK(factory_->GetNodeCount() == count && placed == node,
                   "ReplaceNode: the new node is not where it belongs");
    return result;
  }

  ConnectionResult Connect(const std::string& before) {
    const IGraphNode* source = Node();
    const IGraphNode* target = Node();
    const char* output = ParameterName(source, true);
    const char* input = ParameterName(target, false);
    try {
      const ConnectionResult result = factory_->Connect(source, output, target, input);
      MAT_FUZZ_CHECK(result == ConnectionOk || result == ConnectionNotFound ||
                         result == ConnectionTypeMismatch || result == ConnectionInvalidNodes,
                     "Connect: code");
      if (source == nullptr || target == nullptr || source == target) {
        MAT_FUZZ_CHECK(result == ConnectionInvalidNodes, "Connect: code for bad nodes");
      }
      return result;
    } catch (const InvalidDataAccess& error) {
      MAT_FUZZ_CHECK(std::strcmp(error.what(), "Index out of Range: Node not present") == 0,
                     error.what());
      MAT_FUZZ_CHECK(describe(*factory_) == before, "a throwing Connect changed the graph");
      return ConnectionInvalidNodes;
    }
  }

  const World& world_;
  ByteReader& bytes_;
  LibraryPtr library_;
  FactoryPtr other_;
  FactoryPtr factory_;
  std::vector<ValuePtr> values_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ByteReader bytes(data, size);
  Session(world(), bytes).Run();
  return 0;
}
