#pragma once

#include <cstddef>
#include <cstdint>

namespace mat::platform {

// Fills `out` with `count` random bytes from a generator owned by the calling thread.
// The generator is seeded once per thread from the operating system's entropy source;
// later calls make no system calls.
void fillRandomBytes(uint8_t* out, size_t count);

}  // namespace mat::platform
