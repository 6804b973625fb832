#!/bin/sh
# Builds the consumer with nothing but a compiler and pkg-config, as a host without CMake
# does, then runs it.
#
#   build-with-pkg-config.sh PKG_CONFIG PC_DIR VERSION CXX OUTPUT_DIR "EXTRA FLAGS"
#
# PC_DIR is the installed lib/pkgconfig; EXTRA FLAGS are this build's compiler and linker
# flags (the sanitizers), split into words on purpose.
set -eu
pkgConfig=$1
export PKG_CONFIG_PATH="$2"
version=$3
compiler=$4
output=$5
extraFlags=$6
source="$(dirname "$0")/consumer.cpp"

found=$("$pkgConfig" --modversion matgraph)
if [ "$found" != "$version" ]; then
  echo "pkg-config finds matgraph $found in $PKG_CONFIG_PATH, expected $version" >&2
  exit 1
fi
libdir=$("$pkgConfig" --variable=libdir matgraph)
mkdir -p "$output"
# The installed library is in no system directory: the consumer finds it by its rpath.
# shellcheck disable=SC2046,SC2086
"$compiler" -std=c++17 $extraFlags "$source" $("$pkgConfig" --cflags --libs matgraph) \
  -Wl,-rpath,"$libdir" -o "$output/consumer"
"$output/consumer"
