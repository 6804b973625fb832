#pragma once

#include <picojson.h>

#include <string>

#include "mat/IType.h"
#include "model/Value.h"

namespace mat {

class IGraphLibrary;

class Type final : public IType {
 public:
  // Reads a type item: "desc" (its name) and "default" (a value object, whose semantic
  // elements are looked up in `library` and its parents).
  // Throws InputFileParsingException for a "desc" that is not a string, a "default"
  // that is not an object, or a bad default value.
  Type(const UUID& uuid, const picojson::object& item, const IGraphLibrary* library);

  const UUID& GetUUID() const override { return uuid_; }
  const char* GetName() const override { return name_.c_str(); }
  const IValue* GetDefault() const override {
    return defaultValue_.IsNone() ? nullptr : &defaultValue_;
  }

 private:
  Value defaultValue_;
  UUID uuid_;
  std::string name_;
};

class JsonTextWriter;

// Writes the JSON object of a type item: "content", "default", "desc" and "uuid".
void writeType(JsonTextWriter& writer, const IType* type);
picojson::object saveType(const IType* type);

// Writes "desc" when `name` is not empty.
void writeDesc(JsonTextWriter& writer, const char* name);

// The text of a "desc" member. Throws InputFileParsingException "Invalid type for desc"
// when it is not a string.
const std::string& readDesc(const picojson::value& desc);

// The object of a member that must be an object, e.g. "default". Throws
// InputFileParsingException "Invalid type for <member>" otherwise.
const picojson::object& objectMember(const picojson::value& value, const char* member);

}  // namespace mat
