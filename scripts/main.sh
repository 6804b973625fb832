#!/usr/bin/env bash
# The main job: installs what is missing, builds matgraph and runs the example host on the
# example libraries, a base library and a library of graphs under it.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
cmake --preset default >/dev/null
cmake --build --preset default
./build/default/examples/matgraph_example_host examples/base.matlib examples/materials.matlib
