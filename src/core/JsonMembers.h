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

}  // namespace mat
