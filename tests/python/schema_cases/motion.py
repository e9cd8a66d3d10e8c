"""The path and trajectory descriptions, as the krvalue tool's path and
trajectory commands take them: read with the general readers and then built
at the start pose (0, 0, 0), from rest, with the tool's default settings.

Building is part of what the commands accept: the geometry layer refuses
there some descriptions that read well (a piece too long, a heading beyond
the float range, a motion too long to time), and the commands report that as
they report a reader's failure. So `read` builds too, and turns a failure of
the built object into KRValueError with the same message. A gap is told by
the geometry layer's message; where its limits lie exactly is tested on the
geometry layer itself.
"""

from fractions import Fraction
from typing import Any, List, Tuple

from hypothesis import strategies as st

import krvalueutils as kv

from . import (FLOAT32_MAX, INT32_MAX, INT32_MIN, SMALLEST_NORMAL, SMALLEST_SUBNORMAL, Gap,
               ReaderCase, as_reader_failure, numbers, rejected_with, scalar_values)

NAME = "value"

# The tool's defaults: --period 0.01 (rounded to whole milliseconds: 1/100 s),
# --limits 0.5,0.5, --second-limits 1.0,1.0, --fraction 1, --start 0,0,0.
PERIOD = Fraction(1, 100)
FIRST_LIMITS = (0.5, 0.5)
SECOND_LIMITS = (1.0, 1.0)
FRACTION = 1.0
START = kv.Pose2D(0.0, 0.0, 0.0)
AT_REST = kv.Pose2DPosVelAcc(START, kv.Pose2D(), kv.Pose2D())


def read_path(value: Any) -> Any:
    builder = kv.extract_path2d_builder_from_krvalue(value, NAME)
    return as_reader_failure(lambda: builder(START))


def read_trajectory(value: Any) -> Any:
    builder = kv.extract_trajectory_pose2d_builder_from_krvalue(
        value, NAME, PERIOD, FIRST_LIMITS, SECOND_LIMITS, FRACTION)
    return as_reader_failure(lambda: builder(AT_REST))


# The constraints the schemas leave to their descriptions, word for word.
PIECE_LENGTH = ("Each piece may be at most 1e9 m long: a line, an arc (its radius times "
                "the absolute angle), or a flat path's two arcs and straight line together.")
CURVATURE = ("An arc that turns (an angle other than 0) must have a radius, the distance "
             "from where it starts to its centre, of 0 or at least 1/3.4028235e+38 m "
             "(about 2.94e-39 m), so that its curvature fits a 32-bit float.")
HEADING = ("The heading, which every arc turns by its angle, must stay within the range of "
           "a 32-bit float (3.4028235e+38 rad) all along the path.")
ORIENTATION = ("The heading and the orientation, which every arc and rotation turns by its "
               "angle, must stay within the range of a 32-bit float (3.4028235e+38 rad) "
               "all along the motion.")
DURATION_FIT = ("Each direct trajectory's duration (the longer of DURATION and the time its "
                "motion takes at the limits) and the total duration of a composed trajectory "
                "must be exact fractions of 32-bit ints: up to 21474836.47 s (2^31 periods of "
                "0.01 s) they always are, longer ones only when the fraction reduces far "
                "enough, as whole seconds below 2^31 do.")


# The geometry layer's messages for each of them.
_TOO_LONG = r"^A path piece of \S+ m is longer than the 1e9 m allowed\.$"
_TOO_CURVED = r"^An arc's radius of \S+ m is too small for its curvature to be stored\.$"
_OUT_OF_RANGE = (r"^A path segment ends outside the range of float coordinates\.$",
                 r"^A path leaves the range of float coordinates\.$")
_ORIENTATION = r"^A holonomic trajectory would end at an orientation out of range\.$"
_UNTIMABLE = (r"^A motion of \S+ seconds is not a duration that can be represented\.$",
              r"^\d+ periods of \d+/\d+ s do not fit an exact fraction of ints\.$",
              r"^The sum of the durations does not fit an exact fraction of ints\.$")


# ---------------------------------------------------------------------------
# Valid descriptions. Numbers are drawn so that every piece stays well within
# the limits above; the edges of the number kinds go where a piece does not
# read them as a length (an arc of angle 0 or radius 0).


def _bounded(limit: int) -> "st.SearchStrategy[Any]":
    """Ints and floats within +-limit; floats 0 or at least 1e-3 in size, so
    that two of them are 0 or a radius far from the smallest apart."""
    return st.one_of(
        st.integers(-limit, limit),
        st.floats(0.0010000000474974513, limit, width=32),
        st.floats(-limit, -0.0010000000474974513, width=32),
        st.sampled_from([0, 0.0, -0.0, 1, -1, 0.5]),
    )


_zero = st.sampled_from([0, 0.0, -0.0])
# Elements after a nested point's x and y: any kind, never read.
_extra = st.lists(scalar_values, max_size=2)


def _point_of(coordinate: "st.SearchStrategy[Any]") -> "st.SearchStrategy[Any]":
    pair = st.lists(coordinate, min_size=2, max_size=2)
    return st.one_of(pair, st.builds(lambda p, rest: [p + rest], pair, _extra))


def _lines(end: "st.SearchStrategy[Any]", timed: bool) -> "st.SearchStrategy[Any]":
    edges = [] if timed else [st.sampled_from([
        [1000000032, 0], [-1000000032, -0.0], [1e9, 0.0], [0, -1000000000], [6e8, 8e8],
        [SMALLEST_SUBNORMAL, -SMALLEST_SUBNORMAL], [[SMALLEST_NORMAL, 0, None]]])]
    return st.builds(lambda p: ["Line", p], st.one_of(_point_of(end), *edges))


def _arcs(coordinate: "st.SearchStrategy[Any]", angle: "st.SearchStrategy[Any]",
          timed: bool) -> "st.SearchStrategy[Tuple[Any, Any]]":
    """(centre, angle) of an arc from the origin."""
    forms = [
        st.tuples(_point_of(coordinate), angle),
        st.tuples(_point_of(numbers), _zero),                       # angle 0
        st.tuples(_point_of(_zero), numbers if not timed else angle),  # radius 0
    ]
    if not timed:
        # A tiny radius turned many times: a short piece with a huge turn.
        turn = 3.000000106909804e+37  # the 32-bit float nearest 3e37
        forms.append(st.tuples(st.sampled_from([[1e-30, 0], [[0, -1e-30]]]),
                               st.floats(-turn, turn, width=32)))
    return st.one_of(*forms)


def _direct_path(timed: bool) -> "st.SearchStrategy[Any]":
    # Untimed: pieces up to a few 1e8 m; timed: short enough that even a
    # composed trajectory of a few of them lasts far below the duration limit.
    tiny_angles = st.sampled_from([SMALLEST_SUBNORMAL, -0.0])
    end = _bounded(10_000 if timed else 500_000_000)
    coordinate = _bounded(1_000 if timed else 100_000)
    angle = st.one_of(_bounded(10 if timed else 1_000), tiny_angles)
    circle = st.builds(lambda arc: ["Circle", arc[0], arc[1]], _arcs(coordinate, angle, timed))
    # A flat path's parts add up: a nearer END and smaller second angles.
    flat_end = _point_of(_bounded(1_000 if timed else 10_000_000))
    second_angle = st.one_of(_bounded(10), tiny_angles)
    first_arc = _arcs(coordinate, st.one_of(_bounded(10 if timed else 100), tiny_angles), timed)
    second_arc = st.one_of(st.tuples(_point_of(coordinate), second_angle),
                           st.tuples(_point_of(numbers), _zero),
                           st.tuples(st.none(), numbers if not timed else second_angle))

    def flat_path(first: Tuple[Any, Any], e: Any, second: Tuple[Any, Any]) -> List[Any]:
        # The second arc starts at END: no centre given stands for a centre
        # there, a radius of 0.
        centre = list(e) if second[0] is None else second[0]
        return ["Flat", first[0], first[1], e, centre, second[1]]

    flat = st.builds(flat_path, first_arc, flat_end, second_arc)
    return st.one_of(_lines(end, timed), circle, flat)


def _composed_path(timed: bool) -> "st.SearchStrategy[Any]":
    return st.builds(lambda pieces: ["Composed"] + pieces,
                     st.lists(_direct_path(timed), min_size=1 if timed else 0,
                              max_size=3 if timed else 5))


path_valid = st.one_of(_direct_path(False), _composed_path(False))

_timed_path = st.one_of(_direct_path(True), _composed_path(True))
_rotation = st.one_of(_bounded(1_000), st.sampled_from([-0.0, SMALLEST_SUBNORMAL, -3.1415927]))
_duration = st.one_of(
    st.integers(0, 100_000),
    st.floats(-0.004999999888241291, 100_000, width=32),
    # The float nearest -0.005 lies just above it, and rounds to 0 periods.
    st.sampled_from([0, 0.0, -0.0, -0.004999999888241291,
                     SMALLEST_SUBNORMAL, -SMALLEST_SUBNORMAL]),
)
# Alone, a trajectory may ask for the longest duration there is.
_long_duration = st.sampled_from([2147483583, 2147483520.0, 21474836, 1e9])


def _direct_trajectory(duration: "st.SearchStrategy[Any]") -> "st.SearchStrategy[Any]":
    return st.one_of(
        st.builds(lambda p, r, d: ["Holonomic", p, r, d], _timed_path, _rotation, duration),
        st.builds(lambda p, d: ["NonHolonomic", p, d], _timed_path, duration),
    )


trajectory_valid = st.one_of(
    _direct_trajectory(st.one_of(_duration, _long_duration)),
    st.builds(lambda pieces: ["Composed"] + pieces,
              st.lists(_direct_trajectory(_duration), min_size=1, max_size=3)),
)


# ---------------------------------------------------------------------------
# Near misses of these readers: nesting where it is not taken, and numbers at
# the limits the gaps name.

_long_line = st.builds(lambda p: ["Line", p], st.sampled_from([
    [7.0710678e8, 7.0710678e8], [7.071068e8, 7.071068e8], [1000000033, 0], [-1e9, 64],
    [999999999, 45000], [INT32_MAX, 0], [0, INT32_MIN]]))
_long_arc = st.builds(lambda c, a: ["Circle", c, a],
                      st.sampled_from([[1e5, 0], [0, -1e8], [[INT32_MAX, 1]]]),
                      st.sampled_from([10, 1e4, 6.2831855, -FLOAT32_MAX, 1e-9]))
_tight_arc = st.builds(lambda c, a: ["Circle", c, a],
                       st.sampled_from([[2.9e-39, 0], [2.9387359e-39, 0], [2.94e-39, 0],
                                        [0, -1e-39], [SMALLEST_SUBNORMAL, 0],
                                        [[3e-39, SMALLEST_SUBNORMAL]]]),
                       st.sampled_from([1, -0.5, 1e-30]))
_huge_turn = st.builds(lambda a: ["Circle", [1e-30, 0], a],
                       st.sampled_from([FLOAT32_MAX, 3e38, 1.7e38, -2e38]))
_long_flat = st.builds(lambda a1, e, a2: ["Flat", [0, 1e3], a1, e, [0, 0], a2],
                       st.sampled_from([0, 1e6, 3.1415927]), st.sampled_from([[0, 1e9], [1e9, 0]]),
                       st.sampled_from([0, 1e3, -1]))
# Points nested with fewer than two numbers inside, or half nested.
_short_point = st.sampled_from([
    ["Line", [[1]]], ["Line", [[]]], ["Line", [[1, None]]], ["Line", [[1], 2]],
    ["Circle", [[0.5]], 1], ["Flat", [[0, 1]], 1, [[2]], [0, 0], 0],
    ["Flat", [0, 1], 1, [2, 0], [["0", 0]], 0]])
_path_trouble = st.one_of(_long_line, _long_arc, _tight_arc, _huge_turn, _long_flat, _short_point)
_composed_trouble = st.builds(lambda ps, t, qs: ["Composed"] + ps + [t] + qs,
                              st.lists(_direct_path(False), max_size=2), _path_trouble,
                              st.lists(st.one_of(_direct_path(False), _huge_turn), max_size=2))

path_near = st.one_of(
    _path_trouble,
    _composed_trouble,
    st.builds(lambda v: ["Composed", v], _composed_path(False)),
)

_edge_duration = st.sampled_from([
    -0.005, -0.0050000004, -0.004999999888241291, -0.005000000121071935,
    -0.005000000121071936, -1, 2147483584, 2147483583.9, 2147483583, 2147483520.0,
    2147483648.0, INT32_MAX, 4294967296.0, 3e7, FLOAT32_MAX])
_edge_rotation = st.sampled_from([2e7, 2.2e7, 3e7 + 0.5, 1e9, 1e17, FLOAT32_MAX, -FLOAT32_MAX])
_trouble_path = st.one_of(_path_trouble, _composed_trouble, st.just(["Composed"]),
                          st.just(["Composed", ["Line", [1e9, 0]], ["Line", [-1e9, 0]]]))

trajectory_near = st.one_of(
    st.builds(lambda p, r, d: ["Holonomic", p, r, d], _timed_path, _edge_rotation, _duration),
    st.builds(lambda p, d: ["NonHolonomic", p, d], _timed_path, _edge_duration),
    st.builds(lambda p, r, d: ["Holonomic", p, r, d], _trouble_path, _rotation, _duration),
    st.builds(lambda p, d: ["NonHolonomic", p, d], _trouble_path, _duration),
    st.builds(lambda ts: ["Composed"] + ts, st.lists(st.one_of(
        st.builds(lambda p, d: ["NonHolonomic", p, d], _timed_path, _edge_duration),
        st.builds(lambda p, r: ["Holonomic", p, r, 0], _timed_path, _edge_rotation),
        _direct_trajectory(_duration)), min_size=1, max_size=3)),
    st.builds(lambda v: ["Composed", v], trajectory_valid),
)


CASES = [
    ReaderCase("path", read_path, path_valid, near=path_near, gaps=(
        Gap(PIECE_LENGTH, rejected_with(read_path, _TOO_LONG)),
        Gap(CURVATURE, rejected_with(read_path, _TOO_CURVED)),
        Gap(HEADING, rejected_with(read_path, *_OUT_OF_RANGE)),
    )),
    ReaderCase("trajectory", read_trajectory, trajectory_valid, near=trajectory_near, gaps=(
        Gap(PIECE_LENGTH, rejected_with(read_trajectory, _TOO_LONG)),
        Gap(CURVATURE, rejected_with(read_trajectory, _TOO_CURVED)),
        Gap(ORIENTATION, rejected_with(read_trajectory, _ORIENTATION, *_OUT_OF_RANGE)),
        Gap(DURATION_FIT, rejected_with(read_trajectory, *_UNTIMABLE)),
    )),
]
