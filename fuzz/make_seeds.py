#!/usr/bin/env python3
"""Writes the seed corpora of the reader fuzz targets into fuzz/corpus/<target>/.

Every seed is a text-form input. FuzzedDataProvider takes the option bytes
and the decoding byte from the end of the input, so a seed is laid out as

    <value text> '1' <option bytes, the first one consumed last>

where '1' (low bit set) selects the text decoding. Each target reads its
options in a fixed order (see the comment at the top of its source); the
tables below give them in that order and this script reverses them.

Deterministic: running it again writes the same files (seed_000, seed_001,
...) and removes stale seeds of the same targets.
"""

import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
TEXT_MODE = b"1"

# --- fuzz_values -----------------------------------------------------------
# Options: clip min index, clip max index, bool count, number of times,
# index of the time to replace (8 or more: none), replacement index, minimum
# time index. Indices are into kOptionFloats of fuzz_values.cpp:
# 0 0.0, 1 -0.0, 2 1.0, 3 -1.0, 4 0.5, 5 2.0, 6 1e30, 7 -1e30, 8 FLT_MAX,
# 9 denorm_min, 10 inf, 11 -inf, 12 NaN.


def values_options(times=0, clip=(3, 2), count=3, replace=(15, 0), min_time=0):
    return [clip[0], clip[1], count, times, replace[0], replace[1], min_time]


KEY = "[1.5, [2, -0.1, 0.2], [2, 0.1, -0.3]]"
VALUES = [
    ("1", values_options()),
    ("2.9", values_options(clip=(5, 0))),
    ("-2.9", values_options(clip=(2, 3))),
    ("63", values_options()),
    ("64", values_options()),
    ("1e30", values_options(clip=(12, 2))),
    ("-2147483648", values_options(clip=(11, 10))),
    ('"1"', values_options()),
    ('"x"', values_options()),
    ("true", values_options(count=5)),
    ("null", values_options()),
    ("[]", values_options()),
    ("[1, 2.5, 3]", values_options(times=3)),
    ("[1, 2, 0]", values_options(times=3)),
    ('[1, "x"]', values_options()),
    ("[[1.0, 2.0], [3]]", values_options()),
    ("[[1.0, 2.0, 3.0]]", values_options()),
    ("[[]]", values_options()),
    ('["a", "b", "c"]', values_options()),
    ('[true, 1, 0.0, "x", null, []]', values_options()),
    ('[["a", 1], ["b", [2, 3]], ["a", 3]]', values_options()),
    ('[["a", 0, 1.5], ["b", 0, "v"]]', values_options()),
    ('[["a"], ["b", 2]]', values_options()),
    (KEY, values_options()),
    ("[0, [9, 0, 0], [-1, 0.5, 0]]", values_options()),
    ("[0, [3, 0, 0]]", values_options()),
    ("[0.1, 0.5, 0.2, 0.4]", values_options(times=4, min_time=4)),
    ("[0.1, 0.5, 0.2]", values_options(times=3, replace=(1, 12))),
    ("[" + KEY + ", " + KEY + "]", values_options(times=2, min_time=4)),
    ("[" + KEY + ", 0.5]", values_options(times=2)),
    ("[1, 500000]", values_options()),
    ("[-1, 2147483647]", values_options()),
    ("[2147483647, 2147483647]", values_options()),
    ("[1, 2, 3, 4, 5, 6]", values_options(count=64)),
]

# --- fuzz_geometry and fuzz_state: no options -------------------------------

IDENTITY12 = "[1.0, 0.0, 0.0, 0.5, 0.0, 1.0, 0.0, -1.0, 0.0, 0.0, 1.0, 2.0]"
IDENTITY16 = "[1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1]"
ROTATION_Z = "[0.0, -1.0, 0.0, 1.0, 1.0, 0.0, 0.0, 2.0, 0.0, 0.0, 1.0, 3.0]"
NEARLY = "[1.005, 0.0, 0.0, 0.0, 0.0, 1.0, 0.004, 0.0, 0.0, 0.0, 0.998, 0.0]"
SCALED = "[2.0, 0.0, 0.0, 0.0, 0.0, 2.0, 0.0, 0.0, 0.0, 0.0, 2.0, 0.0]"
GEOMETRY = [
    "[1.0, 2.0]",
    "[[1.0, 2.0, 5]]",
    "[1, 2, 0.5]",
    "[1, 2, 0.5, 3.0]",
    "[[1.0, 2.0, 0.5], [3.0, 4.0, 0.1, 7.5]]",
    "[[1.0, 2.0], [3.0, 4.0], [[5.0, 6.0]]]",
    "[[1.0, 2.0, 3.0], [4.0, 5.0, 6.0]]",
    "[1, 2, 3, 4, 5, 6]",
    "[[1, 2, 3, 4, 5, 6], [0.0, 0.0, 0.0, 0.1, 0.2, 0.3]]",
    "[[[1, 2, 3, 4, 5, 6]], [[1, 2, 3, 4, 5, 6], [1, 1, 1, 1, 1, 1]]]",
    IDENTITY12,
    IDENTITY16,
    ROTATION_Z,
    NEARLY,
    SCALED,
    "[" + IDENTITY12 + ", " + ROTATION_Z + "]",
    "[[" + IDENTITY16 + "], [" + IDENTITY12 + ", " + NEARLY + "]]",
    '[1, "x"]',
    "[1, 2, 3, 4, 5]",
    "[1, 2, 3, 4, 5, 6, 7]",
    "[]",
    "[[]]",
    "null",
    '"Line"',
    "[[1.0, 2.0], 3]",
    "[[1.0], [2.0]]",
    "[true, 2.0, 3.0]",
]

REST = [
    '[[["LArm", "RArm"], "Safe"]]',
    '[[["LArm"], "Immediate"], [["Head"], [0.5]]]',
    '[[["LArm", "RArm"], ["Safe", "Custom"]]]',
    '[[["LArm", "RArm"], ["Safe"]]]',
    '[[["LArm"], "Custom"]]',
    '[[["LArm", "LArm"], ["Safe", "Immediate"]]]',
    '[[["Head"], [1.0, 2.0]]]',
    '[[["Head", "LLeg"], [1, 2.0]]]',
    '[[[], "Safe"]]',
    '[[["RLeg"], []]]',
]
SUPPORT = [
    '["walk", [0.1, 0.2], [true, false]]',
    '["walk", [], []]',
    '["walk", [0.1, 0.2], true]',
    '[["LFoot", [0.1], [true]], ["RFoot", [0.2, 0.3], [1, 0]]]',
    '[["x", [1.0], [true]], ["x", [2.0], [false]]]',
    '["walk", [0.1, 0.2], [true]]',
    '[1, [0.1], [true]]',
]
STATUS = [
    '[2, ["LLeg", "RLeg"]]',
    "[1, []]",
    '[1.5, ["Head"], "extra"]',
    "[1]",
    '[["LFoot", true], ["RFoot", false, [3]], ["LFoot", false]]',
    '[["Head", true, [2.5]]]',
    '[["LFoot", 1]]',
    '[[0, 0, [[1.0, 2.0], [3.0, 4.0]]], ["a", "b", [5.0, 6.0]]]',
    "[[0, 0]]",
    '["torso", "camera", [[1.0, 2.0, 3.0]], ' + IDENTITY16 + ", [1, 500]]",
    '["torso", "camera", [], ' + IDENTITY16 + ", [0, 0]]",
    '["torso", "camera", [[1.0, 2.0]], ' + IDENTITY16 + ", [1, 500]]",
    '["torso", "camera", [], [2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1], [1, 5]]',
]
STATE = REST + SUPPORT + STATUS

# --- fuzz_paths --------------------------------------------------------------
# Options: first limits (velocity, acceleration), second limits, period,
# fraction, start x, y, theta, start velocity. Limit indices: 0 1.0, 1 0.5,
# 2 2.0, 3 0.1, 4 10, 5 1e-6, 6 1e30, 7 0, 8 -1, 9 inf, 10 NaN. Periods:
# 0 1/100, 1 1/1000, 2 1/3, 3 1, 4 1/50, 5 0, 6 -1/100. Fractions: 0 1.0,
# 1 0.5, 2 0.25, 3 1e-3, 4 0, 5 -0.5, 6 1.5, 7 NaN, 8 inf. Start values:
# 0 0.0, 1 1.0, 2 -2.5, 3 0.5, 4 pi, 5 100, 6 1e6, 7 1e30, 8 -0.0, 9 NaN,
# 10 inf. Velocities: 0 0.0, 1 1.0, 2 -3.0, 3 NaN.


def paths_options(limits=(0, 0, 0, 0), period=0, fraction=0, start=(0, 0, 0), velocity=0):
    return list(limits) + [period, fraction] + list(start) + [velocity]


LINE = '["Line", [1.0, 0.0]]'
CIRCLE = '["Circle", [0.0, 1.0], 1.5707964]'
FLAT = '["Flat", [0.0, 0.5], 1.5707964, [1.0, 1.0], [1.0, 1.5], -1.5707964]'
COMPOSED = '["Composed", ' + LINE + ", " + CIRCLE + "]"
HOLONOMIC = '["Holonomic", ' + LINE + ", 1.5707964, 2.0]"
NON_HOLONOMIC = '["NonHolonomic", ' + CIRCLE + ", 0.0]"
PATHS = [
    (LINE, paths_options()),
    (LINE, paths_options(start=(1, 2, 3))),
    (CIRCLE, paths_options(start=(2, 1, 4))),
    (FLAT, paths_options()),
    ('["Flat", [0, 0], 0, [2, 0], [0, 0], 0]', paths_options()),
    (COMPOSED, paths_options(start=(1, 1, 3))),
    ('["Composed"]', paths_options()),
    ('["Composed", ["Composed", ' + LINE + "]]", paths_options()),
    ('["Line", [1, 0], 2]', paths_options()),
    ('["Circle", [0, 0], 6.2831855]', paths_options()),
    ('["Arc", [1.0, 0.0]]', paths_options()),
    ("[1, [1.0, 0.0]]", paths_options()),
    ("[]", paths_options()),
    ('["Line", [1e30, 0.0]]', paths_options()),
    (LINE, paths_options(start=(9, 0, 0))),
    (HOLONOMIC, paths_options(limits=(1, 1, 2, 2), start=(1, 2, 3))),
    (HOLONOMIC, paths_options(limits=(7, 0, 0, 0))),
    (HOLONOMIC, paths_options(period=5)),
    (HOLONOMIC, paths_options(fraction=6)),
    (HOLONOMIC, paths_options(start=(10, 0, 0), velocity=3)),
    (NON_HOLONOMIC, paths_options(period=2, velocity=1)),
    ('["NonHolonomic", ["Composed", ["Line", [1, 0]], ["Line", [0, 1]]], 5.0]',
     paths_options(limits=(3, 3, 1, 1), fraction=1)),
    ('["NonHolonomic", ' + FLAT + ", 1.0]", paths_options(limits=(5, 5, 0, 0), period=1)),
    ('["Composed", ' + HOLONOMIC + ", " + NON_HOLONOMIC + "]", paths_options(start=(3, 2, 4))),
    ('["Composed", ["Composed", ' + HOLONOMIC + "]]", paths_options()),
    ('["Holonomic", ["Composed"], 0.0, 1.0]', paths_options()),
    ('["Holonomic", ' + LINE + ", 0.5]", paths_options()),
    ('["NonHolonomic", ' + LINE + ", -1.0]", paths_options()),
    ('["NonHolonomic", ' + LINE + ", 1e30]", paths_options()),
    ('["Holonomic", ' + COMPOSED + ', "fast", 1.0]', paths_options()),
]

TARGETS = {
    "fuzz_values": VALUES,
    "fuzz_geometry": [(text, []) for text in GEOMETRY],
    "fuzz_state": [(text, []) for text in STATE],
    "fuzz_paths": PATHS,
}


def seed_bytes(text, options):
    """The value text, the decoding byte, then the options last-consumed first."""
    return text.encode("utf-8") + TEXT_MODE + bytes(reversed(options))


def write_target(target, seeds):
    directory = os.path.join(HERE, "corpus", target)
    os.makedirs(directory, exist_ok=True)
    for name in os.listdir(directory):
        if name.startswith("seed_"):
            os.remove(os.path.join(directory, name))
    for index, (text, options) in enumerate(seeds):
        with open(os.path.join(directory, "seed_%03d" % index), "wb") as out:
            out.write(seed_bytes(text, options))
    return len(seeds)


def main():
    for target, seeds in TARGETS.items():
        count = write_target(target, seeds)
        print("%s: %d seeds" % (target, count))
    return 0


if __name__ == "__main__":
    sys.exit(main())
