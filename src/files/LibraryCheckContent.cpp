// The half of a library check that looks inside loaded items: what they refer to and what
// their nodes connect. Each JSON item is paired with the object the loader built from it,
// so that a finding says what the loader actually did, including what an item could not
// see because it stood too early in the file.
#include <map>
#include <vector>

#include "core/UUIDText.h"
#include "files/LibraryCheckItems.h"
#include "mat/Functions.h"
#include "mat/IGraph.h"
#include "mat/IGraphLibrary.h"
#include "mat/IGraphNode.h"
#include "mat/INodeClass.h"
#include "mat/IParameter.h"
#include "mat/ISemantic.h"
#include "mat/IType.h"
#include "mat/IValue.h"

namespace mat {
namespace {

const picojson::value* memberOf(const picojson::object& object, const std::string& key) {
  const auto found = object.find(key);
  return found == object.end() ? nullptr : &found->second;
}

const std::string* stringMember(const picojson::object& object, const std::string& key) {
  const picojson::value* value = memberOf(object, key);
  return value != nullptr && value->is<std::string>() ? &value->get<std::string>() : nullptr;
}

const picojson::array* arrayMember(const picojson::object& object, const std::string& key) {
  const picojson::value* value = memberOf(object, key);
  return value != nullptr && value->is<picojson::array>() ? &value->get<picojson::array>()
                                                          : nullptr;
}

const picojson::object* asObject(const picojson::value& value) {
  return value.is<picojson::object>() ? &value.get<picojson::object>() : nullptr;
}

std::string typeName(const IType* type) {
  if (type == nullptr) return "no type";
  return "type " + displayName(type->GetName(), type->GetUUID());
}

std::string nodeName(const IGraphNode& node) {
  return "node " + displayName(node.GetName(), node.GetUUID());
}

class ContentChecker {
 public:
  ContentChecker(const ContentItem& item, const IGraphLibrary& library, FindingList& findings)
      : item_(item), library_(library), findings_(findings) {}

  void CheckType(const IType& type) {
    if (const picojson::value* value = memberOf(*item_.object, "default")) {
      CheckValue(*value, type.GetDefault(), true, "/default", "The default value");
    }
  }

  void CheckSemantic(const ISemantic& semantic) {
    const std::string* text = stringMember(*item_.object, "type");
    if (text == nullptr) return;
    const UUID uuid = ReadUUID(*text, "/type", "the semantic has no type");
    if (semantic.GetType() == nullptr && uuid != UUID{}) {
      Unresolved("/type", "type", uuid, "of the semantic", library_.FindType(uuid, true));
    }
  }

  void CheckParameters(const INodeClass& nodeClass) {
    CheckParameterList(nodeClass, "input", "input", false);
    CheckParameterList(nodeClass, "output", "output", true);
  }

  void CheckGraph(const IGraph& graph) {
    CheckParameters(graph);
    for (size_t i = 0; i < graph.GetNodeCount(); ++i) nodeIndex_[graph.GetNode(i)->GetUUID()] = i;
    if (const picojson::array* nodes = arrayMember(*item_.object, "nodes")) {
      for (size_t k = 0; k < nodes->size() && k + 2 < graph.GetNodeCount(); ++k) {
        if (const picojson::object* node = asObject((*nodes)[k])) {
          CheckNode(graph, *node, *graph.GetNode(k + 2), "/nodes" + pointerStep(k));
        }
      }
    }
    CheckGraphOutputs(graph);
    CheckCycles(graph);
  }

 private:
  // The UUID that `text` names; MG209 when it names none.
  UUID ReadUUID(const std::string& text, const std::string& path, const std::string& consequence) {
    UUID uuid;
    if (!makeUUID(text.c_str(), uuid)) {
      findings_.Warn("MG209", path, "\"" + text + "\" is not a UUID; " + consequence);
    }
    return uuid;
  }

  // MG201 for a reference to a "type" or a "semantic". `nowFound` tells whether the whole
  // library finds the object, which means the item stood before it in the file and was
  // read too early to see it.
  void Unresolved(const std::string& path, const char* kind, const UUID& uuid,
                  const std::string& place, bool nowFound) {
    std::string message = kind;
    message[0] = static_cast<char>(message[0] - 'a' + 'A');
    message += " " + uuidText(uuid) + " " + place +
               (nowFound ? " is not found when the item is read: it stands later in the file"
                         : " is found neither in the library nor in its parents");
    findings_.WarnUnresolved(path, std::move(message), kind, uuid);
  }

  // Semantic elements of a value object that name no semantic. `loaded` is the value the
  // loader built, when `fromLoad`; otherwise the whole library decides, as it did for
  // values read after every item existed.
  void CheckValue(const picojson::value& valueObject, const IValue* loaded, bool fromLoad,
                  const std::string& path, const std::string& place) {
    const picojson::object* object = asObject(valueObject);
    if (object == nullptr) return;
    const std::string* component = stringMember(*object, "component");
    const picojson::value* value = memberOf(*object, "value");
    if (component == nullptr || *component != "semantic" || value == nullptr) return;
    const bool isArray = value->is<picojson::array>();
    const picojson::array single{*value};
    const picojson::array& elements = isArray ? value->get<picojson::array>() : single;
    for (size_t i = 0; i < elements.size(); ++i) {
      if (!elements[i].is<std::string>()) continue;
      UUID uuid;
      if (!makeUUID(elements[i].get<std::string>().c_str(), uuid) || uuid == UUID{}) continue;
      const bool nowFound = library_.FindSemantic(uuid, true) != nullptr;
      const bool found = fromLoad ? loaded != nullptr && i < loaded->GetCount() &&
                                        loaded->GetValueType() == ValueType::Semantic &&
                                        loaded->GetSemantic(i) != nullptr
                                  : nowFound;
      if (found) continue;
      const std::string elementPath = path + "/value" + (isArray ? pointerStep(i) : "");
      Unresolved(elementPath, "semantic", uuid, "in " + place, nowFound);
    }
  }

  void CheckParameterList(const INodeClass& nodeClass, const char* member, const char* side,
                          bool outputs) {
    const picojson::array* entries = arrayMember(*item_.object, member);
    if (entries == nullptr) return;
    const size_t count = outputs ? nodeClass.GetOutputCount() : nodeClass.GetInputCount();
    for (size_t k = 0; k < entries->size() && k < count; ++k) {
      const picojson::object* entry = asObject((*entries)[k]);
      if (entry == nullptr) continue;
      const IParameter& parameter = outputs ? *nodeClass.GetOutput(k) : *nodeClass.GetInput(k);
      const std::string path = std::string("/") + member + pointerStep(k);
      const std::string place = std::string(side) + " \"" + parameter.GetName() + "\"";
      if (const std::string* text = stringMember(*entry, "type")) {
        const UUID uuid = ReadUUID(*text, path + "/type", place + " has no type");
        if (parameter.GetType() == nullptr && uuid != UUID{}) {
          Unresolved(path + "/type", "type", uuid, "of " + place, library_.FindType(uuid, true));
        }
      }
      if (const picojson::value* value = memberOf(*entry, "default")) {
        CheckValue(*value, parameter.GetDefault(), true, path + "/default",
                   "the default of " + place);
      }
    }
  }

  void CheckNode(const IGraph& graph, const picojson::object& object, const IGraphNode& node,
                 const std::string& path) {
    if (const std::string* text = stringMember(object, "uuid")) {
      ReadUUID(*text, path + "/uuid", "the node reads as having the nil UUID");
    }
    const auto nodeClass = node.GetNodeClass();
    const picojson::value* input = memberOf(object, "input");
    if (input == nullptr || !nodeClass) return;
    const std::string inputPath = path + "/input";
    // One input entry: its connection at `fromPath`, its default, both optional.
    auto checkEntry = [&](const std::string& name, const picojson::value* from,
                          const std::string& fromPath, const picojson::value* defaultValue,
                          const std::string& entryPath) {
      size_t index = 0;
      const std::string target = "Input \"" + name + "\" of " + nodeName(node);
      if (!nodeClass->FindInput(name.c_str(), &index)) {
        findings_.Warn("MG204", entryPath,
                       target + ": its class " +
                           displayName(nodeClass->GetName(), nodeClass->GetUUID()) +
                           " has no such input; the entry is not read");
        return;
      }
      const IType* expected = nodeClass->GetInput(index)->GetType();
      if (from != nullptr) CheckConnection(graph, *from, expected, target, fromPath);
      if (defaultValue != nullptr) {
        CheckValue(*defaultValue, nullptr, false, entryPath + "/default",
                   "the default of " + target);
      }
    };
    if (input->is<picojson::array>()) {
      const picojson::array& entries = input->get<picojson::array>();
      for (size_t k = 0; k < entries.size(); ++k) {
        const picojson::object* entry = asObject(entries[k]);
        const std::string* name = entry != nullptr ? stringMember(*entry, "name") : nullptr;
        if (name == nullptr) continue;
        const std::string entryPath = inputPath + pointerStep(k);
        checkEntry(*name, memberOf(*entry, "from"), entryPath + "/from",
                   memberOf(*entry, "default"), entryPath);
      }
    } else if (input->is<picojson::object>()) {
      // The object form maps input names straight to "from" pairs.
      for (const auto& [name, from] : input->get<picojson::object>()) {
        const std::string entryPath = inputPath + pointerStep(name);
        checkEntry(name, &from, entryPath, nullptr, entryPath);
      }
    }
  }

  // MG202 and MG203: a "from" pair that the loader does not connect.
  void CheckConnection(const IGraph& graph, const picojson::value& from, const IType* expected,
                       const std::string& target, const std::string& path) {
    if (!from.is<picojson::array>()) return;
    const picojson::array& pair = from.get<picojson::array>();
    if (pair.size() != 2 || !pair[0].is<std::string>() || !pair[1].is<std::string>()) return;
    const UUID source =
        ReadUUID(pair[0].get<std::string>(), path + "/0", "it reads as the graph's input node");
    const std::string& outputName = pair[1].get<std::string>();
    const IParameter* output = nullptr;
    std::string sourceText;
    size_t index = 0;
    if (source == UUID{}) {
      sourceText = "graph input \"" + outputName + "\"";
      if (graph.FindInput(outputName.c_str(), &index)) output = graph.GetInput(index);
    } else {
      const auto node = nodeIndex_.find(source);
      if (node == nodeIndex_.end()) return;  // the loader refuses such a file
      const IGraphNode& sourceNode = *graph.GetNode(node->second);
      const auto sourceClass = sourceNode.GetNodeClass();
      sourceText = "output \"" + outputName + "\" of " + nodeName(sourceNode);
      if (sourceClass && sourceClass->FindOutput(outputName.c_str(), &index)) {
        output = sourceClass->GetOutput(index);
      }
    }
    if (output == nullptr) {
      findings_.Warn("MG202", path + "/1",
                     target + " is fed from " + sourceText +
                         ", which does not exist; the connection is dropped");
    } else if (output->GetType() != expected) {
      findings_.Warn("MG203", path,
                     target + " takes " + typeName(expected) + " but is fed from " + sourceText +
                         " of " + typeName(output->GetType()) + "; the connection is dropped");
    }
  }

  void CheckGraphOutputs(const IGraph& graph) {
    const picojson::array* entries = arrayMember(*item_.object, "output");
    const IGraphNode& outputNode = *graph.GetNode(graph.GetOutputNodeIndex());
    for (size_t k = 0; k < graph.GetOutputCount(); ++k) {
      const std::string target =
          std::string("Graph output \"") + graph.GetOutput(k)->GetName() + "\"";
      const std::string path = "/output" + pointerStep(k);
      const picojson::object* entry =
          entries != nullptr && k < entries->size() ? asObject((*entries)[k]) : nullptr;
      const picojson::value* from = entry != nullptr ? memberOf(*entry, "from") : nullptr;
      if (from != nullptr) {
        CheckConnection(graph, *from, graph.GetOutput(k)->GetType(), target, path + "/from");
      } else if (!outputNode.GetInputConnection(k, nullptr, nullptr)) {
        findings_.Warn("MG205", path, target + " is fed by nothing");
      }
    }
  }

  // MG212: nodes of one graph that feed one another in a ring. Reported once per graph.
  void CheckCycles(const IGraph& graph) {
    enum class State { Unvisited, OnPath, Done };
    const size_t count = graph.GetNodeCount();
    std::vector<State> states(count, State::Unvisited);
    struct Frame {
      size_t node;
      size_t nextInput;
    };
    for (size_t start = 0; start < count; ++start) {
      if (states[start] != State::Unvisited) continue;
      std::vector<Frame> path{{start, 0}};
      states[start] = State::OnPath;
      while (!path.empty()) {
        Frame& frame = path.back();
        const IGraphNode& node = *graph.GetNode(frame.node);
        const auto nodeClass = node.GetNodeClass();
        size_t source = 0;
        if (!nodeClass || frame.nextInput >= nodeClass->GetInputCount()) {
          states[frame.node] = State::Done;
          path.pop_back();
          continue;
        }
        if (!node.GetInputConnection(frame.nextInput++, &source, nullptr) || source >= count) {
          continue;
        }
        if (states[source] == State::OnPath) {
          ReportCycle(graph, path, source);
          return;
        }
        if (states[source] == State::Unvisited) {
          states[source] = State::OnPath;
          path.push_back({source, 0});
        }
      }
    }
  }

  template <typename Frames>
  void ReportCycle(const IGraph& graph, const Frames& path, size_t first) {
    size_t position = 0;
    while (path[position].node != first) ++position;
    std::string ring;
    for (size_t i = position; i < path.size(); ++i) {
      ring += nodeName(*graph.GetNode(path[i].node)) + " <- ";
    }
    ring += nodeName(*graph.GetNode(first));
    const std::string nodePath = first >= 2 ? "/nodes" + pointerStep(first - 2) : "";
    findings_.Warn("MG212", nodePath, "Nodes feed one another in a ring: " + ring);
  }

  const ContentItem& item_;
  const IGraphLibrary& library_;
  FindingList& findings_;
  std::map<UUID, size_t> nodeIndex_;
};

}  // namespace

void checkItemContent(const ContentItem& item, const IGraphLibrary& library,
                      FindingList& findings) {
  ContentChecker checker(item, library, findings);
  if (item.kind == "type" && item.kindIndex < library.GetTypeCount()) {
    checker.CheckType(*library.GetType(item.kindIndex));
  } else if (item.kind == "semantic" && item.kindIndex < library.GetSemanticCount()) {
    checker.CheckSemantic(*library.GetSemantic(item.kindIndex));
  } else if (item.kind == "nodeclass" && item.kindIndex < library.GetNodeClassCount()) {
    checker.CheckParameters(*library.GetNodeClass(item.kindIndex));
  } else if (item.kind == "graph" && item.kindIndex < library.GetGraphCount()) {
    checker.CheckGraph(*library.GetGraph(item.kindIndex));
  }
}

}  // namespace mat
