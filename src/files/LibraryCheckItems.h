#pragma once

// The parts of a library check that look at one content item at a time, shared by the
// check's two halves: the identity of items (LibraryCheck.cpp) and what they refer to and
// connect (LibraryCheckContent.cpp).

#include <picojson.h>

#include <cstddef>
#include <string>
#include <vector>

#include "files/LibraryCheck.h"
#include "mat/Common.h"

namespace mat {

// One element of the content array, as far as the check needs it.
struct ContentItem {
  const picojson::object* object = nullptr;  // null when the element is not an object
  size_t index = 0;                          // in the content array
  std::string kind;                          // "content", when it is a string
  UUID uuid{};
  std::string name;      // "desc", when it is a string
  std::string path;      // JSON pointer of the item, e.g. "/1/4"
  size_t kindIndex = 0;  // position among the items of its kind, the order they load in
};

// Collects findings about the item being looked at.
class FindingList {
 public:
  explicit FindingList(std::vector<Finding>& findings) : findings_(findings) {}

  void Enter(const ContentItem& item) { item_ = &item; }
  // A warning about the current item; `path` is relative to the item ("/input/0/type").
  void Warn(const char* code, const std::string& path, std::string message);
  // MG201: `kind` ("type" or "semantic") `uuid` was found nowhere.
  void WarnUnresolved(const std::string& path, std::string message, const char* kind,
                      const UUID& uuid);

 private:
  std::vector<Finding>& findings_;
  const ContentItem* item_ = nullptr;
};

// A JSON pointer step for an object member: "~" and "/" escaped.
std::string pointerStep(const std::string& key);
// A JSON pointer step for an array element.
std::string pointerStep(size_t index);

// The name of a node, a class or an item for a message: "\"tint\"", or its UUID text when
// it has no name.
std::string displayName(const char* name, const UUID& uuid);

// Checks what the item of a loaded library refers to and connects: references found
// nowhere (MG201), texts that are no UUID (MG209), connections the loader drops (MG202,
// MG203), input entries for inputs the class lacks (MG204), graph outputs fed by nothing
// (MG205) and nodes that feed one another in a ring (MG212). `library` holds the item as
// the `kindIndex`-th object of its kind.
void checkItemContent(const ContentItem& item, const IGraphLibrary& library, FindingList& findings);

}  // namespace mat
