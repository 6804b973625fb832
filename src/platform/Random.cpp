#include "platform/Random.h"

#include <cstring>
#include <random>

namespace mat::platform {
namespace {

std::mt19937_64 seededGenerator() {
  std::random_device entropy;
  std::seed_seq seed{entropy(), entropy(), entropy(), entropy(),
                     entropy(), entropy(), entropy(), entropy()};
  return std::mt19937_64(seed);
}

}  // namespace

void fillRandomBytes(uint8_t* out, size_t count) {
  thread_local std::mt19937_64 generator = seededGenerator();
  while (count > 0) {
    const uint64_t word = generator();
    const size_t chunk = count < sizeof word ? count : sizeof word;
    std::memcpy(out, &word, chunk);
    out += chunk;
    count -= chunk;
  }
}

}  // namespace mat::platform
