#pragma once

#include <string>

#include "core/UUIDText.h"
#include "mat/Common.h"

namespace mat {

// A reference by UUID to an object of a library (a type or a semantic). The object is
// null when the UUID was found nowhere when the reference was read; the UUID is kept
// either way, so that a saved file writes back what was read.
template <typename Object>
struct Reference {
  const Object* object = nullptr;
  UUID uuid{};

  Reference() = default;
  explicit Reference(const Object* resolved) : object(resolved) {
    if (resolved != nullptr) uuid = resolved->GetUUID();
  }
  Reference(const Object* resolved, const UUID& read) : object(resolved), uuid(read) {}
};

// The text a file holds for a reference: the UUID of the object, or the UUID that was
// read when no object was found for it. The nil UUID, which the empty text and every text
// that is not a UUID read as, is written as the empty text whether or not an object was
// found for it: a reference written either way reads back the same, so one text for it
// keeps every later save identical to the first.
template <typename Object>
std::string referenceText(const Object* object, const UUID& unresolvedUUID) {
  const UUID& uuid = object != nullptr ? object->GetUUID() : unresolvedUUID;
  return uuid == UUID{} ? std::string() : uuidText(uuid);
}

}  // namespace mat
