#include "Text.h"

#include <charconv>

#include "mat/Functions.h"
#include "mat/ISemantic.h"
#include "mat/IType.h"
#include "mat/IValue.h"

namespace matgraph {
namespace {

// The shortest text that reads back as the same float.
std::string floatText(float number) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
  return std::string(buffer, result.ptr);
}

std::string elementText(const mat::IValue& value, size_t index) {
  switch (value.GetValueType()) {
    case mat::ValueType::Bool:
      return value.GetBool(index) ? "true" : "false";
    case mat::ValueType::Int:
      return std::to_string(value.GetInt(index));
    case mat::ValueType::Float:
      return floatText(value.GetFloat(index));
    case mat::ValueType::UUID:
      return uuidString(value.GetUUID(index));
    case mat::ValueType::String:
      return "\"" + std::string(value.GetString(index)) + "\"";
    case mat::ValueType::Semantic: {
      const mat::ISemantic* semantic = value.GetSemantic(index);
      return semantic != nullptr ? quotedName(semantic->GetName(), semantic->GetUUID())
                                 : "no semantic";
    }
    case mat::ValueType::None:
      break;
  }
  return std::string();
}

bool sameElement(const mat::IValue& a, const mat::IValue& b, size_t index) {
  switch (a.GetValueType()) {
    case mat::ValueType::Semantic: {
      const mat::ISemantic* left = a.GetSemantic(index);
      const mat::ISemantic* right = b.GetSemantic(index);
      if (left == nullptr || right == nullptr) return left == right;
      return left->GetUUID() == right->GetUUID();
    }
    case mat::ValueType::Float: {
      const float left = a.GetFloat(index);
      const float right = b.GetFloat(index);
      return left == right || (left != left && right != right);  // NaN equals NaN here
    }
    default:
      return elementText(a, index) == elementText(b, index);
  }
}

}  // namespace

std::string uuidString(const mat::UUID& uuid) {
  char buffer[37];
  mat::UUIDToString(uuid, buffer);
  return buffer;
}

std::string quotedName(const char* name, const mat::UUID& uuid) {
  if (name != nullptr && name[0] != '\0') return "\"" + std::string(name) + "\"";
  return uuidString(uuid);
}

std::string typeText(const mat::IType* type) {
  if (type == nullptr) return "no type";
  if (type->GetName()[0] != '\0') return type->GetName();
  return "type " + uuidString(type->GetUUID());
}

std::string valueText(const mat::IValue* value) {
  if (value == nullptr) return "none";
  const size_t count = value->GetCount();
  if (count == 1) return elementText(*value, 0);
  std::string text = "[";
  for (size_t i = 0; i < count; ++i) {
    if (i > 0) text += ',';
    text += elementText(*value, i);
  }
  return text + "]";
}

bool sameValue(const mat::IValue* a, const mat::IValue* b) {
  if (a == nullptr || b == nullptr) return a == b;
  if (a->GetValueType() != b->GetValueType() || a->GetCount() != b->GetCount()) return false;
  for (size_t i = 0; i < a->GetCount(); ++i) {
    if (!sameElement(*a, *b, i)) return false;
  }
  return true;
}

}  // namespace matgraph
