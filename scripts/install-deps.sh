#!/usr/bin/env bash
# Installs the Debian packages that building and testing matgraph needs, and only those
# that are missing. Safe to run any number of times.
set -euo pipefail

packages=(
  cmake ninja-build g++ clang clang-format
  libclang-rt-dev  # libFuzzer and the sanitizer runtimes of clang (the fuzz preset)
  picojson-dev
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  python3-dev pybind11-dev python3-pybind11 python3-pytest  # the Python package, python/
  pkg-config  # the test that builds a host with pkg-config
  python3-jsonschema doxygen  # the tests of the file-format schema and of the header comments
  libcli11-dev  # the command line of the matgraph tool
  locales  # a locale with a decimal comma, for the test that saving ignores the locale
)

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi

if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
  echo "Generating the locale de_DE.UTF-8"
  echo "de_DE.UTF-8 UTF-8" | $sudo tee -a /etc/locale.gen >/dev/null
  $sudo locale-gen >/dev/null
fi
