#include "core/LoadTrail.h"

#include <exception>
#include <vector>

namespace mat {
namespace {

// One step: an object member (key not null) or an array element.
struct Step {
  const std::string* key;
  size_t index;
  std::string ownedKey;  // for steps added without a guard, whose key may not outlive them
};

thread_local std::vector<Step> trail;

void appendEscaped(const std::string& key, std::string& out) {
  for (const char c : key) {
    if (c == '~') {
      out += "~0";
    } else if (c == '/') {
      out += "~1";
    } else {
      out += c;
    }
  }
}

}  // namespace

TrailStep::TrailStep(const std::string& key) : uncaughtExceptions_(std::uncaught_exceptions()) {
  trail.push_back({&key, 0, {}});
}

TrailStep::TrailStep(size_t index) : uncaughtExceptions_(std::uncaught_exceptions()) {
  trail.push_back({nullptr, index, {}});
}

TrailStep::~TrailStep() {
  // Unwinding: keep the step, so the trail still names the place of the failure.
  if (std::uncaught_exceptions() > uncaughtExceptions_) return;
  if (!trail.empty()) trail.pop_back();
}

void appendTrailStep(const std::string& key) { trail.push_back({nullptr, 0, key}); }

void clearTrail() { trail.clear(); }

std::string trailPointer() {
  std::string pointer;
  for (const Step& step : trail) {
    pointer += '/';
    if (step.key != nullptr) {
      appendEscaped(*step.key, pointer);
    } else if (!step.ownedKey.empty()) {
      appendEscaped(step.ownedKey, pointer);
    } else {
      pointer += std::to_string(step.index);
    }
  }
  return pointer;
}

}  // namespace mat
