#!/usr/bin/env bash
# Installs what is missing, then builds and runs every test:
#   1. g++, warnings as errors, the whole suite;
#   2. clang++, warnings as errors, the whole suite under AddressSanitizer and
#      UndefinedBehaviorSanitizer;
#   3. clang++ under ThreadSanitizer: readers, writers and warnings from
#      several threads at once;
#   4. every fuzz target (libFuzzer, ASan+UBSan) for KR_FUZZ_SECONDS (default
#      20) seconds on its seed corpus;
#   5. installs the g++ build and builds an outside project against the
#      installed CMake package, then runs it.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh

jobs=$(nproc)
step() { printf '\n=== %s\n' "$*"; }

step "g++: build and test"
cmake -S . -B build/gcc -G Ninja -DCMAKE_CXX_COMPILER=g++ -DKR_WERROR=ON \
  -DCMAKE_INSTALL_PREFIX="$PWD/build/install" >/dev/null
cmake --build build/gcc -j "$jobs"
ctest --test-dir build/gcc --output-on-failure -j "$jobs"

step "clang++ with AddressSanitizer and UndefinedBehaviorSanitizer: build and test"
cmake -S . -B build/clang-asan -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DKR_WERROR=ON \
  -DCMAKE_BUILD_TYPE=Debug -DKR_SANITIZE=address,undefined >/dev/null
cmake --build build/clang-asan -j "$jobs"
ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --test-dir build/clang-asan --output-on-failure -j "$jobs"

step "clang++ with ThreadSanitizer: readers, writers and warnings from several threads"
cmake -S . -B build/clang-tsan -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DKR_WERROR=ON \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKR_SANITIZE=thread -DKR_BUILD_TOOLS=OFF \
  -DKR_BUILD_BENCH=OFF >/dev/null
cmake --build build/clang-tsan -j "$jobs" --target test_threads
TSAN_OPTIONS=halt_on_error=1 ctest --test-dir build/clang-tsan -R '^test_threads$' \
  --output-on-failure

step "fuzz every target for ${KR_FUZZ_SECONDS:-20} s on its seed corpus"
scripts/fuzz.sh "${KR_FUZZ_SECONDS:-20}"

step "install, then build an outside project against the installed package"
rm -rf build/install
cmake --install build/gcc >/dev/null
cmake -S examples/consumer -B build/consumer -G Ninja -DCMAKE_CXX_COMPILER=g++ \
  -DCMAKE_PREFIX_PATH="$PWD/build/install" >/dev/null
cmake --build build/consumer
build/consumer/consumer

step "all tests passed"
