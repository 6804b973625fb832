#include "files/JsonWriter.h"

#include "core/JsonTextWriter.h"

namespace mat {
namespace {

bool isContainer(const picojson::value& value) {
  return value.is<picojson::array>() || value.is<picojson::object>();
}

void writeDocument(const picojson::value& value, JsonTextWriter& writer) {
  if (value.is<picojson::null>()) {
    writer.Null();
  } else if (value.is<bool>()) {
    writer.Bool(value.get<bool>());
  } else if (value.is<double>()) {
    writer.Number(value.get<double>());
  } else if (value.is<std::string>()) {
    writer.String(value.get<std::string>());
  } else if (value.is<picojson::array>()) {
    const picojson::array& array = value.get<picojson::array>();
    bool multiLine = false;
    for (const picojson::value& element : array) multiLine = multiLine || isContainer(element);
    writer.BeginArray(multiLine);
    for (const picojson::value& element : array) {
      writer.NextElement();
      writeDocument(element, writer);
    }
    writer.EndArray();
  } else {
    writer.BeginObject();
    for (const auto& [key, member] : value.get<picojson::object>()) {
      writer.Key(key);
      writeDocument(member, writer);
    }
    writer.EndObject();
  }
}

}  // namespace

void serializeValue(const picojson::value& value, int level, std::string& out) {
  JsonTextWriter writer(out, level);
  writeDocument(value, writer);
}

}  // namespace mat
