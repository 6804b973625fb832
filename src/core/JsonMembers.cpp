#include "core/JsonMembers.h"

#include "core/LoadTrail.h"
#include "mat/Exceptions.h"
#include "mat/Functions.h"

namespace mat {

const std::string& getStringMember(const picojson::object& item, const std::string& key) {
  const auto member = item.find(key);
  if (member == item.end() || !member->second.is<std::string>()) {
    appendTrailStep(key);
    throw InputFileParsingException("Value not found in object");
  }
  return member->second.get<std::string>();
}

UUID uuidFromText(const std::string& text) { return makeUUID(text.c_str()); }

UUID getUUIDMember(const picojson::object& item, const std::string& key) {
  return uuidFromText(getStringMember(item, key));
}

}  // namespace mat
