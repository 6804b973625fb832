// matgraph diff OLD NEW: what changed between two versions of a library for the graphs
// and hosts that use it. Objects are matched by UUID. Removing an object, or removing,
// renaming or retyping an input or output of a node class or graph, breaks its users:
// such a change is marked "incompatible" and the exit status is 1. Added objects, added
// inputs and outputs, renamed objects and changed defaults are reported and keep 0.
#include <iostream>
#include <map>
#include <memory>
#include <set>

#include "Commands.h"
#include "Inputs.h"
#include "Text.h"
#include "mat/IGraph.h"
#include "mat/INodeClass.h"
#include "mat/IParameter.h"
#include "mat/ISemantic.h"
#include "mat/IType.h"

namespace matgraph {
namespace {

struct DiffOptions {
  std::string oldFile;
  std::string newFile;
  std::vector<std::string> parents;
};

class ChangeList {
 public:
  void Add(const std::string& line, bool incompatible) {
    std::cout << line << (incompatible ? "  [incompatible]" : "") << '\n';
    ++changes_;
    incompatible_ += incompatible ? 1 : 0;
  }
  size_t Changes() const { return changes_; }
  size_t Incompatible() const { return incompatible_; }

 private:
  size_t changes_ = 0;
  size_t incompatible_ = 0;
};

std::string typeUUIDText(const mat::IType* type) {
  return type != nullptr ? uuidString(type->GetUUID()) : std::string();
}

bool sameType(const mat::IType* a, const mat::IType* b) {
  return typeUUIDText(a) == typeUUIDText(b);
}

// One side of a signature: the inputs or the outputs.
struct Side {
  const char* noun;  // "input" or "output"
  size_t (mat::INodeClass::*count)() const;
  const mat::IParameter* (mat::INodeClass::*at)(size_t) const;
};
constexpr Side inputSide{"input", &mat::INodeClass::GetInputCount, &mat::INodeClass::GetInput};
constexpr Side outputSide{"output", &mat::INodeClass::GetOutputCount, &mat::INodeClass::GetOutput};

std::map<std::string, const mat::IParameter*> parametersByName(const mat::INodeClass& nodeClass,
                                                               const Side& side) {
  std::map<std::string, const mat::IParameter*> byName;
  for (size_t i = 0; i < (nodeClass.*side.count)(); ++i) {
    const mat::IParameter* parameter = (nodeClass.*side.at)(i);
    byName.emplace(parameter->GetName(), parameter);
  }
  return byName;
}

// The changes of one side of a signature. A parameter that disappears while one of the same
// type appears at its position is reported as renamed.
void compareSide(const std::string& owner, const mat::INodeClass& before,
                 const mat::INodeClass& after, const Side& side, ChangeList& changes) {
  const auto oldByName = parametersByName(before, side);
  const auto newByName = parametersByName(after, side);
  std::set<std::string> renamedTo;
  for (size_t i = 0; i < (before.*side.count)(); ++i) {
    const mat::IParameter& parameter = *(before.*side.at)(i);
    const std::string name = parameter.GetName();
    const auto kept = newByName.find(name);
    if (kept == newByName.end()) {
      const mat::IParameter* atPosition = i < (after.*side.count)() ? (after.*side.at)(i) : nullptr;
      if (atPosition != nullptr && oldByName.count(atPosition->GetName()) == 0 &&
          sameType(atPosition->GetType(), parameter.GetType())) {
        renamedTo.insert(atPosition->GetName());
        changes.Add(owner + ": " + side.noun + " \"" + name + "\" renamed to \"" +
                        atPosition->GetName() + "\"",
                    true);
      } else {
        changes.Add(owner + ": " + side.noun + " \"" + name + "\" removed", true);
      }
      continue;
    }
    const mat::IParameter& now = *kept->second;
    if (!sameType(parameter.GetType(), now.GetType())) {
      changes.Add(owner + ": " + side.noun + " \"" + name + "\" retyped from " +
                      typeText(parameter.GetType()) + " to " + typeText(now.GetType()),
                  true);
    }
    if (!sameValue(parameter.GetDefault(), now.GetDefault())) {
      changes.Add(owner + ": default of " + side.noun + " \"" + name + "\" changed from " +
                      valueText(parameter.GetDefault()) + " to " + valueText(now.GetDefault()),
                  false);
    }
  }
  for (size_t i = 0; i < (after.*side.count)(); ++i) {
    const std::string name = (after.*side.at)(i)->GetName();
    if (oldByName.count(name) == 0 && renamedTo.count(name) == 0) {
      changes.Add(owner + ": " + side.noun + " \"" + name + "\" added", false);
    }
  }
}

// The objects of one kind: added, removed, renamed, and what `compare` finds in the
// objects that stayed.
template <typename ObjectAt, typename Compare>
void compareKind(const char* noun, size_t oldCount, ObjectAt oldAt, size_t newCount, ObjectAt newAt,
                 Compare compare, ChangeList& changes) {
  using Object = decltype(oldAt(0));
  std::map<mat::UUID, Object> oldByUUID;
  for (size_t i = 0; i < oldCount; ++i) oldByUUID[oldAt(i)->GetUUID()] = oldAt(i);
  std::map<mat::UUID, Object> newByUUID;
  for (size_t i = 0; i < newCount; ++i) newByUUID[newAt(i)->GetUUID()] = newAt(i);
  for (size_t i = 0; i < oldCount; ++i) {
    const mat::UUID& uuid = oldAt(i)->GetUUID();
    if (newByUUID.count(uuid) == 0 && oldByUUID[uuid] == oldAt(i)) {
      changes.Add(std::string(noun) + " " + quotedName(oldAt(i)->GetName(), uuid) + " (" +
                      uuidString(uuid) + ") removed",
                  true);
    }
  }
  for (size_t i = 0; i < newCount; ++i) {
    const Object object = newAt(i);
    const mat::UUID& uuid = object->GetUUID();
    if (newByUUID[uuid] != object) continue;  // a later item with the same UUID counts
    const auto before = oldByUUID.find(uuid);
    const std::string owner = std::string(noun) + " " + quotedName(object->GetName(), uuid);
    if (before == oldByUUID.end()) {
      changes.Add(owner + " (" + uuidString(uuid) + ") added", false);
      continue;
    }
    if (std::string(before->second->GetName()) != object->GetName()) {
      changes.Add(std::string(noun) + " " + quotedName(before->second->GetName(), uuid) +
                      " renamed to " + quotedName(object->GetName(), uuid),
                  false);
    }
    compare(owner, *before->second, *object, changes);
  }
}

void compareLibraries(const mat::IGraphLibrary& before, const mat::IGraphLibrary& after,
                      ChangeList& changes) {
  // compareKind takes one accessor type for both libraries, so each kind has a function
  // that makes the accessor of a library.
  auto typesOf = [](const mat::IGraphLibrary& library) {
    return [&library](size_t i) { return library.GetType(i); };
  };
  compareKind(
      "type", before.GetTypeCount(), typesOf(before), after.GetTypeCount(), typesOf(after),
      [](const std::string& owner, const mat::IType& a, const mat::IType& b, ChangeList& list) {
        if (!sameValue(a.GetDefault(), b.GetDefault())) {
          list.Add(owner + ": default changed from " + valueText(a.GetDefault()) + " to " +
                       valueText(b.GetDefault()),
                   false);
        }
      },
      changes);
  auto semanticsOf = [](const mat::IGraphLibrary& library) {
    return [&library](size_t i) { return library.GetSemantic(i); };
  };
  compareKind(
      "semantic", before.GetSemanticCount(), semanticsOf(before), after.GetSemanticCount(),
      semanticsOf(after),
      [](const std::string& owner, const mat::ISemantic& a, const mat::ISemantic& b,
         ChangeList& list) {
        if (!sameType(a.GetType(), b.GetType())) {
          list.Add(owner + ": type changed from " + typeText(a.GetType()) + " to " +
                       typeText(b.GetType()),
                   true);
        }
      },
      changes);
  auto compareSignatures = [](const std::string& owner, const mat::INodeClass& a,
                              const mat::INodeClass& b, ChangeList& list) {
    compareSide(owner, a, b, inputSide, list);
    compareSide(owner, a, b, outputSide, list);
  };
  auto nodeClassesOf = [](const mat::IGraphLibrary& library) {
    return [&library](size_t i) { return library.GetNodeClass(i); };
  };
  compareKind("node class", before.GetNodeClassCount(), nodeClassesOf(before),
              after.GetNodeClassCount(), nodeClassesOf(after), compareSignatures, changes);
  auto graphsOf = [](const mat::IGraphLibrary& library) {
    return [&library](size_t i) { return library.GetGraph(i); };
  };
  compareKind("graph", before.GetGraphCount(), graphsOf(before), after.GetGraphCount(),
              graphsOf(after), compareSignatures, changes);
}

mat::CheckResult loadForDiff(const std::string& path, const ParentChain& parents) {
  const std::string text = readLibraryFile(path);
  mat::CheckResult result = checkFile(path, text, parents.Libraries());
  if (const mat::Finding* error = firstError(result)) {
    throw ToolError(error->code, path, "cannot be compared: " + error->message);
  }
  return result;
}

int runDiff(const DiffOptions& options) {
  const ParentChain parents(options.parents);
  const mat::CheckResult before = loadForDiff(options.oldFile, parents);
  const mat::CheckResult after = loadForDiff(options.newFile, parents);
  ChangeList changes;
  compareLibraries(*before.library, *after.library, changes);
  if (changes.Changes() == 0) {
    std::cout << "no changes\n";
  } else {
    std::cout << changes.Changes() << " change" << (changes.Changes() == 1 ? "" : "s") << ", "
              << changes.Incompatible() << " incompatible\n";
  }
  return changes.Incompatible() > 0 ? exitFindings : exitClean;
}

}  // namespace

Command addDiffCommand(CLI::App& app) {
  auto options = std::make_shared<DiffOptions>();
  CLI::App* command = app.add_subcommand(
      "diff",
      "Show what changed between two versions of a library for its users; exit 1 when a "
      "change is incompatible (an object removed, an input or output removed, renamed or "
      "retyped)");
  command->add_option("old", options->oldFile, "The earlier version")->required();
  command->add_option("new", options->newFile, "The later version")->required();
  addParentOption(*command, options->parents);
  return {command, [options] { return runDiff(*options); }};
}

}  // namespace matgraph
