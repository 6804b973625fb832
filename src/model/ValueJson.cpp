// Reading and writing the value object of library files.
#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>

#include "core/JsonMembers.h"
#include "core/JsonTextWriter.h"
#include "core/LoadTrail.h"
#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "mat/IGraphLibrary.h"
#include "mat/ISemantic.h"
#include "model/Value.h"

namespace mat {
namespace {

struct Component {
  const char* keyword;
  ValueType kind;
};

constexpr Component components[] = {
    {"bool", ValueType::Bool}, {"int", ValueType::Int},       {"float", ValueType::Float},
    {"uuid", ValueType::UUID}, {"string", ValueType::String}, {"semantic", ValueType::Semantic},
};

const char* keywordOf(ValueType kind) {
  for (const Component& component : components) {
    if (component.kind == kind) return component.keyword;
  }
  return nullptr;
}

ValueType kindOf(const std::string& keyword) {
  for (const Component& component : components) {
    if (keyword == component.keyword) return component.kind;
  }
  throw InputFileParsingException("Value has no valid component!");
}

// Truncated toward zero; outside the 32-bit range the smallest int.
int32_t toInt(double number) {
  if (!(number > -2147483649.0 && number < 2147483648.0)) {
    return std::numeric_limits<int32_t>::min();
  }
  return static_cast<int32_t>(number);
}

double readNumber(const picojson::value& element) {
  if (!element.is<double>()) throw InputFileParsingException("Wrong value given, double expected!");
  return element.get<double>();
}

UUID readUUID(const picojson::value& element) {
  if (!element.is<std::string>())
    throw InputFileParsingException("Wrong value given, expected UUID!");
  UUID uuid;
  if (!makeUUID(element.get<std::string>().c_str(), uuid)) {
    throw InputFileParsingException("Wrong value given, invalid UUID!");
  }
  return uuid;
}

// Calls `read` for each element: the items of an array, or the value itself.
template <typename Element, typename ReadElement>
std::vector<Element> readElements(const picojson::value& value, ReadElement read) {
  std::vector<Element> elements;
  if (value.is<picojson::array>()) {
    const picojson::array& items = value.get<picojson::array>();
    elements.reserve(items.size());
    for (size_t i = 0; i < items.size(); ++i) {
      TrailStep step(i);
      elements.push_back(read(items[i]));
    }
  } else {
    elements.push_back(read(value));
  }
  return elements;
}

Value::Storage readStorage(ValueType kind, const picojson::value& value,
                           const IGraphLibrary* library) {
  switch (kind) {
    case ValueType::Float:
      return readElements<float>(value, [](const auto& e) { return roundToFloat(readNumber(e)); });
    case ValueType::Int:
      return readElements<int32_t>(value, [](const auto& e) { return toInt(readNumber(e)); });
    case ValueType::Bool:
      return readElements<bool>(value, [](const picojson::value& element) {
        if (element.is<bool>()) return element.get<bool>();
        if (element.is<std::string>()) return element.get<std::string>() == "true";
        throw InputFileParsingException("Wrong value given for bool, true or false expected!");
      });
    case ValueType::String:
      return readElements<std::string>(value, [](const picojson::value& element) {
        if (!element.is<std::string>()) {
          throw InputFileParsingException("Wrong value given, string expected!");
        }
        return element.get<std::string>();
      });
    case ValueType::UUID:
      return readElements<UUID>(value, readUUID);
    case ValueType::Semantic:
      return readElements<Value::SemanticElement>(value, [library](const picojson::value& e) {
        const UUID uuid = readUUID(e);
        const ISemantic* semantic =
            library != nullptr ? library->FindSemantic(uuid, true) : nullptr;
        return Value::SemanticElement(semantic, uuid);
      });
    case ValueType::None:
      break;
  }
  return std::monostate{};
}

void writeElement(JsonTextWriter& writer, const Value::Storage& storage, size_t index) {
  switch (static_cast<ValueType>(storage.index())) {
    case ValueType::Bool:
      writer.Bool(std::get<std::vector<bool>>(storage)[index]);
      break;
    case ValueType::Int:
      writer.Number(static_cast<double>(std::get<std::vector<int32_t>>(storage)[index]));
      break;
    case ValueType::Float:
      writer.Number(floatToJsonNumber(std::get<std::vector<float>>(storage)[index]));
      break;
    case ValueType::UUID:
      writer.String(uuidText(std::get<std::vector<UUID>>(storage)[index]));
      break;
    case ValueType::String:
      writer.String(std::get<std::vector<std::string>>(storage)[index]);
      break;
    case ValueType::Semantic: {
      const auto& element = std::get<std::vector<Value::SemanticElement>>(storage)[index];
      writer.String(referenceText(element.object, element.uuid));
      break;
    }
    case ValueType::None:
      writer.Null();
      break;
  }
}

// A copy of a value of another implementation of IValue, through its accessors.
Value::Storage storageOf(const IValue& value) {
  const size_t count = value.GetCount();
  auto collect = [&](auto element) {
    std::vector<decltype(element(size_t{0}))> elements;
    elements.reserve(count);
    for (size_t i = 0; i < count; ++i) elements.push_back(element(i));
    return elements;
  };
  switch (value.GetValueType()) {
    case ValueType::Bool:
      return collect([&](size_t i) { return value.GetBool(i); });
    case ValueType::Int:
      return collect([&](size_t i) { return value.GetInt(i); });
    case ValueType::Float:
      return collect([&](size_t i) { return value.GetFloat(i); });
    case ValueType::UUID:
      return collect([&](size_t i) { return value.GetUUID(i); });
    case ValueType::String:
      return collect([&](size_t i) { return std::string(value.GetString(i)); });
    case ValueType::Semantic:
      return collect([&](size_t i) { return Value::SemanticElement(value.GetSemantic(i)); });
    case ValueType::None:
      break;
  }
  return std::monostate{};
}

}  // namespace

// Halfway between the largest float and the next power of two rounds to infinity, as
// IEEE rounding to nearest even does.
float roundToFloat(double number) {
  constexpr double overflowThreshold = 0x1.ffffffp+127;
  if (std::fabs(number) >= overflowThreshold) {
    return number > 0 ? std::numeric_limits<float>::infinity()
                      : -std::numeric_limits<float>::infinity();
  }
  if (std::fabs(number) > FLT_MAX) return number > 0 ? FLT_MAX : -FLT_MAX;
  return static_cast<float>(number);
}

// An infinity has no JSON form; 1e39 is beyond the float range and reads back as infinity.
double floatToJsonNumber(float number) {
  if (std::isnan(number)) throw InvalidDataAccess("Float value is not a number");
  if (std::isinf(number)) return number > 0 ? 1e39 : -1e39;
  return static_cast<double>(number);
}

Value Value::CopyOf(const IValue& value) {
  if (const auto* ours = dynamic_cast<const Value*>(&value)) return *ours;
  return Value(storageOf(value));
}

Value::Value(const picojson::object& object, const IGraphLibrary* library) {
  Read(object, library);
}

void Value::Read(const picojson::object& object, const IGraphLibrary* library) {
  Clear();
  const auto value = object.find("value");
  if (value == object.end()) throw InputFileParsingException("Value has no value setting!");
  const std::string& keyword = getStringMember(object, "component");
  ValueType kind = ValueType::None;
  {
    TrailStep step(object.find("component")->first);
    kind = kindOf(keyword);
  }
  TrailStep step(value->first);
  storage_ = readStorage(kind, value->second, library);
}

void writeValue(JsonTextWriter& writer, const IValue& value) {
  const auto* ours = dynamic_cast<const Value*>(&value);
  const Value::Storage copied = ours != nullptr ? Value::Storage() : storageOf(value);
  const Value::Storage& storage = ours != nullptr ? ours->GetStorage() : copied;

  writer.BeginObject();
  const char* keyword = keywordOf(static_cast<ValueType>(storage.index()));
  if (keyword != nullptr) {
    writer.Key("component");
    writer.String(keyword);
    const size_t count = value.GetCount();
    if (count == 1) {
      writer.Key("value");
      writeElement(writer, storage, 0);
    } else if (count > 1) {
      writer.Key("value");
      writer.BeginArray(false);
      for (size_t i = 0; i < count; ++i) {
        writer.NextElement();
        writeElement(writer, storage, i);
      }
      writer.EndArray();
    }
  }
  writer.EndObject();
}

picojson::object saveValue(const IValue& value) {
  return writtenObject([&](JsonTextWriter& writer) { writeValue(writer, value); });
}

}  // namespace mat
