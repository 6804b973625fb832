#pragma once

// How the subcommands print the objects of a library: names, UUIDs, types and values.

#include <string>

#include "mat/Common.h"

namespace mat {
class IType;
class IValue;
}  // namespace mat

namespace matgraph {

// The 36-character text of `uuid`.
std::string uuidString(const mat::UUID& uuid);

// `name` in double quotes, or the UUID text when the name is empty.
std::string quotedName(const char* name, const mat::UUID& uuid);

// "float", "type 7e00...-0001" for a type without a name, "no type" for null.
std::string typeText(const mat::IType* type);

// A value as a reader would write it: 0.5, [0.5,0.5,0.5], true, "text", a semantic's
// name; "none" for null.
std::string valueText(const mat::IValue* value);

// True when both are null, or hold the same kind and the same elements (semantics
// compared by UUID).
bool sameValue(const mat::IValue* a, const mat::IValue* b);

}  // namespace matgraph
