#!/usr/bin/env bash
# The main job: installs what is missing, builds matgraph and runs the example host.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
cmake --preset default >/dev/null
cmake --build --preset default
./build/default/examples/matgraph_example_host
