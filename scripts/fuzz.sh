#!/usr/bin/env bash
# Builds the fuzz targets (clang++, libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer) and runs each for SECONDS on its seed corpus,
# as many at a time as there are cores.
#
#   scripts/fuzz.sh [--save] [SECONDS] [TARGET ...]   default: 20 seconds, every target
#
# With --save, a campaign's result becomes the new starting point: each
# target's corpus is minimized (libFuzzer's -merge=1) and written to
# fuzz/corpus/campaign/TARGET.tar.xz, to be committed.
#
# Each target reads the hand-written seeds in fuzz/corpus/TARGET and works in
# build/fuzz/corpus/TARGET, which starts as the minimized corpus of the last
# long campaign (fuzz/corpus/campaign/TARGET.tar.xz) and collects the new
# inputs. Crashing inputs go to build/fuzz/artifacts/TARGET, each run's output
# to build/fuzz/TARGET.log. Compilations go through ccache when it is installed.
# The test command only replays the corpora (one run per input) in its own
# sanitizer build; this script is for exploring.
# Each target's summary line gives its executions and its coverage at the
# end: edges (cov) and features (ft), as libFuzzer counts them.
# Exits non-zero when a target crashed, leaked, timed out or failed a check.
set -euo pipefail
cd "$(dirname "$0")/.."

save=false
if [ "${1:-}" = --save ]; then
  save=true
  shift
fi
seconds=${1:-20}
shift || true
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=(fuzz_text fuzz_json_diff fuzz_values fuzz_geometry fuzz_state fuzz_paths fuzz_roundtrip)
fi

scripts/install-deps.sh
launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
cmake -S . -B build/fuzz -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DKRVALUEUTILS_BUILD_FUZZ=ON -DKRVALUEUTILS_BUILD_TESTS=OFF -DKRVALUEUTILS_BUILD_TOOLS=OFF \
  -DKRVALUEUTILS_BUILD_BENCH=OFF -DKRVALUEUTILS_WERROR=ON "${launcher[@]}" >/dev/null
cmake --build build/fuzz --target "${targets[@]/#/krvalueutils_}"

# Runs one target; prints one summary line and returns its status.
run_target() {
  local target=$1 seconds=$2
  local dictionary=()
  if [ -f "fuzz/$target.dict" ]; then
    dictionary=(-dict="fuzz/$target.dict")
  elif [ "$target" != fuzz_text ] && [ "$target" != fuzz_roundtrip ]; then
    dictionary=(-dict=fuzz/readers.dict)
  fi
  local corpus=("build/fuzz/corpus/$target")
  mkdir -p "${corpus[0]}" "build/fuzz/artifacts/$target"
  if [ -z "$(ls -A "${corpus[0]}")" ] && [ -f "fuzz/corpus/campaign/$target.tar.xz" ]; then
    tar -C "${corpus[0]}" -xJf "fuzz/corpus/campaign/$target.tar.xz"
  fi
  if [ -d "fuzz/corpus/$target" ]; then
    corpus+=("fuzz/corpus/$target")
  fi
  local status=0
  ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
    "build/fuzz/fuzz/$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 -artifact_prefix="build/fuzz/artifacts/$target/" "${dictionary[@]}" \
    "${corpus[@]}" >"build/fuzz/$target.log" 2>&1 || status=$?
  local runs coverage
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "build/fuzz/$target.log")
  coverage=$(grep -E '^#[0-9]+.*cov: [0-9]+ ft: [0-9]+' "build/fuzz/$target.log" | tail -n 1 |
    sed -E 's/.*cov: ([0-9]+) ft: ([0-9]+).*/cov \1, ft \2/')
  if [ "$status" -ne 0 ]; then
    printf '%-16s FAILED (status %d); build/fuzz/%s.log ends:\n' "$target" "$status" "$target"
    tail -n 40 "build/fuzz/$target.log"
    return 1
  fi
  printf '%-16s %s runs in %s s, %s, clean\n' "$target" "${runs:-?}" "$seconds" "${coverage:-cov ?}"
}
export -f run_target

printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I{} bash -c 'run_target "$@"' _ {} "$seconds"

if [ "$save" = true ]; then
  for target in "${targets[@]}"; do
    minimized="build/fuzz/minimized/$target"
    rm -rf "$minimized"
    mkdir -p "$minimized"
    "build/fuzz/fuzz/$target" -merge=1 -timeout=10 -rss_limit_mb=2048 "$minimized" \
      "build/fuzz/corpus/$target" >"build/fuzz/$target.merge.log" 2>&1
    mkdir -p fuzz/corpus/campaign
    tar -C "$minimized" --sort=name --owner=0 --group=0 --numeric-owner --mtime=@0 -cJf \
      "fuzz/corpus/campaign/$target.tar.xz" .
    printf '%-16s %s inputs saved to fuzz/corpus/campaign/%s.tar.xz\n' "$target" \
      "$(find "$minimized" -type f | wc -l)" "$target"
  done
fi
