#!/usr/bin/env bash
# Installs what is missing, checks the formatting, then builds and runs every test in
# the default build and under AddressSanitizer + UndefinedBehaviorSanitizer, and the tests
# of concurrent use under ThreadSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
scripts/check-format.sh

for preset in default asan; do
  echo "=== $preset ==="
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset"
done

echo "=== tsan ==="
cmake --preset tsan >/dev/null
cmake --build --preset tsan --target matgraph_tests
ctest --preset tsan
