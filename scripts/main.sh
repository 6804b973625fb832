#!/usr/bin/env bash
# The main job: installs what is missing, builds matgraph, runs the example host on the
# example libraries (a base library and a library of graphs under it), then checks them
# and shows what they hold with the matgraph command.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
cmake --preset default >/dev/null
cmake --build --preset default
./build/default/examples/matgraph_example_host examples/base.matlib examples/materials.matlib

matgraph=./build/default/tools/matgraph/matgraph
$matgraph check examples/base.matlib
$matgraph check --parent examples/base.matlib examples/materials.matlib
$matgraph info examples/base.matlib
$matgraph info --parent examples/base.matlib examples/materials.matlib
