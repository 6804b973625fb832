#include "SyntheticLibrary.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "mat/Functions.h"
#include "mat/IGraphLibrary.h"

namespace mat::bench {
namespace {

// Draws everything the generator decides. Ranges are reduced by modulo rather than by the
// standard distributions, whose results differ between standard libraries.
class Random {
 public:
  explicit Random(uint64_t seed) : engine(seed) {}

  // A number in [0, bound); @p bound > 0.
  size_t below(size_t bound) { return static_cast<size_t>(engine() % bound); }
  // A number in [low, high].
  size_t between(size_t low, size_t high) { return low + below(high - low + 1); }
  bool chance(unsigned percent) { return below(100) < percent; }
  // A float in [0, 1) with 24 random bits: most need nine digits to be written exactly.
  float unitFloat() { return static_cast<float>(engine() >> 40) / 16777216.0f; }

  // The text of a random version 4 UUID.
  std::string uuid() {
    static constexpr char digits[] = "0123456789abcdef";
    const uint64_t high = (engine() & 0xffffffffffff0fffULL) | 0x0000000000004000ULL;
    const uint64_t low = (engine() & 0x3fffffffffffffffULL) | 0x8000000000000000ULL;
    std::string text;
    text.reserve(36);
    for (int nibble = 0; nibble < 32; ++nibble) {
      if (nibble == 8 || nibble == 12 || nibble == 16 || nibble == 20) text += '-';
      const uint64_t word = nibble < 16 ? high : low;
      text += digits[(word >> (60 - 4 * (nibble % 16))) & 0xf];
    }
    return text;
  }

 private:
  std::mt19937_64 engine;
};

// Builds compact JSON text; it places the commas and colons.
class JsonBuilder {
 public:
  JsonBuilder& beginObject() { return open('{'); }
  JsonBuilder& endObject() { return close('}'); }
  JsonBuilder& beginArray() { return open('['); }
  JsonBuilder& endArray() { return close(']'); }

  JsonBuilder& key(std::string_view name) {
    separate();
    quote(name);
    text += ':';
    afterKey = true;
    return *this;
  }
  // Only texts without characters that need escapes: the generator makes all of them.
  JsonBuilder& string(std::string_view value) {
    separate();
    quote(value);
    return *this;
  }
  JsonBuilder& integer(long long value) {
    separate();
    text += std::to_string(value);
    return *this;
  }
  // The shortest text that reads back as the same float.
  JsonBuilder& number(float value) {
    separate();
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    text.append(buffer, result.ptr);
    return *this;
  }
  JsonBuilder& boolean(bool value) {
    separate();
    text += value ? "true" : "false";
    return *this;
  }

  // Lets the caller splice text that another builder made as one complete value.
  JsonBuilder& raw(std::string_view value) {
    separate();
    text += value;
    return *this;
  }

  std::string take() { return std::move(text); }

 private:
  JsonBuilder& open(char bracket) {
    separate();
    text += bracket;
    containerHasElement.push_back(false);
    return *this;
  }
  JsonBuilder& close(char bracket) {
    text += bracket;
    containerHasElement.pop_back();
    return *this;
  }
  void separate() {
    if (afterKey) {
      afterKey = false;
      return;
    }
    if (containerHasElement.empty()) return;
    if (containerHasElement.back()) text += ',';
    containerHasElement.back() = true;
  }
  void quote(std::string_view value) {
    text += '"';
    text += value;
    text += '"';
  }

  std::string text;
  std::vector<bool> containerHasElement;
  bool afterKey = false;
};

// The element kind that a type's defaults carry.
enum class ValueKind { Float, Int, Bool, String, UUID, Semantic };

// Types are given kinds in a fixed rotation, so the first, most used types mix them.
constexpr std::array<ValueKind, 10> kindRotation = {
    ValueKind::Float, ValueKind::Float,  ValueKind::Float, ValueKind::Int,      ValueKind::Bool,
    ValueKind::Float, ValueKind::String, ValueKind::Float, ValueKind::Semantic, ValueKind::UUID};

constexpr std::array<const char*, 10> inputNames = {
    "base", "color", "roughness", "normal", "weight", "scale", "offset", "amount", "mask", "uv"};
constexpr std::array<const char*, 3> outputNames = {"out", "result", "alpha"};

struct Port {
  std::string name;
  size_t type;  // index among the base library's types
};

// What a node needs of its class: a node class of the base library or an earlier graph.
struct Signature {
  std::string uuid;
  std::vector<Port> inputs;
  std::vector<Port> outputs;
};

struct BaseModel {
  std::vector<std::string> typeUUIDs;
  std::vector<ValueKind> typeKinds;
  std::vector<std::string> semanticUUIDs;
  std::vector<Signature> nodeClasses;
};

// A name made of a prefix and a number, the number padded to four digits when
// @p padded.
std::string numbered(const char* prefix, size_t number, bool padded = true) {
  std::string digits = std::to_string(number);
  if (padded && digits.size() < 4) digits.insert(0, 4 - digits.size(), '0');
  std::string name = prefix;
  name += digits;
  return name;
}

// Three quarters of all ports use the first dozen types, so that outputs and inputs of the
// same type meet often enough for dense graphs.
size_t pickType(Random& random, size_t typeCount) {
  const size_t common = std::min<size_t>(12, typeCount);
  return random.chance(75) ? random.below(common) : random.below(typeCount);
}

void appendValue(JsonBuilder& json, ValueKind kind, Random& random, const BaseModel& base) {
  static constexpr const char* keywords[] = {"float", "int", "bool", "string", "uuid", "semantic"};
  json.beginObject().key("component").string(keywords[static_cast<int>(kind)]).key("value");
  switch (kind) {
    case ValueKind::Float: {
      const size_t count = random.chance(50) ? 1 : 3;
      if (count > 1) json.beginArray();
      for (size_t i = 0; i < count; ++i) {
        // Half are short, as hand-typed values are; half need every digit of a float.
        json.number(random.chance(50) ? static_cast<float>(random.below(33)) / 16.0f
                                      : random.unitFloat());
      }
      if (count > 1) json.endArray();
      break;
    }
    case ValueKind::Int:
      json.integer(static_cast<long long>(random.below(1101)) - 100);
      break;
    case ValueKind::Bool:
      json.boolean(random.chance(50));
      break;
    case ValueKind::String:
      json.string(numbered("text", random.below(10000)));
      break;
    case ValueKind::UUID:
      json.string(random.uuid());
      break;
    case ValueKind::Semantic:
      json.string(base.semanticUUIDs[random.below(base.semanticUUIDs.size())]);
      break;
  }
  json.endObject();
}

void appendPorts(JsonBuilder& json, const std::vector<Port>& ports, unsigned defaultPercent,
                 Random& random, const BaseModel& base) {
  json.beginArray();
  for (const Port& port : ports) {
    json.beginObject().key("name").string(port.name).key("type").string(base.typeUUIDs[port.type]);
    if (random.chance(defaultPercent)) {
      json.key("default");
      appendValue(json, base.typeKinds[port.type], random, base);
    }
    json.endObject();
  }
  json.endArray();
}

std::vector<Port> makeInputs(size_t count, Random& random, size_t typeCount) {
  const size_t firstName = random.below(inputNames.size());
  std::vector<Port> ports;
  for (size_t i = 0; i < count; ++i) {
    ports.push_back({inputNames[(firstName + i) % inputNames.size()], pickType(random, typeCount)});
  }
  return ports;
}

std::vector<Port> makeOutputs(size_t count, Random& random, size_t typeCount) {
  std::vector<Port> ports;
  for (size_t i = 0; i < count; ++i) ports.push_back({outputNames[i], pickType(random, typeCount)});
  return ports;
}

std::string makeBaseText(const SyntheticOptions& options, Random& random, BaseModel& base) {
  JsonBuilder json;
  json.beginArray().beginObject().key("datasources").beginArray().endArray();
  json.key("fileversion").integer(1).endObject().beginArray();

  for (size_t i = 0; i < options.typeCount; ++i) {
    base.typeUUIDs.push_back(random.uuid());
    base.typeKinds.push_back(kindRotation[i % kindRotation.size()]);
  }
  for (size_t i = 0; i < options.semanticCount; ++i) base.semanticUUIDs.push_back(random.uuid());

  for (size_t i = 0; i < options.typeCount; ++i) {
    json.beginObject().key("content").string("type").key("uuid").string(base.typeUUIDs[i]);
    json.key("desc").string(numbered("Type", i));
    // Types stand before semantics in a saved file, so a type's default never names one.
    if (base.typeKinds[i] != ValueKind::Semantic && random.chance(50)) {
      json.key("default");
      appendValue(json, base.typeKinds[i], random, base);
    }
    json.endObject();
  }
  for (size_t i = 0; i < options.semanticCount; ++i) {
    json.beginObject().key("content").string("semantic").key("uuid").string(base.semanticUUIDs[i]);
    json.key("desc").string(numbered("Semantic", i));
    json.key("type").string(base.typeUUIDs[random.below(options.typeCount)]).endObject();
  }
  for (size_t i = 0; i < options.nodeClassCount; ++i) {
    Signature nodeClass{random.uuid(), makeInputs(random.between(1, 6), random, options.typeCount),
                        makeOutputs(random.between(1, 3), random, options.typeCount)};
    json.beginObject().key("content").string("nodeclass").key("uuid").string(nodeClass.uuid);
    json.key("desc").string(numbered("Node", i));
    json.key("input");
    appendPorts(json, nodeClass.inputs, 30, random, base);
    json.key("output");
    appendPorts(json, nodeClass.outputs, 10, random, base);
    json.endObject();
    base.nodeClasses.push_back(std::move(nodeClass));
  }
  json.endArray().endArray();
  return json.take();
}

struct GraphModel {
  Signature signature;
  unsigned level;
};

// A place where a connection may start: a node's output, or a graph input when `node` is
// the empty text.
struct Source {
  std::string node;
  std::string output;
};

// Writes the graphs one after the other; each may nest those before it.
class GraphWriter {
 public:
  GraphWriter(const SyntheticOptions& options, const BaseModel& base, Random& random,
              SyntheticStats& stats)
      : options(options),
        base(base),
        random(random),
        stats(stats),
        graphsByLevel(options.maxNestingLevel + 1) {}

  void append(JsonBuilder& json, size_t index) {
    GraphModel graph{{random.uuid(), {}, {}}, levelOf(index)};
    const size_t inputCount = random.between(1, 4);
    for (size_t i = 0; i < inputCount; ++i) {
      graph.signature.inputs.push_back(
          {numbered("input", i, false), pickType(random, options.typeCount)});
    }
    nodes.clear();
    nodeSources.assign(options.typeCount, {});
    graphInputSources.assign(options.typeCount, {});
    for (const Port& input : graph.signature.inputs) {
      graphInputSources[input.type].push_back({"", input.name});
    }
    JsonBuilder nodesJson;
    appendNodes(nodesJson, graph.level);
    JsonBuilder outputsJson;
    graph.signature.outputs = appendOutputs(outputsJson, graph.signature.inputs);

    json.beginObject().key("content").string("graph").key("uuid").string(graph.signature.uuid);
    json.key("desc").string(numbered("Graph", index));
    json.key("input");
    appendPorts(json, graph.signature.inputs, 20, random, base);
    json.key("output").raw(outputsJson.take());
    json.key("nodes").raw(nodesJson.take());
    json.endObject();

    stats.graphs++;
    stats.graphLevels.push_back(graph.level);
    graphsByLevel[graph.level].push_back(graphs.size());
    graphs.push_back(std::move(graph));
  }

 private:
  struct Node {
    std::string uuid;
    const Signature* nodeClass;
  };

  // The first graphs climb through every level, so the deepest nesting always exists;
  // later ones lean towards the lower levels.
  unsigned levelOf(size_t index) {
    const unsigned top = options.maxNestingLevel;
    if (index <= top) return static_cast<unsigned>(index);
    return static_cast<unsigned>(std::min(random.below(top + 1), random.below(top + 1)));
  }

  // The class of each node of a graph of @p level: base node classes, and in a graph above
  // level 0 up to maxNestedNodesPerGraph earlier graphs, one of them of the level just below.
  std::vector<const Signature*> chooseClasses(size_t nodeCount, unsigned level) {
    std::vector<const Signature*> classes(nodeCount);
    for (const Signature*& nodeClass : classes) {
      nodeClass = &base.nodeClasses[random.below(base.nodeClasses.size())];
    }
    if (level == 0) return classes;
    const size_t nestedCount =
        random.between(1, std::max<size_t>(1, options.maxNestedNodesPerGraph));
    // Distinct places, so that no later choice replaces the graph of the level below.
    std::vector<size_t> places;
    for (size_t i = 0; i < nestedCount && places.size() < nodeCount; ++i) {
      size_t place = random.below(nodeCount);
      while (std::find(places.begin(), places.end(), place) != places.end()) {
        place = (place + 1) % nodeCount;
      }
      places.push_back(place);
      const unsigned nestedLevel = i == 0 ? level - 1 : static_cast<unsigned>(random.below(level));
      const std::vector<size_t>& candidates = graphsByLevel[nestedLevel];
      classes[place] = &graphs[candidates[random.below(candidates.size())]].signature;
    }
    stats.nestedNodes += places.size();
    return classes;
  }

  void appendNodes(JsonBuilder& json, unsigned level) {
    const size_t nodeCount = random.between(options.minNodesPerGraph, options.maxNodesPerGraph);
    const std::vector<const Signature*> classes = chooseClasses(nodeCount, level);
    json.beginArray();
    for (size_t i = 0; i < nodeCount; ++i) {
      Node node{random.uuid(), classes[i]};
      json.beginObject().key("uuid").string(node.uuid).key("node").string(node.nodeClass->uuid);
      if (random.chance(60)) json.key("desc").string(numbered("n", i, false));
      if (random.chance(90)) {
        json.key("editorpos").beginArray();
        json.number(static_cast<float>(i % 20) * 180.0f);
        json.number(static_cast<float>(i / 20) * 90.5f);
        json.endArray();
      }
      appendNodeInputs(json, *node.nodeClass);
      json.endObject();
      for (const Port& output : node.nodeClass->outputs) {
        nodeSources[output.type].push_back({node.uuid, output.name});
      }
      nodes.push_back(std::move(node));
    }
    json.endArray();
    stats.nodes += nodeCount;
  }

  // Connects most inputs to a recent output of the same type, some to a graph input, and
  // gives a default to a share of the rest (and to a few connected ones).
  void appendNodeInputs(JsonBuilder& json, const Signature& nodeClass) {
    JsonBuilder entries;
    entries.beginArray();
    size_t entryCount = 0;
    for (const Port& input : nodeClass.inputs) {
      const Source* source = chooseSource(input.type);
      const bool withDefault = source ? random.chance(5) : random.chance(35);
      if (!source && !withDefault) continue;
      entries.beginObject().key("name").string(input.name);
      if (source) {
        entries.key("from").beginArray().string(source->node).string(source->output).endArray();
        stats.connections++;
        if (source->node.empty()) stats.graphInputConnections++;
      }
      if (withDefault) {
        entries.key("default");
        appendValue(entries, base.typeKinds[input.type], random, base);
        stats.nodeInputDefaults++;
      }
      entries.endObject();
      entryCount++;
    }
    entries.endArray();
    if (entryCount > 0) json.key("input").raw(entries.take());
  }

  const Source* chooseSource(size_t type) {
    const std::vector<Source>& fromGraph = graphInputSources[type];
    const std::vector<Source>& fromNodes = nodeSources[type];
    if (!fromGraph.empty() && random.chance(15)) return &fromGraph[random.below(fromGraph.size())];
    if (fromNodes.empty() || !random.chance(75)) return nullptr;
    const size_t recent = std::min<size_t>(6, fromNodes.size());
    return &fromNodes[fromNodes.size() - 1 - random.below(recent)];
  }

  // One to three outputs, fed mostly by an output of one of the last nodes, sometimes
  // straight by a graph input, rarely by nothing.
  std::vector<Port> appendOutputs(JsonBuilder& json, const std::vector<Port>& graphInputs) {
    const size_t count = random.between(1, 3);
    std::vector<Port> outputs;
    json.beginArray();
    for (size_t i = 0; i < count; ++i) {
      Port output{numbered("output", i, false), 0};
      std::string sourceNode;
      std::string sourceOutput;
      const size_t roll = random.below(100);
      if (roll < 10) {
        const Port& input = graphInputs[random.below(graphInputs.size())];
        output.type = input.type;
        sourceOutput = input.name;
      } else if (roll < 95) {
        const size_t recent = std::min<size_t>(10, nodes.size());
        const Node& node = nodes[nodes.size() - 1 - random.below(recent)];
        const Port& port = node.nodeClass->outputs[random.below(node.nodeClass->outputs.size())];
        output.type = port.type;
        sourceNode = node.uuid;
        sourceOutput = port.name;
      } else {
        output.type = pickType(random, options.typeCount);
      }
      json.beginObject().key("name").string(output.name);
      json.key("type").string(base.typeUUIDs[output.type]);
      if (!sourceOutput.empty()) {
        json.key("from").beginArray().string(sourceNode).string(sourceOutput).endArray();
        stats.connections++;
        if (sourceNode.empty()) stats.graphInputConnections++;
      }
      if (random.chance(10)) {
        json.key("default");
        appendValue(json, base.typeKinds[output.type], random, base);
      }
      json.endObject();
      outputs.push_back(std::move(output));
    }
    json.endArray();
    return outputs;
  }

  const SyntheticOptions& options;
  const BaseModel& base;
  Random& random;
  SyntheticStats& stats;
  std::vector<GraphModel> graphs;
  std::vector<std::vector<size_t>> graphsByLevel;  // indices into `graphs`
  // The graph being written.
  std::vector<Node> nodes;
  std::vector<std::vector<Source>> nodeSources;        // by type
  std::vector<std::vector<Source>> graphInputSources;  // by type
};

std::string makeGraphText(const SyntheticOptions& options, const BaseModel& base, Random& random,
                          SyntheticStats& stats) {
  JsonBuilder json;
  json.beginArray().beginObject().key("datasources").beginArray().endArray();
  json.key("fileversion").integer(1).endObject().beginArray();
  GraphWriter graphs(options, base, random, stats);
  for (size_t i = 0; i < options.graphCount; ++i) graphs.append(json, i);
  json.endArray().endArray();
  return json.take();
}

struct LibraryRelease {
  void operator()(const IGraphLibrary* library) const { releaseGraphLibrary(library); }
};
using LibraryHandle = std::unique_ptr<const IGraphLibrary, LibraryRelease>;

LibraryHandle loadOrThrow(const std::string& text, const IGraphLibrary* parent, const char* what) {
  LibraryHandle library(loadGraphLibrary(text.c_str(), text.size(), parent, what));
  if (!library) {
    throw std::runtime_error(std::string("The library refused the generated ") + what +
                             " (its reason is on the wide error stream)");
  }
  return library;
}

std::string savedText(const IGraphLibrary& library) {
  std::ostringstream out;
  saveGraphLibrary(&library, out);
  return std::move(out).str();
}

}  // namespace

SyntheticLibrary makeSyntheticLibrary(const SyntheticOptions& options) {
  if (options.typeCount == 0 || options.semanticCount == 0 || options.nodeClassCount == 0 ||
      options.minNodesPerGraph == 0 || options.minNodesPerGraph > options.maxNodesPerGraph) {
    throw std::invalid_argument(
        "Synthetic library: counts must be positive and minNodesPerGraph <= maxNodesPerGraph");
  }
  Random random(options.seed);
  BaseModel base;
  SyntheticLibrary result;
  const LibraryHandle baseLibrary =
      loadOrThrow(makeBaseText(options, random, base), nullptr, "base library");
  result.baseText = savedText(*baseLibrary);
  const LibraryHandle graphLibrary = loadOrThrow(makeGraphText(options, base, random, result.stats),
                                                 baseLibrary.get(), "graph library");
  result.graphText = savedText(*graphLibrary);
  return result;
}

}  // namespace mat::bench
