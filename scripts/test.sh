#!/usr/bin/env bash
# Installs what is missing, then builds and runs every test:
#   1. g++, warnings (the conversion warnings too) as errors, the whole suite
#      and the benchmark's build;
#   2. clang++, warnings (the conversion warnings too) as errors, one build
#      under AddressSanitizer and UndefinedBehaviorSanitizer that serves both
#      the whole suite and the fuzz targets (libraries instrumented for libFuzzer too): the suite,
#      then every fuzz target replaying its corpora once, the hand-written
#      seeds and the minimized corpus of the last campaign (exploring for new
#      inputs is scripts/fuzz.sh's job);
#   3. clang++ under ThreadSanitizer, only test_threads and what it links:
#      readers, writers and warnings from several threads at once;
#   4. packaging, each a small project under tests/packaging/ whose program
#      runs: the g++ build installed and used through find_package and through
#      pkg-config; the platform libraries built apart as static libraries,
#      each running its own suites, and installed, and a parent project adding
#      this tree with add_subdirectory that builds the library statically
#      against them; the installed tool serving the installed schemas;
#   5. the Python package installed by `pip install .` with and without build
#      isolation, and built as a wheel by `python3 -m build`, each into a fresh
#      venv, where the example runs.
# Compilations go through ccache when it is installed.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh

jobs=$(nproc)
step() { printf '\n=== %s\n' "$*"; }

launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  # Paths below the tree are hashed relative to the build directory, so
  # another checkout or build directory of the same sources hits the cache.
  export CCACHE_BASEDIR="${CCACHE_BASEDIR:-$PWD}"
fi
# lld links the many sanitizer executables faster than the default linker.
lld=(-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld -DCMAKE_SHARED_LINKER_FLAGS=-fuse-ld=lld)
# Builds for checking, not for shipping. With g++ the libraries are optimised
# enough for its flow warnings (half the time of -O2 -g) and the tests, the
# tool and the Python module are not (a fifth less CPU time for the build);
# under the sanitizers the libraries, where the suites spend their time,
# optimised and the rest not, with debug information only as far as sanitizer
# reports need it (file and line).
checked=(-DCMAKE_BUILD_TYPE=CI "-DCMAKE_CXX_FLAGS_CI=-O0 -DNDEBUG"
  -DKRVALUEUTILS_LIBRARY_OPTIONS=-O1)
sanitized=(-DCMAKE_BUILD_TYPE=CI "-DCMAKE_CXX_FLAGS_CI=-O0 -gline-tables-only"
  -DKRVALUEUTILS_LIBRARY_OPTIONS=-O1)

step "g++: build and test"
cmake -S . -B build/gcc -G Ninja -DCMAKE_CXX_COMPILER=g++ "${checked[@]}" -DKRVALUEUTILS_WERROR=ON "${launcher[@]}" \
  -DKRVALUEUTILS_EXTRA_WARNINGS=ON -DCMAKE_INSTALL_PREFIX="$PWD/build/install" >/dev/null
cmake --build build/gcc -j "$jobs"
ctest --test-dir build/gcc --output-on-failure -j "$jobs"

step "clang++ with AddressSanitizer and UndefinedBehaviorSanitizer: build, test, replay the fuzz corpora"
asan=build/clang-asan
cmake -S . -B "$asan" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DKRVALUEUTILS_WERROR=ON \
  -DKRVALUEUTILS_EXTRA_WARNINGS=ON "${launcher[@]}" "${lld[@]}" "${sanitized[@]}" \
  -DKRVALUEUTILS_BUILD_FUZZ=ON -DKRVALUEUTILS_BUILD_BENCH=OFF >/dev/null
cmake --build "$asan" -j "$jobs"
ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --test-dir "$asan" --output-on-failure -j "$jobs"

# Runs every input of a fuzz target's corpora once; prints one line per target.
replay() {
  local target=$1
  local campaign="$asan/fuzz/replay/$target"
  rm -rf "$campaign"
  mkdir -p "$campaign"
  if [ -f "fuzz/corpus/campaign/$target.tar.xz" ]; then
    tar -C "$campaign" -xJf "fuzz/corpus/campaign/$target.tar.xz"
  fi
  local corpora=("$campaign")
  if [ -d "fuzz/corpus/$target" ]; then
    corpora+=("fuzz/corpus/$target")
  fi
  local log="$asan/fuzz/$target.replay.log" status=0
  ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
    "$asan/fuzz/$target" -runs=0 -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
    "${corpora[@]}" >"$log" 2>&1 || status=$?
  if [ "$status" -ne 0 ]; then
    printf '%-16s FAILED (status %d); %s ends:\n' "$target" "$status" "$log"
    tail -n 40 "$log"
    return 1
  fi
  printf '%-16s %s inputs replayed, clean\n' "$target" \
    "$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")"
}
for target in fuzz_text fuzz_json_diff fuzz_values fuzz_geometry fuzz_state fuzz_paths fuzz_roundtrip; do
  replay "$target"
done

step "clang++ with ThreadSanitizer: readers, writers and warnings from several threads"
cmake -S . -B build/clang-tsan -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DKRVALUEUTILS_WERROR=ON \
  "${launcher[@]}" "${lld[@]}" "${sanitized[@]}" -DKRVALUEUTILS_SANITIZE=thread \
  -DKRVALUEUTILS_BUILD_TOOLS=OFF -DKRVALUEUTILS_BUILD_BENCH=OFF >/dev/null
cmake --build build/clang-tsan -j "$jobs" --target krvalueutils_test_threads
TSAN_OPTIONS=halt_on_error=1 ctest --test-dir build/clang-tsan -R '^test_threads$' \
  --output-on-failure

step "packaging: the installed CMake package, pkg-config, a parent project, a static build"
# The g++ build installed: a CMake project finds the package, and a one-file
# program is compiled with the flags pkg-config gives.
rm -rf build/install
cmake --install build/gcc >/dev/null
# The schemas are installed as the files they are, and the installed tool
# serves the same text.
for file in schema/*.schema.json; do
  reader=$(basename "$file" .schema.json)
  cmp "$file" "build/install/share/krvalueutils/schema/$reader.schema.json"
  build/install/bin/krvalue schema "$reader" | cmp - "$file"
done
cmake -S tests/packaging/consumer -B build/consumer -G Ninja -DCMAKE_CXX_COMPILER=g++ \
  "${launcher[@]}" -DCMAKE_PREFIX_PATH="$PWD/build/install" >/dev/null
cmake --build build/consumer
build/consumer/consumer
mkdir -p build/pkg-config
# shellcheck disable=SC2046 # pkg-config prints several flags
g++ -o build/pkg-config/consumer tests/packaging/consumer/main.cpp \
  $(PKG_CONFIG_PATH="$PWD/build/install/lib/pkgconfig" pkg-config --cflags --libs krvalueutils) \
  -Wl,-rpath,"$PWD/build/install/lib"
build/pkg-config/consumer

# The platform libraries built on their own as static libraries, each running
# its own suites, and installed apart, then a parent project that adds this
# tree with add_subdirectory and builds the library, static too, against them;
# no optimisation, to build fast.
rm -rf build/platform-install
for library in zu krvalue krmath; do
  cmake -S "platform/$library" -B "build/platform/$library" -G Ninja -DCMAKE_CXX_COMPILER=g++ \
    "${launcher[@]}" -DBUILD_SHARED_LIBS=OFF -DKRVALUEUTILS_WERROR=ON \
    -DCMAKE_INSTALL_PREFIX="$PWD/build/platform-install" >/dev/null
  cmake --build "build/platform/$library" -j "$jobs"
  ctest --test-dir "build/platform/$library" --output-on-failure -j "$jobs"
  cmake --install "build/platform/$library" >/dev/null
done
cmake -S tests/packaging/subproject -B build/subproject -G Ninja -DCMAKE_CXX_COMPILER=g++ \
  "${launcher[@]}" -DBUILD_SHARED_LIBS=OFF -DKRVALUEUTILS_WERROR=ON \
  -DKRVALUEUTILS_USE_INSTALLED_PLATFORM=ON -DCMAKE_PREFIX_PATH="$PWD/build/platform-install" \
  >/dev/null
cmake --build build/subproject -j "$jobs"
if readelf -d build/subproject/subproject | grep -E 'NEEDED.*lib(krvalueutils|krvalue|krmath|zu)\.'; then
  echo "the static build links a shared library of this tree" >&2
  exit 1
fi
build/subproject/subproject

step "Python package: pip install . (isolated and not) and a wheel, each in a fresh venv"
# The package's own build (pyproject.toml, setup.py): the libraries linked
# statically into the module, nothing else built. Each way of installing gets
# a fresh venv (numpy from the system) and runs the example from outside the
# tree; the CMake build directory under build/temp.* serves all three.
rm -rf build/wheel build/venv build/venv-pip build/venv-isolated build/wheelhouse
# Runs the example with the package installed in venv $1.
try_venv() {
  (cd "$1" && bin/python -c \
    'import krvalueutils, sys; assert "/venv" in krvalueutils.__file__, krvalueutils.__file__' &&
    bin/python ../../examples/python/robot_motion.py >/dev/null)
}
export CMAKE_ARGS="${launcher[*]}"
# 1. python3 -m build --wheel --no-isolation, the wheel installed.
(cd build && /usr/bin/python3 -m build --wheel --no-isolation --outdir wheel .. >/dev/null)
/usr/bin/python3 -m venv --system-site-packages build/venv
build/venv/bin/pip install --quiet --no-index --no-deps build/wheel/krvalueutils-*.whl
try_venv build/venv
# 2. pip install --no-build-isolation ., from the machine's packages alone.
/usr/bin/python3 -m venv --system-site-packages build/venv-pip
build/venv-pip/bin/pip install --quiet --no-index --no-build-isolation .
try_venv build/venv-pip
# 3. pip install . with build isolation: pip installs the declared build
# requirements into a fresh environment. With no package index here, they come
# from a local wheelhouse made of the distribution's setuptools and wheel.
mkdir -p build/wheelhouse
cp /usr/share/python-wheels/setuptools-*.whl build/wheelhouse/
scripts/wheel-from-distribution wheel build/wheelhouse
/usr/bin/python3 -m venv --system-site-packages build/venv-isolated
build/venv-isolated/bin/pip install --quiet --no-index --find-links build/wheelhouse .
try_venv build/venv-isolated
unset CMAKE_ARGS

step "all tests passed"
