"""The geometry readers: single positions, poses and transforms, their lists
and the nested group readers."""

import math
from typing import Any, List

import numpy as np
from hypothesis import strategies as st

import krvalueutils as kv

from . import (FLOAT32_MAX, INT32_MAX, INT32_MIN, Gap, ReaderCase, anything, floats, ints,
               scalar_values)

NAME = "value"

# ---------------------------------------------------------------------------
# Numbers: ints and floats, with the edges of both kinds drawn often.

_SMALLEST_SUBNORMAL = 1.401298464324817e-45
_SMALLEST_NORMAL = 1.1754943508222875e-38
_edges = st.sampled_from([
    INT32_MIN, INT32_MAX, 0, -1, 1, 0.0, -0.0, 1.0, -1.0,
    FLOAT32_MAX, -FLOAT32_MAX, _SMALLEST_SUBNORMAL, -_SMALLEST_SUBNORMAL, _SMALLEST_NORMAL,
])
number = st.one_of(ints, floats, _edges)


def _is_number(value: Any) -> bool:
    return isinstance(value, (int, float)) and not isinstance(value, bool)


def _numbers(count: int) -> "st.SearchStrategy[List[Any]]":
    return st.lists(number, min_size=count, max_size=count)


def _then(front: "st.SearchStrategy[List[Any]]",
          rest: "st.SearchStrategy[List[Any]]") -> "st.SearchStrategy[List[Any]]":
    return st.builds(lambda a, b: a + b, front, rest)


# Elements a reader does not read: anything at all.
_ignored = st.lists(anything, max_size=4)


def _list_of(element: "st.SearchStrategy[Any]") -> "st.SearchStrategy[List[Any]]":
    """A non-empty list of records, now and then a long one."""
    return st.one_of(st.lists(element, min_size=1, max_size=8),
                     st.lists(element, min_size=50, max_size=120))


# ---------------------------------------------------------------------------
# Single records.

position2d_flat = _numbers(2)
# [[x, y, ...]]: the inner list's elements after the second are not read.
position2d_nested = st.builds(lambda inner: [inner], _then(_numbers(2), _ignored))
position2d = st.one_of(position2d_flat, position2d_nested)

pose2d_exact = _numbers(3)
pose2d = _then(_numbers(3), _ignored)

pose2d_and_time = st.one_of(_numbers(3), _then(_numbers(4), _ignored))

position3d = _numbers(3)
position6d = _numbers(6)


# Transforms. The rotation is made from a unit quaternion, rounded to 32-bit
# floats (well within the strict tolerance); some are signed permutations
# written as ints, and some are disturbed so far that the reader repairs them.

def _rotation_from_quaternion(q: List[float]) -> np.ndarray:
    w, x, y, z = np.asarray(q, dtype=np.float64) / np.linalg.norm(q)
    return np.array([
        [1 - 2 * (y * y + z * z), 2 * (x * y - w * z), 2 * (x * z + w * y)],
        [2 * (x * y + w * z), 1 - 2 * (x * x + z * z), 2 * (y * z - w * x)],
        [2 * (x * z - w * y), 2 * (y * z + w * x), 1 - 2 * (x * x + y * y)],
    ])


_unit = st.floats(-1.0, 1.0, allow_nan=False)
_quaternions = st.lists(_unit, min_size=4, max_size=4).filter(
    lambda q: math.sqrt(sum(c * c for c in q)) > 0.1)


@st.composite
def _rotation(draw: Any) -> List[List[Any]]:
    """Three rows of three numbers that the reader takes as a rotation."""
    kind = draw(st.sampled_from(["quaternion", "permutation", "nearly"]))
    if kind == "permutation":
        order = draw(st.permutations([0, 1, 2]))
        signs = draw(st.lists(st.sampled_from([1, -1]), min_size=3, max_size=3))
        r = np.zeros((3, 3))
        for row, column in enumerate(order):
            r[row, column] = signs[row]
        if np.linalg.det(r) < 0:
            r[0] = -r[0]
        as_float = draw(st.booleans())
        return [[float(c) if as_float else int(c) for c in row] for row in r]
    r = _rotation_from_quaternion(draw(_quaternions))
    if kind == "nearly":
        # Each entry off by at most 0.0015: every entry of R^T R - I stays
        # below 0.006, inside the lenient tolerance, so the reader repairs
        # it (or keeps it, when it happens to be within the strict one).
        offsets = draw(st.lists(st.floats(-0.0015, 0.0015), min_size=9, max_size=9))
        r = r + np.array(offsets).reshape(3, 3)
    return [[float(np.float32(c)) for c in row] for row in r]


@st.composite
def _transform_with(draw: Any, rotation: "st.SearchStrategy[List[List[Any]]]") -> List[Any]:
    rows = draw(rotation)
    translation = draw(_numbers(3))
    value = [c for row, t in zip(rows, translation) for c in row + [t]]
    if draw(st.booleans()):
        value += draw(st.lists(anything, min_size=4, max_size=4))  # the fourth row, not read
    return value


transform = _transform_with(_rotation())


# Matrices of the right shape that are not rotations within the lenient
# tolerance: scaled, reflected, disturbed too much, or arbitrary numbers.
@st.composite
def _not_rotation(draw: Any) -> List[List[Any]]:
    kind = draw(st.sampled_from(["scaled", "reflected", "disturbed", "numbers", "zeros"]))
    if kind == "numbers":
        return [draw(_numbers(3)) for _ in range(3)]
    if kind == "zeros":
        return [[0, 0, 0], [0, 0, 0], [0, 0, 0]]
    r = _rotation_from_quaternion(draw(_quaternions))
    if kind == "scaled":
        r = r * draw(st.sampled_from([0.99, 1.01, 0.5, 2.0, 0.994, 1.006]))
    elif kind == "reflected":
        r[draw(st.integers(0, 2))] *= -1
    else:
        offsets = draw(st.lists(st.floats(-0.05, 0.05), min_size=9, max_size=9))
        r = r + np.array(offsets).reshape(3, 3)
    return [[float(np.float32(c)) for c in row] for row in r]


not_transform = _transform_with(_not_rotation())


# ---------------------------------------------------------------------------
# The rotation test, computed as the reader does: the numbers as 32-bit
# floats, the products and sums in double precision, each entry of R^T R - I
# against the tolerance on its own, and a right-handed (positive) determinant.

_LENIENT = float(np.float32(0.01))


def _is_rotation(entries: List[Any], tolerance: float = _LENIENT) -> bool:
    m = np.array([np.float32(e) for e in entries[:12]], dtype=np.float32).astype(np.float64)
    r = m.reshape(3, 4)[:, :3]
    columns = [r[:, 0], r[:, 1], r[:, 2]]
    for i in range(3):
        for j in range(i, 3):
            dot = float(np.dot(columns[i], columns[j])) - (1.0 if i == j else 0.0)
            if not abs(dot) <= tolerance:
                return False
    return float(np.dot(columns[0], np.cross(columns[1], columns[2]))) > 0.0


def _is_transform_record(value: Any) -> bool:
    """One transform as the list readers tell it: 12 or 16 elements, the
    first a number."""
    return isinstance(value, list) and len(value) in (12, 16) and _is_number(value[0])


def _no_rotation(record: Any) -> bool:
    """A record of 12 or 16 elements whose first twelve are numbers, and
    whose rotation part is not one within the lenient tolerance."""
    return (isinstance(record, list) and len(record) in (12, 16)
            and all(_is_number(e) for e in record[:12]) and not _is_rotation(record))


def _transform_list_records(value: Any) -> List[Any]:
    """The records the transform list reader reads from a value."""
    if _is_transform_record(value):
        return [value]
    return list(value) if isinstance(value, list) else []


def _transform_group_records(value: Any) -> List[Any]:
    """The records the transform group reader reads from a value: one
    record, a list of records, or a list of groups, each one record or a
    list of them."""
    if _is_transform_record(value):
        return [value]
    if not isinstance(value, list):
        return []
    records: List[Any] = []
    for element in value:
        records += _transform_list_records(element)
    return records


ROTATION = ("rotation part (the first three numbers of each row) must be orthonormal and "
            "right-handed: every entry of its transpose times itself within 0.01 of the "
            "identity's, and its determinant positive; a matrix within 0.01 but not within "
            "0.001 is repaired to the nearest rotation, the translation kept, and the repair "
            "is noted on standard error, while one further off is rejected.")

# ---------------------------------------------------------------------------
# Readers, called as the krvalue tool calls the library.


def _read_position6d_vector(value: Any) -> object:
    # The tool takes only an array here (anything else is a usage error),
    # reads every element as a float with the field name "KRValue", then
    # hands the floats to the vector reader.
    if not isinstance(value, list):
        raise kv.KRValueError("a float vector is given as [NUMBER, ...]")
    values = [kv.extract_float(element, NAME, "KRValue") for element in value]
    try:
        return kv.extract_position6d_from_vector(values, NAME)
    except RuntimeError as error:
        # The vector reader has no value to locate a failure in: the binding
        # raises a plain RuntimeError with the library's message.
        raise kv.KRValueError(str(error)) from error


def _groups(record: "st.SearchStrategy[Any]") -> "st.SearchStrategy[Any]":
    """One record, a flat list of them, or a list of groups (each one record
    or a non-empty list of them)."""
    group = st.one_of(record, st.lists(record, min_size=1, max_size=4))
    return st.one_of(record, _list_of(record), st.lists(group, min_size=1, max_size=5))


# Near misses of the list readers: a single record changed where the readers
# decide between one record and a list.
def _short_or_long(record: "st.SearchStrategy[List[Any]]") -> "st.SearchStrategy[Any]":
    return st.one_of(
        record.map(lambda r: r[:-1]),
        record.map(lambda r: r + [0]),
        record.map(lambda r: [[r[0]]] + r[1:]),
        record.map(lambda r: [str(r[0])] + r[1:]),
        st.lists(record, min_size=1, max_size=3).map(lambda rs: rs + [[]]),
    )


_non_arrays = st.one_of(scalar_values, st.just([]))


CASES = [
    ReaderCase(
        name="position2d",
        read=lambda v: kv.extract_position2d_from_krvalue(v, NAME),
        valid=position2d,
        near=st.one_of(
            _non_arrays,
            st.just([[]]), st.just([[1]]), st.just([[1, 2], 3]),
            st.builds(lambda inner: [inner], st.lists(scalar_values, max_size=3)),
            _short_or_long(position2d_flat),
        ),
    ),
    ReaderCase(
        name="pose2d",
        read=lambda v: kv.extract_pose2d_from_krvalue(v, NAME),
        valid=pose2d,
        near=st.one_of(_non_arrays, st.builds(lambda p: [p], pose2d), _short_or_long(pose2d_exact)),
    ),
    ReaderCase(
        name="pose2d-and-time",
        read=lambda v: kv.extract_pose2d_and_time_from_krvalue(v, NAME),
        valid=pose2d_and_time,
        near=st.one_of(
            _non_arrays,
            st.builds(lambda p, w: p + [w], _numbers(3), scalar_values),
            _short_or_long(_numbers(4)),
        ),
    ),
    ReaderCase(
        name="position3d",
        read=lambda v: kv.extract_position3d_from_krvalue(v, NAME),
        valid=position3d,
        near=st.one_of(_non_arrays, _short_or_long(position3d)),
    ),
    ReaderCase(
        name="position6d",
        read=lambda v: kv.extract_position6d_from_krvalue(v, NAME),
        valid=position6d,
        near=st.one_of(_non_arrays, _short_or_long(position6d)),
    ),
    ReaderCase(
        name="position6d-vector",
        read=_read_position6d_vector,
        valid=position6d,
        near=st.one_of(_non_arrays, _short_or_long(position6d), st.lists(number, max_size=9)),
    ),
    ReaderCase(
        name="transform",
        read=lambda v: kv.extract_transform_from_krvalue(v, NAME),
        valid=transform,
        near=st.one_of(not_transform, _non_arrays, _short_or_long(transform),
                       st.lists(number, min_size=11, max_size=17)),
        gaps=(Gap("The " + ROTATION, _no_rotation),),
    ),
    ReaderCase(
        name="position2ds",
        read=lambda v: kv.extract_vector_position2d_from_krvalue(v, NAME),
        valid=st.one_of(position2d_flat, _list_of(position2d)),
        near=st.one_of(_non_arrays, _short_or_long(position2d_flat),
                       _list_of(position2d).map(lambda l: l + [1]),
                       st.lists(number, min_size=1, max_size=4)),
    ),
    ReaderCase(
        name="pose2ds",
        read=lambda v: kv.extract_vector_pose2d_from_krvalue(v, NAME),
        valid=st.one_of(pose2d_exact, _list_of(pose2d)),
        near=st.one_of(_non_arrays, _short_or_long(pose2d_exact), pose2d,
                       st.lists(number, min_size=1, max_size=5)),
    ),
    ReaderCase(
        name="pose2d-and-times",
        read=lambda v: kv.extract_vector_pose2d_and_time_from_krvalue(v, NAME),
        valid=st.one_of(pose2d_and_time, _list_of(pose2d_and_time)),
        near=st.one_of(_non_arrays, _short_or_long(pose2d_and_time),
                       st.lists(number, min_size=1, max_size=5),
                       st.builds(lambda p, w: p + [w], _numbers(3), scalar_values)),
    ),
    ReaderCase(
        name="position3ds",
        read=lambda v: kv.extract_vector_position3d_from_krvalue(v, NAME),
        # Anything that is not a list, and the empty list, are no positions.
        valid=st.one_of(position3d, _list_of(position3d), st.just([]), scalar_values),
        near=st.one_of(_short_or_long(position3d), st.lists(number, min_size=1, max_size=5),
                       st.lists(st.one_of(position3d, scalar_values), min_size=1, max_size=4)),
    ),
    ReaderCase(
        name="position6ds",
        read=lambda v: kv.extract_vector_position6d_from_krvalue(v, NAME),
        valid=st.one_of(position6d, _list_of(position6d)),
        near=st.one_of(_non_arrays, _short_or_long(position6d),
                       st.lists(number, min_size=1, max_size=7),
                       st.lists(st.lists(position6d, min_size=1, max_size=2), min_size=1, max_size=3)),
    ),
    ReaderCase(
        name="transforms",
        read=lambda v: kv.extract_vector_transform_from_krvalue(v, NAME),
        valid=st.one_of(transform, _list_of(transform)),
        near=st.one_of(not_transform, _non_arrays, _short_or_long(transform),
                       st.lists(st.one_of(transform, not_transform), min_size=1, max_size=4),
                       st.lists(st.lists(transform, min_size=1, max_size=2), min_size=1, max_size=3)),
        gaps=(Gap("Each transform's " + ROTATION,
                  lambda v: any(_no_rotation(r) for r in _transform_list_records(v))),),
    ),
    ReaderCase(
        name="position6d-groups",
        read=lambda v: kv.extract_vector_position6d_from_krvalue(v, NAME, False),
        valid=_groups(position6d),
        near=st.one_of(
            _non_arrays, _short_or_long(position6d),
            st.lists(st.one_of(position6d, st.lists(position6d, max_size=3), scalar_values),
                     min_size=1, max_size=4),
            st.lists(st.lists(st.lists(position6d, min_size=1, max_size=2), min_size=1, max_size=2),
                     min_size=1, max_size=2),
        ),
    ),
    ReaderCase(
        name="transform-groups",
        read=lambda v: kv.extract_vector_transform_from_krvalue(v, NAME, False),
        valid=_groups(transform),
        near=st.one_of(
            not_transform, _non_arrays, _short_or_long(transform),
            st.lists(st.one_of(transform, not_transform, st.lists(transform, max_size=2), scalar_values),
                     min_size=1, max_size=4),
            st.lists(st.lists(st.one_of(transform, not_transform), min_size=1, max_size=3),
                     min_size=1, max_size=3),
        ),
        gaps=(Gap("Each transform's " + ROTATION,
                  lambda v: any(_no_rotation(r) for r in _transform_group_records(v))),),
    ),
]
