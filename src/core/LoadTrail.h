#pragma once

#include <cstddef>
#include <string>

namespace mat {

// Where in a library file the reader is: a JSON pointer's steps, kept per thread. Readers
// mark each member and element they enter with a TrailStep. When an exception leaves a
// step, the step stays on the trail, so the catch site finds the trail still pointing at
// the member at fault.
class TrailStep {
 public:
  explicit TrailStep(const std::string& key);
  explicit TrailStep(size_t index);
  ~TrailStep();
  TrailStep(const TrailStep&) = delete;
  TrailStep& operator=(const TrailStep&) = delete;

 private:
  int uncaughtExceptions_;
};

// Adds a step that no guard removes: the member a reader looked for and did not find,
// just before it throws.
void appendTrailStep(const std::string& key);

// Empties the trail of the calling thread; a load starts with it.
void clearTrail();

// The trail of the calling thread as a JSON pointer, e.g. "/1/12/nodes/3/input".
std::string trailPointer();

}  // namespace mat
