#!/usr/bin/env bash
# Installs what is missing, builds the library and the krvalue tool, and runs
# the tool on a handful of example values, good and bad.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DKRVALUEUTILS_BUILD_TESTS=OFF \
  >/dev/null
cmake --build build/release --target krvalueutils_tool

krvalue=build/release/tools/krvalue

# Shows a command line and what it printed; a failing reader is part of the
# show, so its status is printed instead of stopping the script.
show() {
  printf '\n$ krvalue'
  local word
  for word in "$@"; do
    if [[ "$word" =~ ^[A-Za-z0-9._/-]+$ ]]; then printf ' %s' "$word"; else printf " '%s'" "$word"; fi
  done
  printf '\n'
  local status=0
  "$krvalue" "$@" || status=$?
  [ "$status" -eq 0 ] || printf '(exit status %d)\n' "$status"
}

show list
show read float 2.5 --name speed --field x
show read float 3 --name speed --field x
show read float '"a"' --name speed --field x
show read float null --name speed --field x
show read int 2.9 --name count
show read float-clip 1.5 --min -1 --max 1 --name setSpeed --field x
show read check-array '[]' --name targets
show read axis-mask 7 --name mask
show read axis-masks '[7, 56, "z"]' --name masks
show read frames 2 --name frames
show read frame 5 --name frame
show read duration '[1, 500000]' --name period
show read duration '["s", null]' --name period
show write duration 1500000000
show read pose2d '[1, 2, 0.5]' --name target
show read pose2d '[1, 2]' --name target
show read pose2ds '[[1, 2, 3], [4, 5, 6, 7]]' --name targets
show read transform '[1, 0, 0, 0.5, 0, 1.004, 0, 0, 0, 0, 1, 0]' --name handPose
show read transform '[2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0]' --name handPose
show read position6d-groups '[[[1, 2, 3, 0, 0, 0], [4, 5, 6, 0, 0, 0]], [7, 8, 9, 0, 0, 0]]'
show write pose2d-pos-vel-acc '[[1, 2, 3], [4, 5, 6], [7, 8, 9]]'
show read float-groups '[[1, 2], 3]'
show read bools '[true, null, "x", 0]'
show read key-value-map '[["speed", 0.5], ["mode", "fast"], ["speed", 1]]' --name config
show read rest-requests '[[["LArm", "RArm"], "Safe"], [["Head"], [0.5]]]' --name rest
show read rest-requests '[[["LArm"], "Custom"]]' --name rest
show write rest-requests '[[["LArm", "RArm"], "Safe"]]'
show read support-sequences '[["walk", [0.5, 1.0], true], ["walk", [], []]]' --name supports
show read touch-with-ints '[["LFoot", true, [3]], ["RFoot", false]]' --name touch
show read navigation '[[0, 0]]' --name nav
show read key '[1, [7, 0.1, 0], [3, -0.1, 0]]' --name angles
show read control-points '[10, 20, 30]' --times '[0.5, 1.0, 1.5]' --min-time 1.0 --name angles
show write motion-config '[["Enabled", "1"], ["Speed", 2], ["Mode", [1]]]'
show path '["Composed", ["Line", [1.0, 0.0]], ["Circle", [0.0, 0.5], 1.5707964], ["Line", [1.0, 0.0]]]'
show path '["Flat", [0.0, 1.0], 1.5707964, [1.0, 2.5], [2.0, 2.5], -1.5707964]' --start 1,2,0.5 \
  --svg build/release/flat-path.svg
show path '["Line", [1, 2], 3]' --name p
show path '["Composed", ["Line", [1.0, 0.0]], ["Composed"]]' --name p
show path '["Line", [1.0, 0.0]]' --start 1,2
show path '["Composed", ["Line", [1, 0]], ["Flat", [0, 1], 1.5, [2, 1], [2, 2], -1]]' --factory
show path '["Composed", ["Line", [1, 0]], ["Circle", [0, 1]]]' --factory --name p
show path '["Composed", ["Line", [1, 0]]]' --direct --name p
show trajectory '["NonHolonomic", ["Line", [1.0, 0.0]], 0.0]'
show trajectory '["Holonomic", ["Circle", [0.0, 1.0], 1.5707964], 1.5707964, 5.0]' --limits 0.3,0.3
show trajectory '["Holonomic", ["Line", [1.0, 0.0]]]' --name move
show trajectory '["NonHolonomic", ["Line", [1.0, 0.0]], 0.0]' --limits 0,1
show trajectory '["NonHolonomic", ["Line", [1.0, 0.0]], 2.0]' --kind composed --name move
