#pragma once

#include <picojson.h>

#include <string>

#include "mat/ISemantic.h"
#include "mat/IType.h"
#include "model/Reference.h"

namespace mat {

class IGraphLibrary;

class Semantic final : public ISemantic {
 public:
  // Reads a semantic item: "desc" (its name) and "type" (the UUID text of its type,
  // looked up in `library` and its parents; found nowhere, the type is null).
  // Throws InputFileParsingException for a "desc" or "type" that is not a string.
  Semantic(const UUID& uuid, const picojson::object& item, const IGraphLibrary* library);

  const UUID& GetUUID() const override { return uuid_; }
  const char* GetName() const override { return name_.c_str(); }
  const IType* GetType() const override { return type_.object; }
  // The UUID that "type" named, also when no type was found for it.
  const UUID& GetTypeUUID() const { return type_.uuid; }

 private:
  UUID uuid_;
  std::string name_;
  Reference<IType> type_;
};

class JsonTextWriter;

// Writes the JSON object of a semantic item: "content", "desc", "type" (always written;
// an unresolved type as the UUID that was read, or the empty text) and "uuid".
void writeSemantic(JsonTextWriter& writer, const ISemantic* semantic);
picojson::object saveSemantic(const ISemantic* semantic);

}  // namespace mat
