#pragma once

// Shared helpers of every reader and writer of library file content.

#include <picojson.h>

#include <string>

#include "core/UUIDText.h"
#include "mat/Common.h"

namespace mat {

// The string member `key` of `item`.
// Throws InputFileParsingException "Value not found in object" when it is absent or not
// a string.
const std::string& getStringMember(const picojson::object& item, const std::string& key);

// The member `key` converted as makeUUID(const char*) converts text: the empty text
// gives the nil UUID, a text that does not parse gives the nil UUID too.
// Throws as getStringMember().
UUID getUUIDMember(const picojson::object& item, const std::string& key);

// The UUID that `text` names, as makeUUID(const char*) reads it.
UUID uuidFromText(const std::string& text);

// Opens the JSON object of a library item: "content", "uuid" and, for a non-empty
// name, "desc". Works for every kind of library object (types, semantics, node classes,
// graphs).
template <typename LibraryObject>
void writeItemHeader(picojson::object& item, const LibraryObject* object, const char* kind) {
  item["content"] = picojson::value(kind);
  item["uuid"] = picojson::value(uuidText(object->GetUUID()));
  const char* name = object->GetName();
  if (name != nullptr && name[0] != '\0') item["desc"] = picojson::value(name);
}

}  // namespace mat
