#pragma once

#include <string>

#include "mat/Common.h"

namespace mat {

// The 36-character lower-case text form of `uuid`.
std::string uuidText(const UUID& uuid);

// Parses exactly 36 characters 8-4-4-4-12 of hexadecimal digits of either case, with
// nothing before or after. The empty text is not accepted here.
bool parseUUIDText(const char* text, UUID& out);

}  // namespace mat
