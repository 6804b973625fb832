#include "model/Value.h"

#include <string>

#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "mat/ISemantic.h"

namespace mat {
namespace {

const char* kindName(ValueType kind) {
  switch (kind) {
    case ValueType::None:
      return "None";
    case ValueType::Bool:
      return "Bool";
    case ValueType::Int:
      return "Int";
    case ValueType::Float:
      return "Float";
    case ValueType::UUID:
      return "UUID";
    case ValueType::String:
      return "String";
    case ValueType::Semantic:
      return "Semantic";
  }
  return "unknown";
}

template <typename Element>
Value::Storage copyElements(const Element* elements, size_t count) {
  if (count == 0) return std::vector<Element>();
  return std::vector<Element>(elements, elements + count);
}

}  // namespace

size_t Value::GetCount() const {
  return std::visit(
      [](const auto& elements) -> size_t {
        if constexpr (std::is_same_v<std::decay_t<decltype(elements)>, std::monostate>) {
          return 0;
        } else {
          return elements.size();
        }
      },
      storage_);
}

// The accessors are direct reads for a host that keeps to the value's kind and count;
// one that does not gets an exception instead of a stray read.
template <typename Element>
const std::vector<Element>& Value::Elements(ValueType expected, size_t index) const {
  const auto* elements = std::get_if<std::vector<Element>>(&storage_);
  if (elements == nullptr) {
    throw InvalidDataAccess(std::string("Value of kind ") + kindName(GetValueType()) + " read as " +
                            kindName(expected));
  }
  if (index >= elements->size()) {
    throw InvalidDataAccess("Value element " + std::to_string(index) + " out of range (count " +
                            std::to_string(elements->size()) + ")");
  }
  return *elements;
}

float Value::GetFloat(size_t index) const {
  return Elements<float>(ValueType::Float, index)[index];
}

int32_t Value::GetInt(size_t index) const {
  return Elements<int32_t>(ValueType::Int, index)[index];
}

const char* Value::GetString(size_t index) const {
  return Elements<std::string>(ValueType::String, index)[index].c_str();
}

bool Value::GetBool(size_t index) const { return Elements<bool>(ValueType::Bool, index)[index]; }

UUID Value::GetUUID(size_t index) const { return Elements<UUID>(ValueType::UUID, index)[index]; }

const ISemantic* Value::GetSemantic(size_t index) const {
  return Elements<SemanticElement>(ValueType::Semantic, index)[index].object;
}

const IValue* createValueBool(const bool* values, size_t count) {
  return new Value(copyElements(values, count));
}

const IValue* createValueInt(const int* values, size_t count) {
  static_assert(sizeof(int) == sizeof(int32_t));
  return new Value(copyElements(reinterpret_cast<const int32_t*>(values), count));
}

const IValue* createValueFloat(const float* values, size_t count) {
  return new Value(copyElements(values, count));
}

const IValue* createValueUUID(const UUID* values, size_t count) {
  return new Value(copyElements(values, count));
}

const IValue* createValueSemantic(const ISemantic* const* values, size_t count) {
  std::vector<Value::SemanticElement> elements;
  elements.reserve(count);
  for (size_t i = 0; i < count; ++i) elements.emplace_back(values[i]);
  return new Value(std::move(elements));
}

void releaseValue(const IValue* value) { delete value; }

}  // namespace mat
