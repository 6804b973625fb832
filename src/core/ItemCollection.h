#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "mat/Common.h"
#include "mat/Exceptions.h"

namespace mat {

// The objects of one kind in a library: a list in registration order, and indexes by
// UUID and by name that point at the object registered last under each key.
template <typename Item>
class ItemCollection {
 public:
  // `kindName` names the collection in the message of an index out of range.
  explicit ItemCollection(const char* kindName) : kindName_(kindName) {}

  void Add(std::shared_ptr<Item> item, const UUID& uuid, const char* name) {
    const size_t position = items_.size();
    items_.push_back(std::move(item));
    uuidIndex_[uuid] = position;
    if (name != nullptr && name[0] != '\0') nameIndex_[name] = position;
  }

  void Reserve(size_t count) { items_.reserve(items_.size() + count); }

  size_t Count() const { return items_.size(); }

  const std::shared_ptr<Item>& At(size_t index) const {
    if (index >= items_.size()) {
      throw InvalidDataAccess(std::string(kindName_) + " index " + std::to_string(index) +
                              " out of range (count " + std::to_string(items_.size()) + ")");
    }
    return items_[index];
  }

  // The object registered last under `uuid`, or null.
  const std::shared_ptr<Item>* Find(const UUID& uuid) const {
    const auto found = uuidIndex_.find(uuid);
    return found == uuidIndex_.end() ? nullptr : &items_[found->second];
  }

  // The object registered last under the non-empty `name`, or null.
  const std::shared_ptr<Item>* FindByName(const char* name) const {
    if (name == nullptr || name[0] == '\0') return nullptr;
    const auto found = nameIndex_.find(name);
    return found == nameIndex_.end() ? nullptr : &items_[found->second];
  }

 private:
  const char* kindName_;
  std::vector<std::shared_ptr<Item>> items_;
  std::map<UUID, size_t> uuidIndex_;
  std::unordered_map<std::string, size_t> nameIndex_;
};

}  // namespace mat
