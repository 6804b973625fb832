#!/usr/bin/env bash
# Fails when a C++ file of the project differs from what clang-format makes of it.
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files -z --cached --others --exclude-standard -- '*.h' '*.cpp' |
  xargs -0 -r clang-format --dry-run --Werror
echo "format: clean"
