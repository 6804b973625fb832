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
// read when the object was not found, or the empty text when no UUID is known.
template <typename Object>
std::string referenceText(const Object* object, const UUID& unresolvedUUID) {
  if (object != nullptr) return uuidText(object->GetUUID());
  return unresolvedUUID == UUID{} ? std::string() : uuidText(unresolvedUUID);
}

}  // namespace mat
