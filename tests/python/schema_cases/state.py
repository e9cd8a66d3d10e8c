"""Robot state readers against their schemas: rest requests and reflex modes,
support sequences, temperature, diagnosis, touch, navigation and metrical
data, and the interpolation keys and control points."""

from typing import Any, Callable, List, Tuple

import numpy as np
from hypothesis import strategies as st

import krvalueutils as kv

from . import (
    FLOAT32_MAX,
    INT32_MAX,
    INT32_MIN,
    Gap,
    ReaderCase,
    anything,
    contains_integral_float,
    floats,
    ints,
    words,
)

NAME = "value"

# A float that looks like an int, and edges of the float range.
edge_floats = st.sampled_from([0.0, -0.0, 1.0, -1.0, 1e-45, -1e-45, 1.1754943508222875e-38,
                               FLOAT32_MAX, -FLOAT32_MAX, 16777217.0, 0.5])
edge_ints = st.sampled_from([INT32_MIN, INT32_MAX, 0, -1, 1])
any_float = st.one_of(floats, edge_floats)
any_number = st.one_of(ints, edge_ints, any_float)
# Non-null values that are not lists.
non_null_scalars = st.one_of(st.booleans(), any_number, words)
non_arrays = st.one_of(st.none(), non_null_scalars)
texts = st.one_of(st.text(max_size=10), st.sampled_from(["", "A", "a", "HeadYaw", " Safe", "Ünïcode"]))


def _as_list(items: Tuple[Any, ...]) -> List[Any]:
    return list(items)


def _is_list(value: Any) -> bool:
    return isinstance(value, list)


def _is_number(value: Any) -> bool:
    return isinstance(value, (int, float)) and not isinstance(value, bool)


def _lists_with_extra(prefix: "st.SearchStrategy[List[Any]]", max_extra: int = 2) -> "st.SearchStrategy[List[Any]]":
    """A fixed prefix followed by up to `max_extra` ignored elements of any kind."""
    return st.builds(lambda p, extra: p + extra, prefix, st.lists(anything, max_size=max_extra))


# ---------------------------------------------------------------------------
# Rest requests and reflex modes

MODES = ["Safe", "Immediate", "Custom"]

rest_names = st.lists(texts, min_size=1, max_size=5)
# The first angle is a float; the ones after it floats or ints.
rest_angles = st.builds(lambda first, rest: [first] + rest, any_float,
                        st.lists(any_number, max_size=6))
rest_modes = st.lists(st.sampled_from(MODES), min_size=1, max_size=6)
rest_second = st.one_of(st.sampled_from(["Safe", "Immediate"]), rest_angles, rest_modes)
rest_request = _lists_with_extra(st.tuples(rest_names, rest_second).map(_as_list))
# Long lists from plain requests, without ignored elements.
rest_requests = st.one_of(st.lists(rest_request, min_size=1, max_size=4),
                          st.lists(st.tuples(rest_names, rest_second).map(_as_list), min_size=20, max_size=30))


def _read_rest_requests(value: Any) -> object:
    return kv.extract_vector_rest_request_from_krvalue(value, NAME)


def _read_reflex_mode(value: Any) -> object:
    # The tool passes only a string on to the conversion.
    if not isinstance(value, str):
        raise kv.KRValueError("a reflex mode is given as a string: \"Safe\", \"Immediate\" or \"Custom\"")
    # The conversion's failure is a library failure like any reader's.
    try:
        return kv.string_to_rest_reflex_mode(value)
    except kv.KRValueError:
        raise
    except RuntimeError as error:
        raise kv.KRValueError(str(error)) from None


def _compare_rest_requests(value: Any) -> object:
    # The tool checks for a list of two before reading it as requests.
    if not isinstance(value, list) or len(value) != 2:
        raise kv.KRValueError("two rest requests are compared as [[NAMES, SECOND], [NAMES, SECOND]]")
    first, second = kv.extract_vector_rest_request_from_krvalue(value, NAME)
    return first == second, kv.rest_requests_are_equivalent(first, second)


def _int_first_angle(request: Any) -> bool:
    """A request whose second element is a list starting with an int: the
    schema reads it as angles, the reader wants a float there."""
    return (_is_list(request) and len(request) >= 2 and _is_list(request[1]) and len(request[1]) > 0
            and isinstance(request[1][0], int) and not isinstance(request[1][0], bool))


def _any_int_first_angle(value: Any) -> bool:
    return _is_list(value) and any(_int_first_angle(request) for request in value)


FIRST_ANGLE = ("The first angle takes only a number written with a fraction or an exponent: "
               "JSON Schema reads 0 and 0.0 alike, the reader takes 0 for an int and rejects the request.")

rest_near = st.one_of(
    # An int as the first angle, or as an angle after a float.
    st.builds(lambda names, first, rest: [[names, [first] + rest]], rest_names, ints,
              st.lists(any_number, max_size=3)),
    st.builds(lambda names, rest: [[names, [0.5] + rest]], rest_names, st.lists(any_number, max_size=3)),
    # "Custom" alone, mode names in another case, a mode list with a non-string.
    st.builds(lambda names, mode: [[names, mode]], rest_names,
              st.sampled_from(["Custom", "safe", "IMMEDIATE", "Safe ", ""])),
    st.builds(lambda names, modes, other: [[names, modes + [other]]], rest_names, rest_modes,
              st.one_of(non_arrays, st.sampled_from(["custom", "Immediate "]))),
    # A name that is not a string, an empty second element.
    st.builds(lambda names, other, second: [[names + [other], second]], rest_names, non_arrays, rest_second),
    st.builds(lambda names: [[names, []]], rest_names),
)

# ---------------------------------------------------------------------------
# Support sequences

def _flag_list(count: int) -> "st.SearchStrategy[List[Any]]":
    """`count` flags (bools or numbers) mixed with skipped elements."""
    flags = st.lists(st.one_of(st.booleans(), any_number), min_size=count, max_size=count)
    skipped = st.lists(st.one_of(st.none(), words, st.lists(anything, max_size=2)), max_size=3)
    return st.builds(lambda f, s: f + s, flags, skipped).flatmap(st.permutations)


@st.composite
def _support_sequence(draw: Callable[..., Any]) -> List[Any]:
    name = draw(texts)
    form = draw(st.sampled_from(["empty", "single", "list", "long"]))
    if form == "empty":
        return [name, [], []]
    if form == "single":
        values: Any = draw(any_number)
        count = 1
    else:
        values = draw(st.lists(any_number, min_size=1, max_size=6) if form == "list"
                      else st.lists(any_number, min_size=30, max_size=50))
        count = len(values)
    flags = draw(st.one_of(st.booleans(), any_number, _flag_list(count)))
    return [name, values, flags]


support_sequence = _support_sequence()
support_sequences = st.lists(support_sequence, max_size=6, unique_by=lambda s: s[0])


def _countable(element: Any) -> bool:
    return isinstance(element, (bool, int, float))


def _flags_miscounted(sequence: Any) -> bool:
    """A list of floats with a list of flags holding another number of bools
    and numbers."""
    return (_is_list(sequence) and len(sequence) == 3 and _is_list(sequence[1]) and len(sequence[1]) > 0
            and _is_list(sequence[2])
            and sum(1 for element in sequence[2] if _countable(element)) != len(sequence[1]))


def _names_repeat(value: Any) -> bool:
    names = [s[0] for s in value if _is_list(s) and len(s) == 3 and isinstance(s[0], str)]
    return len(set(names)) < len(names)


FLAGS = ("A list of flags holds as many bools and numbers (other elements being skipped) as the "
         "floats hold numbers.")
UNIQUE = "The names of the sequences are pairwise different, compared exactly (case-sensitive)."

support_near = st.one_of(
    # Flags of another count, with skipped elements among them.
    st.builds(lambda name, values, extra: [name, values, extra], texts,
              st.lists(any_number, min_size=1, max_size=4),
              st.integers(0, 5).flatmap(_flag_list)),
    st.builds(lambda name, value, extra: [name, value, extra], texts, any_number,
              st.integers(0, 3).flatmap(_flag_list)),
    # One empty list without the other, an empty flag list.
    st.builds(lambda name, flags: [name, [], flags], texts, st.one_of(st.booleans(), _flag_list(1))),
    st.builds(lambda name, values: [name, values, []], texts, st.one_of(any_number, st.lists(any_number, min_size=1, max_size=3))),
)
support_sequences_near = st.one_of(
    # The same name twice, in any places, or names that differ only in case.
    st.builds(lambda sequences, twin, at: sequences[:at] + [[sequences[0][0]] + twin[1:]] + sequences[at:],
              st.lists(support_sequence, min_size=1, max_size=4, unique_by=lambda s: s[0]),
              support_sequence, st.integers(0, 4)),
    st.builds(lambda a, b: [["Foot"] + a[1:], ["foot"] + b[1:]], support_sequence, support_sequence),
    st.lists(support_near, min_size=1, max_size=2),
)

# ---------------------------------------------------------------------------
# Temperature status and diagnosis

string_lists = st.lists(texts, max_size=6)
temperature_status = _lists_with_extra(
    st.tuples(any_number, st.one_of(string_lists, non_arrays)).map(_as_list))
diagnosis = _lists_with_extra(st.tuples(any_number, st.lists(texts, min_size=1, max_size=6)).map(_as_list))
# No names, or names that are not a list: a diagnosis wants a non-empty list.
diagnosis_near = st.builds(lambda level, names, extra: [level, names] + extra, any_number,
                           st.one_of(st.just([]), non_arrays), st.lists(anything, max_size=1))
status_near = st.builds(lambda level, names, other, at: [level, names[:at] + [other] + names[at:]],
                        any_number, string_lists, st.one_of(non_arrays, st.lists(texts, max_size=2)),
                        st.integers(0, 6))

# ---------------------------------------------------------------------------
# Touch

touch_entry = _lists_with_extra(st.tuples(texts, st.booleans()).map(_as_list))
touch_third = st.one_of(
    non_arrays,
    st.just([]),
    st.builds(lambda first, rest: [first] + rest, st.one_of(ints, edge_ints), st.lists(anything, max_size=3)),
)
touch_int_entry = st.one_of(
    st.tuples(texts, st.booleans()).map(_as_list),
    _lists_with_extra(st.tuples(texts, st.booleans(), touch_third).map(_as_list)),
)
touch = st.one_of(non_null_scalars, st.lists(touch_entry, max_size=5),
                  st.lists(st.tuples(texts, st.booleans()).map(_as_list), min_size=30, max_size=50))
touch_with_ints = st.one_of(non_null_scalars, st.lists(touch_int_entry, max_size=5))
# The same name twice, and a number where the bool goes.
touch_near = st.one_of(
    st.builds(lambda entries, twin: entries + [[entries[0][0]] + twin[1:]],
              st.lists(touch_int_entry, min_size=1, max_size=3), touch_int_entry),
    st.builds(lambda name, number: [[name, number]], texts, any_number),
    st.builds(lambda name, flag, first: [[name, flag, [first]]], texts, st.booleans(),
              st.one_of(any_float, words, st.none(), st.booleans(), st.just([1]))),
)


def _third_is_not_int(value: Any) -> bool:
    """An entry whose third element starts with an integral float, which the
    schema's integer takes."""
    return _is_list(value) and any(
        _is_list(entry) and len(entry) > 2 and _is_list(entry[2]) and len(entry[2]) > 0
        and contains_integral_float(entry[2][0])
        for entry in value)


INT_ONLY = ("An int position takes only a number written without a fraction or an exponent: "
            "JSON Schema reads 1.0 as an integer, the reader does not.")

# ---------------------------------------------------------------------------
# Navigation

xy = st.tuples(any_number, any_number).map(_as_list)
position = st.one_of(xy, st.builds(lambda p, extra: [p + extra], xy, st.lists(anything, max_size=2)))
positions = st.one_of(xy, st.lists(position, min_size=1, max_size=5), st.lists(xy, min_size=30, max_size=50))
navigation_entry = st.tuples(anything, anything, positions).map(_as_list)
navigation = st.lists(navigation_entry, min_size=1, max_size=4)
navigation_near = st.builds(
    lambda a, b, p: [[a, b, p]], anything, anything,
    st.one_of(st.just([]), st.just([[]]), st.lists(st.lists(any_number, max_size=1).map(lambda l: [l]), min_size=1, max_size=2),
              st.lists(any_number, min_size=1, max_size=4), st.builds(lambda p: [[p]], xy)))

# ---------------------------------------------------------------------------
# Metrical data


def _rotation(angles: List[float]) -> np.ndarray:
    a, b, c = angles
    rz = np.array([[np.cos(a), -np.sin(a), 0], [np.sin(a), np.cos(a), 0], [0, 0, 1]])
    ry = np.array([[np.cos(b), 0, np.sin(b)], [0, 1, 0], [-np.sin(b), 0, np.cos(b)]])
    rx = np.array([[1, 0, 0], [0, np.cos(c), -np.sin(c)], [0, np.sin(c), np.cos(c)]])
    return rz @ ry @ rx


def _matrix(rotation: np.ndarray, translation: List[Any], fourth_row: List[Any]) -> List[Any]:
    rows = []
    for r in range(3):
        rows += [float(np.float32(x)) for x in rotation[r]] + [translation[r]]
    return rows + fourth_row


# Exact rotations given as ints (signed permutation matrices of determinant 1)
# and turned ones as floats.
_exact = st.sampled_from([
    np.eye(3), np.array([[0, -1, 0], [1, 0, 0], [0, 0, 1]]), np.array([[1, 0, 0], [0, -1, 0], [0, 0, -1]]),
    np.array([[0, 0, 1], [1, 0, 0], [0, 1, 0]]),
])
_angle = st.floats(-np.pi, np.pi)
rotations = st.one_of(
    _exact.map(lambda m: m.astype(int)),
    st.lists(_angle, min_size=3, max_size=3).map(_rotation),
)


def _matrix_value(rotation: np.ndarray, translation: List[Any], fourth_row: List[Any]) -> List[Any]:
    if rotation.dtype.kind == "i":
        rows = []
        for r in range(3):
            rows += [int(x) for x in rotation[r]] + [translation[r]]
        return rows + fourth_row
    return _matrix(rotation, translation, fourth_row)


matrix = st.builds(_matrix_value, rotations, st.lists(any_number, min_size=3, max_size=3),
                   st.one_of(st.just([0, 0, 0, 1]), st.lists(anything, min_size=4, max_size=4)))
point = st.tuples(any_number, any_number, any_number).map(_as_list)
metrical_data = st.builds(
    lambda l1, l2, points, m, duration: [l1, l2, points, m, duration],
    texts, texts, st.one_of(st.lists(point, max_size=5), st.lists(point, min_size=30, max_size=40)),
    matrix, st.tuples(any_number, any_number).map(_as_list))
metrical_near = st.builds(
    lambda data, rotation, scale: data[:3] + [_matrix(rotation * scale, data[3][3:12:4], data[3][12:])] + data[4:],
    metrical_data,
    st.one_of(rotations.map(lambda m: m.astype(float)),
              st.lists(st.floats(-2, 2), min_size=9, max_size=9).map(lambda l: np.array(l).reshape(3, 3)),
              st.sampled_from([np.diag([1.0, 1.0, -1.0]), np.zeros((3, 3))])),
    st.sampled_from([1.0, 1.0001, 1.002, 1.006, 0.9, -1.0]))


def _not_a_rotation(value: Any) -> bool:
    """The rotation part of the matrix is not orthonormal and right-handed
    within 0.01, the columns taken as 32-bit floats."""
    if not (_is_list(value) and len(value) == 5 and _is_list(value[3]) and len(value[3]) == 16):
        return False
    numbers_ = value[3][:12]
    if not all(_is_number(x) for x in numbers_):
        return False
    r = np.array([float(np.float32(x)) for x in numbers_], dtype=np.float64).reshape(3, 4)[:, :3]
    gram = r.T @ r - np.eye(3)
    return not (np.all(np.abs(gram) <= np.float64(np.float32(0.01))) and np.linalg.det(r) > 0)


RIGID = ("The rotation part (the first three numbers of each row) must be orthonormal and "
         "right-handed: every entry of its transpose times itself within 0.01 of the identity's, "
         "and its determinant positive; a matrix within 0.01 but not within 0.001 is repaired to "
         "the nearest rotation, the translation kept, and the repair is noted on standard error, "
         "while one further off is rejected.")

# ---------------------------------------------------------------------------
# Keys and control points

parameter = st.tuples(st.one_of(ints, edge_ints, st.integers(-1, 4)), any_number, any_number).map(_as_list)
key = st.tuples(any_number, parameter, parameter).map(_as_list)
key_near = st.builds(lambda v, code, p, at: [v, [code] + p[1:], p] if at else [v, p, [code] + p[1:]],
                     any_number, st.one_of(any_float, st.booleans(), words), parameter, st.booleans())


def _type_code_not_int(value: Any) -> bool:
    """An integral float where a type code goes."""
    return _is_list(value) and len(value) == 3 and any(
        _is_list(p) and len(p) == 3 and contains_integral_float(p[0]) for p in value[1:])


def _read_control_points(value: Any) -> object:
    # The tool's defaults: --times [] and --min-time -3.4e38.
    return kv.extract_vector_of_generic_control_points([], value, NAME, -3.4e38)


control_points = st.one_of(anything, st.just([]), st.lists(any_number, max_size=4), st.lists(key, max_size=3))

# ---------------------------------------------------------------------------

CASES: List[ReaderCase] = [
    ReaderCase(
        name="rest-requests",
        read=_read_rest_requests,
        valid=rest_requests,
        near=rest_near,
        gaps=(Gap(FIRST_ANGLE, _any_int_first_angle),),
    ),
    ReaderCase(
        name="reflex-mode",
        read=_read_reflex_mode,
        valid=st.sampled_from(MODES),
        near=st.one_of(st.sampled_from(["safe", "SAFE", "Custom ", "custom", "", "Immediately"]), anything),
    ),
    ReaderCase(
        name="rest-request-comparison",
        read=_compare_rest_requests,
        valid=st.one_of(st.lists(rest_request, min_size=2, max_size=2),
                        st.builds(lambda r: [r, r], rest_request)),
        near=st.one_of(st.lists(rest_request, min_size=0, max_size=3),
                       st.builds(lambda r, n: [r] + n, rest_request, rest_near)),
        gaps=(Gap(FIRST_ANGLE, _any_int_first_angle),),
    ),
    ReaderCase(
        name="support-sequence",
        read=lambda value: kv.extract_support_sequence_from_krvalue(value, NAME),
        valid=support_sequence,
        near=support_near,
        gaps=(Gap(FLAGS, _flags_miscounted),),
    ),
    ReaderCase(
        name="support-sequences",
        read=lambda value: kv.extract_vector_support_sequence_from_krvalue(value, NAME),
        valid=support_sequences,
        near=support_sequences_near,
        gaps=(Gap(FLAGS, lambda value: _is_list(value) and any(_flags_miscounted(s) for s in value)),
              Gap(UNIQUE, lambda value: _is_list(value) and _names_repeat(value))),
    ),
    ReaderCase(
        name="temperature-status",
        read=lambda value: kv.extract_temperature_status_from_krvalue(value, NAME),
        valid=temperature_status,
        near=status_near,
    ),
    ReaderCase(
        name="diagnosis",
        read=lambda value: kv.extract_diagnosis_from_krvalue(value, NAME),
        valid=diagnosis,
        near=st.one_of(status_near, diagnosis_near),
    ),
    ReaderCase(
        name="touch",
        read=lambda value: kv.extract_touch_from_krvalue(value, NAME),
        valid=touch,
        near=touch_near,
    ),
    ReaderCase(
        name="touch-with-ints",
        read=lambda value: kv.extract_touch_from_krvalue(value, NAME, True),
        valid=touch_with_ints,
        near=touch_near,
        gaps=(Gap(INT_ONLY, _third_is_not_int),),
    ),
    ReaderCase(
        name="navigation",
        read=lambda value: kv.extract_navigation_from_krvalue(value, NAME),
        valid=navigation,
        near=navigation_near,
    ),
    ReaderCase(
        name="metrical-data",
        read=lambda value: kv.extract_metrical_data_from_krvalue(value, NAME),
        valid=metrical_data,
        near=metrical_near,
        gaps=(Gap(RIGID, _not_a_rotation),),
    ),
    ReaderCase(
        name="key",
        read=lambda value: kv.extract_key_from_krvalue(value, NAME),
        valid=key,
        near=key_near,
        gaps=(Gap(INT_ONLY, _type_code_not_int),),
    ),
    ReaderCase(
        name="control-points",
        read=_read_control_points,
        valid=control_points,
    ),
]
