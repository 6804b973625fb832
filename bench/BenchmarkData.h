#pragma once

/// @file
/// The synthetic libraries that the benchmarks share, generated once per size and kept for
/// the whole run, so every benchmark of one size reads the same text.

#include <cstddef>

#include "SyntheticLibrary.h"

namespace mat {
class IGraphLibrary;
}

namespace mat::bench {

/// The seed of every benchmark library; a size's texts never change between runs.
constexpr uint64_t benchmarkSeed = 1;

/// @return The synthetic pair with @p graphCount graphs and the default options, generated
///     on first use (seconds at 5000 graphs) and kept until the process ends.
const SyntheticLibrary& syntheticLibrary(size_t graphCount);

/// @return The base library of syntheticLibrary(@p graphCount), loaded on first use and kept
///     until the process ends. Never null.
const IGraphLibrary* syntheticBaseLibrary(size_t graphCount);

/// @return The graph library of syntheticLibrary(@p graphCount), loaded under
///     syntheticBaseLibrary(@p graphCount) on first use and kept until the process ends.
///     Never null.
const IGraphLibrary* syntheticGraphLibrary(size_t graphCount);

}  // namespace mat::bench
