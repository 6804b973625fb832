#!/usr/bin/env bash
# Installs the Debian packages that building and testing matgraph needs, and only those
# that are missing. Safe to run any number of times.
set -euo pipefail

packages=(
  cmake ninja-build g++ clang clang-format
  libclang-rt-dev  # libFuzzer and the sanitizer runtimes of clang (the fuzz preset)
  picojson-dev
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  pkg-config  # the test that builds a host with pkg-config
  python3-jsonschema doxygen  # the tests of the file-format schema and of the header comments
  libcli11-dev  # the command line of the matgraph tool
)

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "Installing: ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
