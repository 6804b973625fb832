#pragma once

#include <string>
#include <vector>

#include "mat/IAnnotation.h"

namespace mat {

// Key/value pairs in the order they were added; a key is added once.
class Annotation final : public IAnnotation {
 public:
  void AddEntry(const char* key, const char* value) override;
  bool HasKey(const char* key) const override;
  size_t GetEntryCount() const override { return keys_.size(); }
  const char* GetKey(int32_t index) const override;
  const char* GetValue(int32_t index) const override;

 private:
  std::vector<std::string> keys_;
  std::vector<std::string> values_;
};

}  // namespace mat
