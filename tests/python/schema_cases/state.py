"""Robot state readers against their schemas: rest requests and reflex modes,
support sequences, temperature, diagnosis, touch, navigation and metrical
data, and the interpolation keys and control points."""

from typing import Any, Callable, List

import numpy as np
from hypothesis import strategies as st

import krvalueutils as kv

from . import (Gap, ReaderCase, any_float, anything, as_list, as_reader_failure,
               contains_integral_float, edge_ints, fixed, ints, is_list, lists_of,
               non_null_scalars, numbers, rejected_with, then, with_extra, words)

NAME = "value"

texts = st.one_of(st.text(max_size=10), st.sampled_from(["", "A", "a", "HeadYaw", " Safe", "Ünïcode"]))

# ---------------------------------------------------------------------------
# Rest requests and reflex modes

MODES = ["Safe", "Immediate", "Custom"]

rest_names = st.lists(texts, min_size=1, max_size=5)
# The first angle is a float; the ones after it floats or ints.
rest_angles = st.builds(lambda first, rest: [first] + rest, any_float, st.lists(numbers, max_size=6))
rest_second = st.one_of(st.sampled_from(["Safe", "Immediate"]), rest_angles,
                        st.lists(st.sampled_from(MODES), min_size=1, max_size=6))
rest_request = with_extra(st.tuples(rest_names, rest_second).map(as_list))
rest_requests = lists_of(rest_request, 1, st.tuples(rest_names, rest_second).map(as_list))


def _read_reflex_mode(value: Any) -> object:
    # The tool passes only a string on to the conversion.
    if not isinstance(value, str):
        raise kv.KRValueError("a reflex mode is given as a string: \"Safe\", \"Immediate\" or \"Custom\"")
    return as_reader_failure(lambda: kv.string_to_rest_reflex_mode(value))


def _compare_rest_requests(value: Any) -> object:
    # The tool checks for a list of two before reading it as requests.
    if not isinstance(value, list) or len(value) != 2:
        raise kv.KRValueError("two rest requests are compared as [[NAMES, SECOND], [NAMES, SECOND]]")
    first, second = kv.extract_vector_rest_request_from_krvalue(value, NAME)
    return first == second, kv.rest_requests_are_equivalent(first, second)


def _any_int_first_angle(value: Any) -> bool:
    """A request whose second element is a list starting with an int: the
    schema reads it as angles, the reader wants a float there."""
    return is_list(value) and any(
        is_list(r) and len(r) >= 2 and is_list(r[1]) and len(r[1]) > 0
        and isinstance(r[1][0], int) and not isinstance(r[1][0], bool) for r in value)


FIRST_ANGLE = ("The first angle takes only a number written with a fraction or an exponent: "
               "JSON Schema reads 0 and 0.0 alike, the reader takes 0 for an int and rejects the request.")
# An int as the first angle; "Custom" alone and mode names in another case.
rest_near = st.one_of(
    st.builds(lambda names, first, rest: [[names, [first] + rest]], rest_names, ints,
              st.lists(numbers, max_size=3)),
    st.builds(lambda names, mode: [[names, mode]], rest_names,
              st.sampled_from(["Custom", "safe", "IMMEDIATE", "Safe ", "", "Immediately"])))

# ---------------------------------------------------------------------------
# Support sequences


def _flag_list(count: int) -> "st.SearchStrategy[List[Any]]":
    """`count` flags (bools or numbers) mixed with skipped elements."""
    flags = fixed(count, st.one_of(st.booleans(), numbers))
    skipped = st.lists(st.one_of(st.none(), words, st.lists(anything, max_size=2)), max_size=3)
    return st.builds(lambda f, s: f + s, flags, skipped).flatmap(st.permutations)


@st.composite
def _support_sequence(draw: Callable[..., Any]) -> List[Any]:
    name = draw(texts)
    form = draw(st.sampled_from(["empty", "single", "list"]))
    if form == "empty":
        return [name, [], []]
    values: Any = draw(numbers) if form == "single" else draw(lists_of(numbers, 1))
    count = 1 if form == "single" else len(values)
    return [name, values, draw(st.one_of(st.booleans(), numbers, _flag_list(count)))]


support_sequence = _support_sequence()


def _flags_miscounted(sequence: Any) -> bool:
    """A list of floats with a list of flags holding another number of bools
    and numbers."""
    return (is_list(sequence) and len(sequence) == 3 and is_list(sequence[1]) and len(sequence[1]) > 0
            and is_list(sequence[2])
            and sum(1 for e in sequence[2] if isinstance(e, (bool, int, float))) != len(sequence[1]))


def _names_repeat(value: Any) -> bool:
    names = [s[0] for s in value if is_list(s) and len(s) == 3 and isinstance(s[0], str)]
    return len(set(names)) < len(names)


FLAGS = ("A list of flags holds as many bools and numbers (other elements being skipped) as the "
         "floats hold numbers.")
UNIQUE = "The names of the sequences are pairwise different, compared exactly (case-sensitive)."
# Flags of another count, with skipped elements among them.
support_near = st.builds(lambda name, values, extra: [name, values, extra], texts,
                         st.lists(numbers, min_size=1, max_size=4), st.integers(0, 5).flatmap(_flag_list))

# ---------------------------------------------------------------------------
# Temperature status, diagnosis, touch and navigation

string_lists = st.lists(texts, max_size=6)
non_arrays = st.one_of(st.none(), non_null_scalars)
temperature_status = with_extra(st.tuples(numbers, st.one_of(string_lists, non_arrays)).map(as_list))
diagnosis = with_extra(st.tuples(numbers, st.lists(texts, min_size=1, max_size=6)).map(as_list))

touch_entry = st.tuples(texts, st.booleans()).map(as_list)
touch_third = st.one_of(non_arrays, st.just([]), then(fixed(1, st.one_of(ints, edge_ints)), st.lists(anything, max_size=3)))
touch_int_entry = st.one_of(touch_entry, with_extra(st.tuples(texts, st.booleans(), touch_third).map(as_list)))


def _third_is_not_int(value: Any) -> bool:
    """An entry whose third element starts with an integral float, which the
    schema's integer takes."""
    return is_list(value) and any(
        is_list(entry) and len(entry) > 2 and is_list(entry[2]) and len(entry[2]) > 0
        and contains_integral_float(entry[2][0])
        for entry in value)


INT_ONLY = ("An int position takes only a number written without a fraction or an exponent: "
            "JSON Schema reads 1.0 as an integer, the reader does not.")

xy = fixed(2)
positions = st.one_of(xy, lists_of(st.one_of(xy, st.builds(lambda p, e: [p + e], xy, st.lists(anything, max_size=2))), 1, xy))
navigation = st.lists(st.tuples(anything, anything, positions).map(as_list), min_size=1, max_size=4)

# ---------------------------------------------------------------------------
# Metrical data


def _rotation(angles: List[float]) -> np.ndarray:
    a, b, c = angles
    rz = np.array([[np.cos(a), -np.sin(a), 0], [np.sin(a), np.cos(a), 0], [0, 0, 1]])
    ry = np.array([[np.cos(b), 0, np.sin(b)], [0, 1, 0], [-np.sin(b), 0, np.cos(b)]])
    rx = np.array([[1, 0, 0], [0, np.cos(c), -np.sin(c)], [0, np.sin(c), np.cos(c)]])
    return rz @ ry @ rx


def _matrix(rotation: np.ndarray, translation: List[Any], fourth_row: List[Any]) -> List[Any]:
    """Rows of the rotation and the translation, then a fourth row; an int
    rotation is written as ints, a float one as 32-bit floats."""
    cast = int if rotation.dtype.kind == "i" else (lambda x: float(np.float32(x)))
    rows: List[Any] = []
    for r in range(3):
        rows += [cast(x) for x in rotation[r]] + [translation[r]]
    return rows + fourth_row


# Exact rotations given as ints (signed permutation matrices of determinant 1)
# and turned ones as floats.
rotations = st.one_of(
    st.sampled_from([np.eye(3, dtype=int), np.array([[0, -1, 0], [1, 0, 0], [0, 0, 1]]),
                     np.array([[1, 0, 0], [0, -1, 0], [0, 0, -1]]), np.array([[0, 0, 1], [1, 0, 0], [0, 1, 0]])]),
    fixed(3, st.floats(-np.pi, np.pi)).map(_rotation),
)
matrix = st.builds(_matrix, rotations, fixed(3),
                   st.one_of(st.just([0, 0, 0, 1]), fixed(4, anything)))
metrical_data = st.builds(lambda l1, l2, points, m, duration: [l1, l2, points, m, duration],
                          texts, texts, lists_of(fixed(3)), matrix, fixed(2))
# Rotations scaled, reflected or made of arbitrary numbers.
metrical_near = st.builds(
    lambda data, rotation, scale: data[:3] + [_matrix(rotation * scale, data[3][3:12:4], data[3][12:])] + data[4:],
    metrical_data,
    st.one_of(rotations.map(lambda m: m.astype(float)),
              fixed(9, st.floats(-2, 2)).map(lambda l: np.array(l).reshape(3, 3)),
              st.sampled_from([np.diag([1.0, 1.0, -1.0]), np.zeros((3, 3))])),
    st.sampled_from([1.0, 1.0001, 1.002, 1.006, 0.9, -1.0]))


def _read_metrical_data(value: Any) -> object:
    return kv.extract_metrical_data_from_krvalue(value, NAME)


# Points and the transform are read under this name, whatever the caller's.
_WRONG_TRANSFORM = r"^KRMotion: MetricalDataExtractor Wrong Transform given\.$"
RIGID = ("The rotation part (the first three numbers of each row) must be orthonormal and "
         "right-handed: every entry of its transpose times itself within 0.01 of the identity's, "
         "and its determinant positive; a matrix within 0.01 but not within 0.001 is repaired to "
         "the nearest rotation, the translation kept, and the repair is noted on standard error, "
         "while one further off is rejected.")

# ---------------------------------------------------------------------------
# Keys and control points

parameter = st.tuples(st.one_of(ints, edge_ints, st.integers(-1, 4)), numbers, numbers).map(as_list)
key = st.tuples(numbers, parameter, parameter).map(as_list)


def _type_code_not_int(value: Any) -> bool:
    """An integral float where a type code goes."""
    return is_list(value) and len(value) == 3 and any(
        is_list(p) and len(p) == 3 and contains_integral_float(p[0]) for p in value[1:])


CASES: List[ReaderCase] = [
    ReaderCase("rest-requests", lambda v: kv.extract_vector_rest_request_from_krvalue(v, NAME),
               rest_requests, near=rest_near, gaps=(Gap(FIRST_ANGLE, _any_int_first_angle),)),
    ReaderCase("reflex-mode", _read_reflex_mode, st.sampled_from(MODES),
               near=st.sampled_from(["safe", "SAFE", "Custom ", "custom", "", "Immediately"])),
    ReaderCase("rest-request-comparison", _compare_rest_requests,
               st.one_of(fixed(2, rest_request), st.builds(lambda r: [r, r], rest_request)),
               near=st.builds(lambda r, n: [r] + n, rest_request, rest_near), gaps=(Gap(FIRST_ANGLE, _any_int_first_angle),)),
    ReaderCase("support-sequence", lambda v: kv.extract_support_sequence_from_krvalue(v, NAME),
               support_sequence, near=support_near, gaps=(Gap(FLAGS, _flags_miscounted),)),
    ReaderCase("support-sequences", lambda v: kv.extract_vector_support_sequence_from_krvalue(v, NAME),
               st.lists(support_sequence, max_size=6, unique_by=lambda s: s[0]),
               near=st.lists(st.one_of(support_sequence, support_near), min_size=2, max_size=3),
               gaps=(Gap(FLAGS, lambda v: is_list(v) and any(_flags_miscounted(s) for s in v)),
                     Gap(UNIQUE, lambda v: is_list(v) and _names_repeat(v)))),
    ReaderCase("temperature-status", lambda v: kv.extract_temperature_status_from_krvalue(v, NAME),
               temperature_status),
    ReaderCase("diagnosis", lambda v: kv.extract_diagnosis_from_krvalue(v, NAME), diagnosis),
    ReaderCase("touch", lambda v: kv.extract_touch_from_krvalue(v, NAME),
               st.one_of(non_null_scalars, lists_of(with_extra(touch_entry)))),
    ReaderCase("touch-with-ints", lambda v: kv.extract_touch_from_krvalue(v, NAME, True),
               st.one_of(non_null_scalars, st.lists(touch_int_entry, max_size=5)),
               near=st.builds(lambda name, first: [[name, True, [first]]], texts, any_float),
               gaps=(Gap(INT_ONLY, _third_is_not_int),)),
    ReaderCase("navigation", lambda v: kv.extract_navigation_from_krvalue(v, NAME), navigation),
    ReaderCase("metrical-data", _read_metrical_data,
               metrical_data, near=metrical_near,
               gaps=(Gap(RIGID, rejected_with(_read_metrical_data, _WRONG_TRANSFORM)),)),
    ReaderCase("key", lambda v: kv.extract_key_from_krvalue(v, NAME), key,
               gaps=(Gap(INT_ONLY, _type_code_not_int),)),
    # The tool's defaults: --times [] and --min-time -3.4e38.
    ReaderCase("control-points",
               lambda v: kv.extract_vector_of_generic_control_points([], v, NAME, -3.4e38),
               st.one_of(anything, st.just([]), st.lists(numbers, max_size=4), st.lists(key, max_size=3))),
]
