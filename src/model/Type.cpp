#include "model/Type.h"

#include "core/JsonMembers.h"
#include "core/JsonTextWriter.h"
#include "core/LoadTrail.h"
#include "mat/Exceptions.h"

namespace mat {

const std::string& readDesc(const picojson::value& desc) {
  if (!desc.is<std::string>()) throw InputFileParsingException("Invalid type for desc");
  return desc.get<std::string>();
}

const picojson::object& objectMember(const picojson::value& value, const char* member) {
  if (!value.is<picojson::object>()) {
    throw InputFileParsingException(std::string("Invalid type for ") + member);
  }
  return value.get<picojson::object>();
}

Type::Type(const UUID& uuid, const picojson::object& item, const IGraphLibrary* library)
    : uuid_(uuid) {
  for (const auto& [key, value] : item) {
    TrailStep step(key);
    if (key == "default") {
      defaultValue_.Read(objectMember(value, "default"), library);
    } else if (key == "desc") {
      name_ = readDesc(value);
    }
  }
}

void writeDesc(JsonTextWriter& writer, const char* name) {
  if (name == nullptr || name[0] == '\0') return;
  writer.Key("desc");
  writer.String(name);
}

void writeType(JsonTextWriter& writer, const IType* type) {
  writer.BeginObject();
  writer.Key("content");
  writer.String("type");
  if (const IValue* defaultValue = type->GetDefault()) {
    writer.Key("default");
    writeValue(writer, *defaultValue);
  }
  writeDesc(writer, type->GetName());
  writer.Key("uuid");
  writer.String(uuidText(type->GetUUID()));
  writer.EndObject();
}

picojson::object saveType(const IType* type) {
  return writtenObject([&](JsonTextWriter& writer) { writeType(writer, type); });
}

}  // namespace mat
