#include "files/LibraryCheck.h"

#include <cstring>
#include <map>
#include <utility>

#include "core/UUIDText.h"
#include "files/LibraryCheckItems.h"
#include "files/LibraryCheckText.h"
#include "mat/Functions.h"
#include "mat/INodeClass.h"
#include "mat/ISemantic.h"
#include "mat/IType.h"
#include "mat/LoadDiagnostic.h"

namespace mat {
namespace {

struct LibraryRelease {
  void operator()(const IGraphLibrary* library) const { releaseGraphLibrary(library); }
};

// The refusal codes, by a fragment of the loader's message. The first that the message
// contains gives the code.
struct RefusalKind {
  const char* fragment;
  const char* code;
};
constexpr RefusalKind refusalKinds[] = {
    {"Value not found in object", "MG103"},
    {"member \"node\" is missing", "MG103"},
    {"Object with unknown type encountered", "MG104"},
    {"Expected object", "MG105"},
    {"Invalid type for ", "MG106"},
    {"is not an array", "MG106"},
    {": node class ", "MG107"},
    {"Node not present", "MG108"},
    {": two nodes with UUID ", "MG109"},
    {"Recursive graph nesting", "MG110"},
    {"Value has no ", "MG111"},
    {"Wrong value given", "MG111"},
    {"Nesting too deep", "MG112"},
};

// The content array as the loader chooses it, and its path; null for a header without
// "fileversion".
const picojson::array* contentArray(const picojson::array& root, std::string& path) {
  const bool versioned =
      root.size() == 2 && root[0].is<picojson::object>() && root[1].is<picojson::array>();
  path.clear();
  if (!versioned) return &root;
  const picojson::object& header = root[0].get<picojson::object>();
  if (header.find("fileversion") == header.end()) return nullptr;
  path = "/1";
  return &root[1].get<picojson::array>();
}

std::vector<ContentItem> contentItems(const picojson::array& content, const std::string& path) {
  std::vector<ContentItem> items(content.size());
  std::map<std::string, size_t> kindCounts;
  for (size_t index = 0; index < content.size(); ++index) {
    ContentItem& item = items[index];
    item.index = index;
    item.path = path + pointerStep(index);
    if (!content[index].is<picojson::object>()) continue;
    item.object = &content[index].get<picojson::object>();
    const auto member = [&](const char* key) -> const std::string* {
      const auto found = item.object->find(key);
      if (found == item.object->end() || !found->second.is<std::string>()) return nullptr;
      return &found->second.get<std::string>();
    };
    if (const std::string* kind = member("content")) item.kind = *kind;
    if (const std::string* uuid = member("uuid")) item.uuid = makeUUID(uuid->c_str());
    if (const std::string* name = member("desc")) item.name = *name;
    item.kindIndex = kindCounts[item.kind]++;
  }
  return items;
}

Finding refusalFinding(const LoadDiagnostic& diagnostic, const std::vector<ContentItem>& items) {
  Finding finding =
      textFinding(refusalCode(diagnostic.message), Severity::Error, diagnostic.message);
  finding.jsonPath = diagnostic.jsonPath;
  finding.hasItem = diagnostic.hasItem;
  finding.itemIndex = diagnostic.itemIndex;
  finding.itemUUID = diagnostic.itemUUID;
  if (diagnostic.hasItem && diagnostic.itemIndex < items.size()) {
    finding.itemName = items[diagnostic.itemIndex].name;
  }
  return finding;
}

const char* kindNoun(const std::string& kind) {
  if (kind == "nodeclass") return "node class";
  return kind.c_str();
}

std::string itemDescription(const ContentItem& item) {
  std::string text = "item " + std::to_string(item.index);
  if (!item.kind.empty()) text += std::string(", ") + kindNoun(item.kind);
  if (!item.name.empty()) text += " \"" + item.name + "\"";
  return text;
}

bool isKnownKind(const std::string& kind) {
  return kind == "type" || kind == "semantic" || kind == "nodeclass" || kind == "graph";
}

// MG206 and MG207: a UUID or a name that an item earlier in the file already uses.
class DuplicateFinder {
 public:
  void Check(const ContentItem& item, FindingList& findings) {
    if (!isKnownKind(item.kind)) return;
    const auto [byUUID, newUUID] = uuids_.emplace(item.uuid, &item);
    if (!newUUID) {
      const ContentItem& earlier = *byUUID->second;
      std::string message =
          "UUID " + uuidText(item.uuid) + " is also the UUID of " + itemDescription(earlier);
      if (earlier.kind == item.kind) message += "; lookups by UUID find this item";
      findings.Warn("MG206", "/uuid", std::move(message));
      byUUID->second = &item;
    }
    if (item.name.empty()) return;
    const auto [byName, newName] = names_.emplace(std::make_pair(item.kind, item.name), &item);
    if (!newName) {
      std::string message = std::string("Name \"") + item.name + "\" is also the name of " +
                            itemDescription(*byName->second);
      if (item.kind != "type") message += "; lookups by name find this item";
      findings.Warn("MG207", "/desc", std::move(message));
      byName->second = &item;
    }
  }

 private:
  std::map<UUID, const ContentItem*> uuids_;
  std::map<std::pair<std::string, std::string>, const ContentItem*> names_;
};

// The object of the parent that `item`'s UUID also names, if any: "type \"float\"".
std::string shadowedObject(const ContentItem& item, const IGraphLibrary& parent) {
  if (item.kind == "type") {
    if (const IType* type = parent.FindType(item.uuid, false)) {
      return "type " + displayName(type->GetName(), item.uuid);
    }
  } else if (item.kind == "semantic") {
    if (const ISemantic* semantic = parent.FindSemantic(item.uuid, false)) {
      return "semantic " + displayName(semantic->GetName(), item.uuid);
    }
  } else if (item.kind == "nodeclass" || item.kind == "graph") {
    if (const auto nodeClass = parent.FindAnyNodeClass(item.uuid, false)) {
      return std::string(nodeClass->IsGraph() ? "graph " : "node class ") +
             displayName(nodeClass->GetName(), item.uuid);
    }
  }
  return std::string();
}

// MG208: an item whose UUID names an object of a parent, which lookups from this library
// no longer reach.
void checkShadowing(const ContentItem& item, const std::vector<const IGraphLibrary*>& parents,
                    FindingList& findings) {
  if (item.uuid == UUID{}) return;
  for (auto parent = parents.rbegin(); parent != parents.rend(); ++parent) {
    const std::string shadowed = shadowedObject(item, **parent);
    if (shadowed.empty()) continue;
    findings.Warn("MG208", "/uuid",
                  "UUID " + uuidText(item.uuid) + " also names " + shadowed +
                      " of the parent library \"" + (*parent)->GetName() +
                      "\"; lookups from this library find this item instead");
    return;
  }
}

// MG209 for the item's own "uuid".
void checkItemUUIDText(const ContentItem& item, FindingList& findings) {
  const auto member = item.object->find("uuid");
  if (member == item.object->end() || !member->second.is<std::string>()) return;
  UUID parsed;
  if (makeUUID(member->second.get<std::string>().c_str(), parsed)) return;
  findings.Warn("MG209", "/uuid",
                "\"" + member->second.get<std::string>() +
                    "\" is not a UUID; the item reads as having the nil UUID");
}

}  // namespace

size_t CheckResult::CountOf(Severity severity) const {
  size_t count = 0;
  for (const Finding& finding : findings) count += finding.severity == severity ? 1 : 0;
  return count;
}

const char* refusalCode(const std::string& message) {
  for (const RefusalKind& kind : refusalKinds) {
    if (message.find(kind.fragment) != std::string::npos) return kind.code;
  }
  return "MG199";
}

CheckResult checkLibrary(const char* text, size_t size,
                         const std::vector<const IGraphLibrary*>& parents, const char* name) {
  CheckResult result;
  std::vector<Finding>& findings = result.findings;
  if (const void* nul = std::memchr(text, '\0', size)) {
    const size_t offset = static_cast<size_t>(static_cast<const char*>(nul) - text);
    findings.push_back(textFinding("MG213", Severity::Warning,
                                   "NUL byte at offset " + std::to_string(offset) +
                                       ": the text ends there and nothing after it is read"));
  }

  LoadDiagnostic diagnostic;
  const IGraphLibrary* parent = parents.empty() ? nullptr : parents.back();
  result.library.reset(loadGraphLibraryWithDiagnostic(text, size, parent, name, diagnostic),
                       LibraryRelease());
  if (diagnostic.outcome == LoadDiagnostic::Refused &&
      std::strcmp(refusalCode(diagnostic.message), "MG112") == 0) {
    // The loader refused to parse a text nested this deep, and so does the check: the
    // parser would exhaust the stack.
    findings.push_back(refusalFinding(diagnostic, {}));
    return result;
  }
  const ParsedText parsed = parseText(text);
  addTextFindings(parsed, diagnostic, findings);
  if (!parsed.root.is<picojson::array>()) return result;

  std::string contentPath;
  const picojson::array* content = contentArray(parsed.root.get<picojson::array>(), contentPath);
  if (content == nullptr) {
    Finding finding =
        textFinding("MG210", Severity::Warning,
                    "The header has no \"fileversion\", so nothing of the file is read");
    finding.jsonPath = "/0";
    findings.push_back(std::move(finding));
    return result;
  }
  const std::vector<ContentItem> items = contentItems(*content, contentPath);
  if (diagnostic.outcome == LoadDiagnostic::Refused) {
    findings.push_back(refusalFinding(diagnostic, items));
  }

  FindingList itemFindings(findings);
  DuplicateFinder duplicates;
  for (const ContentItem& item : items) {
    if (item.object == nullptr) continue;
    itemFindings.Enter(item);
    checkItemUUIDText(item, itemFindings);
    duplicates.Check(item, itemFindings);
    if (!result.library || !isKnownKind(item.kind)) continue;
    checkShadowing(item, parents, itemFindings);
    checkItemContent(item, *result.library, itemFindings);
  }
  return result;
}

void FindingList::Warn(const char* code, const std::string& path, std::string message) {
  Finding finding;
  finding.code = code;
  finding.severity = Severity::Warning;
  finding.message = std::move(message);
  finding.hasItem = true;
  finding.itemIndex = item_->index;
  finding.itemUUID = item_->uuid;
  finding.itemName = item_->name;
  finding.jsonPath = item_->path + path;
  findings_.push_back(std::move(finding));
}

void FindingList::WarnUnresolved(const std::string& path, std::string message, const char* kind,
                                 const UUID& uuid) {
  Warn("MG201", path, std::move(message));
  findings_.back().reference = uuidText(uuid);
  findings_.back().referenceKind = kind;
}

std::string pointerStep(const std::string& key) {
  std::string step = "/";
  for (const char c : key) {
    if (c == '~') {
      step += "~0";
    } else if (c == '/') {
      step += "~1";
    } else {
      step += c;
    }
  }
  return step;
}

std::string pointerStep(size_t index) { return "/" + std::to_string(index); }

std::string displayName(const char* name, const UUID& uuid) {
  if (name != nullptr && name[0] != '\0') return "\"" + std::string(name) + "\"";
  return uuidText(uuid);
}

}  // namespace mat
