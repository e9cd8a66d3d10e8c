#!/usr/bin/env bash
# Installs every Debian package the build, the tests, the tools and the API
# reference need.
# Safe to run again: packages already present are left alone.
set -euo pipefail

packages=(
  build-essential cmake ninja-build clang libclang-rt-14-dev lld pkg-config doxygen
  libboost-dev libboost-chrono-dev libboost-system-dev
  nlohmann-json3-dev libcli11-dev libeigen3-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  python3-dev pybind11-dev python3-numpy python3-pytest python3-hypothesis python3-mypy python3-jsonschema
  python3-pip python3-venv python3-setuptools python3-wheel python3-build
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

sudo=""
if [ "$(id -u)" -ne 0 ]; then
  sudo="sudo"
fi

echo "installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
