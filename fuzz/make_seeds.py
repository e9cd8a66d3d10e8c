#!/usr/bin/env python3
"""Writes the seed corpora of the reader fuzz targets into fuzz/corpus/<target>/.

Every seed is a text-form input. FuzzedDataProvider takes the option bytes
and the decoding byte from the end of the input, so a seed is laid out as

    <value text> '1' <option bytes, the first one consumed last>

where '1' (low bit set) selects the text decoding. Each target reads its
options in the order given at the top of its source; the tables below give
them in that order and this script reverses them.

Deterministic: running it again writes the same files (seed_000, ...) and
removes stale seeds of the same targets.
"""

import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))

# fuzz_values options: clip min, clip max (indices into kOptionFloats:
# 0 0.0, 2 1.0, 3 -1.0, 5 2.0, 10 inf, 11 -inf, 12 NaN), bool count, number
# of times, time to replace (8 or more: none), its replacement, minimum time.
PLAIN = [3, 2, 3, 0, 15, 0, 0]
KEY = "[1.5, [2, -0.1, 0.2], [7, 0.1, -0.3]]"
VALUES = [
    ("2.9", [5, 0, 3, 0, 15, 0, 0]),
    ("1e30", [12, 2, 3, 0, 15, 0, 0]),
    ("63", PLAIN), ('"1"', PLAIN), ("true", [3, 2, 5, 0, 15, 0, 0]), ("null", PLAIN),
    ("[1, 2.5, 3]", [3, 2, 3, 3, 15, 0, 0]),
    ('[1, "x"]', PLAIN), ("[[1.0, 2.0], [3]]", PLAIN), ("[[]]", PLAIN),
    ('["a", "b"]', PLAIN), ('[true, 1, 0.0, "x", null, []]', PLAIN),
    ('[["a", 1], ["b", [2, 3]], ["a", 3]]', PLAIN), ('[["a", 0, 1.5], ["b"]]', PLAIN),
    (KEY, PLAIN),
    ("[0.1, 0.5, 0.2, 0.4]", [3, 2, 3, 4, 15, 0, 4]),
    ("[0.1, 0.5, 0.2]", [3, 2, 3, 3, 1, 12, 0]),
    ("[" + KEY + ", " + KEY + "]", [3, 2, 3, 2, 15, 0, 4]),
    ("[2147483647, 2147483647]", PLAIN),
]

# fuzz_geometry and fuzz_state: no options.
T16 = "[1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1]"
NEARLY = "[1.005, 0.0, 0.0, 0.0, 0.0, 1.0, 0.004, 0.0, 0.0, 0.0, 0.998, 0.0]"
GEOMETRY = [
    "[1.0, 2.0]", "[[1.0, 2.0, 5]]", "[1, 2, 0.5, 3.0]", "[[1.0, 2.0, 0.5], [3.0, 4.0, 0.1]]",
    "[1, 2, 3, 4, 5, 6]", "[[[1, 2, 3, 4, 5, 6]], [[1, 2, 3, 4, 5, 6], [1, 1, 1, 1, 1, 1]]]",
    T16, NEARLY, "[" + NEARLY + ", " + T16 + "]", '[1, "x"]', "[]", "[[1.0, 2.0], 3]",
]
STATE = [
    '[[["LArm", "RArm"], "Safe"]]', '[[["LArm"], "Immediate"], [["Head"], [0.5]]]',
    '[[["LArm", "RArm"], ["Safe", "Custom"]]]', '[[["LArm"], "Custom"]]',
    '["walk", [0.1, 0.2], [true, false]]', '[["x", [1.0], [true]], ["x", [2.0], [false]]]',
    '[2, ["LLeg", "RLeg"]]', '[["LFoot", true], ["RFoot", false, [3]]]',
    '[[0, 0, [[1.0, 2.0], [3.0, 4.0]]], ["a", "b", [5.0, 6.0]]]',
    '["torso", "camera", [[1.0, 2.0, 3.0]], ' + T16 + ", [1, 500]]",
]

# fuzz_paths options: first limits (velocity, acceleration), second limits,
# period, fraction, start x, y, theta, start velocity, as indices into the
# target's tables (0 is the ordinary choice of each; period 5 is zero,
# fraction 6 is 1.5, start value 9 is NaN, velocity 3 is NaN).
AT_REST = [0] * 10
LINE = '["Line", [1.0, 0.0]]'
CIRCLE = '["Circle", [0.0, 1.0], 1.5707964]'
FLAT = '["Flat", [0.0, 0.5], 1.5707964, [1.0, 1.0], [1.0, 1.5], -1.5707964]'
HOLONOMIC = '["Holonomic", ' + LINE + ", 1.5707964, 2.0]"
NON_HOLONOMIC = '["NonHolonomic", ' + CIRCLE + ", 0.0]"
PATHS = [
    (LINE, [0, 0, 0, 0, 0, 0, 1, 2, 3, 0]), (CIRCLE, AT_REST), (FLAT, AT_REST),
    ('["Composed", ' + LINE + ", " + CIRCLE + "]", AT_REST), ('["Composed"]', AT_REST),
    ('["Arc", [1.0, 0.0]]', AT_REST), (HOLONOMIC, [1, 1, 2, 2, 0, 0, 1, 2, 3, 0]),
    (HOLONOMIC, [0, 0, 0, 0, 5, 0, 0, 0, 0, 0]), (HOLONOMIC, [0, 0, 0, 0, 0, 6, 0, 0, 0, 0]),
    (HOLONOMIC, [0, 0, 0, 0, 0, 0, 9, 0, 0, 3]), (NON_HOLONOMIC, [0, 0, 0, 0, 2, 0, 0, 0, 0, 1]),
    ('["Composed", ' + HOLONOMIC + ", " + NON_HOLONOMIC + "]", AT_REST),
    ('["NonHolonomic", ' + LINE + ", 1e30]", AT_REST),
]

TARGETS = {
    "fuzz_values": VALUES,
    "fuzz_geometry": [(text, []) for text in GEOMETRY],
    "fuzz_state": [(text, []) for text in STATE],
    "fuzz_paths": PATHS,
}


def write_target(target, seeds):
    directory = os.path.join(HERE, "corpus", target)
    os.makedirs(directory, exist_ok=True)
    for name in os.listdir(directory):
        if name.startswith("seed_"):
            os.remove(os.path.join(directory, name))
    for index, (text, options) in enumerate(seeds):
        with open(os.path.join(directory, "seed_%03d" % index), "wb") as out:
            out.write(text.encode("utf-8") + b"1" + bytes(reversed(options)))
    return len(seeds)


def main():
    for target, seeds in TARGETS.items():
        print("%s: %d seeds" % (target, write_target(target, seeds)))
    return 0


if __name__ == "__main__":
    sys.exit(main())
