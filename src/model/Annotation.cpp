#include "model/Annotation.h"

namespace mat {

void Annotation::AddEntry(const char* key, const char* value) {
  if (key == nullptr || HasKey(key)) return;
  keys_.emplace_back(key);
  values_.emplace_back(value != nullptr ? value : "");
}

bool Annotation::HasKey(const char* key) const {
  if (key == nullptr) return false;
  for (const std::string& existing : keys_) {
    if (existing == key) return true;
  }
  return false;
}

const char* Annotation::GetKey(int32_t index) const {
  if (index < 0 || static_cast<size_t>(index) >= keys_.size()) return nullptr;
  return keys_[static_cast<size_t>(index)].c_str();
}

const char* Annotation::GetValue(int32_t index) const {
  if (index < 0 || static_cast<size_t>(index) >= values_.size()) return nullptr;
  return values_[static_cast<size_t>(index)].c_str();
}

}  // namespace mat
