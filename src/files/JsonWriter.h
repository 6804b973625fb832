#pragma once

#include <picojson.h>

#include <string>

namespace mat {

// Appends the text of `value` at nesting level `level` (a count of tabs) to `out`, in the
// layout of library files: objects one member a line with their keys in byte order and
// " : " between key and value, arrays on one line unless they hold arrays or objects,
// integers below 2^53 without a fraction and other numbers with 17 significant digits.
// The text does not depend on the process locale.
void serializeValue(const picojson::value& value, int level, std::string& out);

}  // namespace mat
