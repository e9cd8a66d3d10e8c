"""The geometry readers: single positions, poses and transforms, their lists
and the nested group readers."""

import math
from typing import Any, List

import numpy as np
from hypothesis import strategies as st

import krvalueutils as kv

from . import (Gap, ReaderCase, anything, as_reader_failure, fixed, rejected_with,
               scalar_values, then)

NAME = "value"

# Elements a reader does not read: anything at all.
_ignored = st.lists(anything, max_size=4)


def _wrapped(value: List[Any]) -> List[Any]:
    return [value]


def _list_of(element: "st.SearchStrategy[Any]") -> "st.SearchStrategy[List[Any]]":
    """A non-empty list of records, now and then a long one."""
    return st.one_of(st.lists(element, min_size=1, max_size=8),
                     st.lists(element, min_size=50, max_size=100))


position2d_flat = fixed(2)
# [[x, y, ...]]: the inner list's elements after the second are not read.
position2d = st.one_of(position2d_flat, st.builds(_wrapped, then(fixed(2), _ignored)))
pose2d_exact = fixed(3)
pose2d = then(fixed(3), _ignored)
pose2d_and_time = st.one_of(fixed(3), then(fixed(4), _ignored))
position3d = fixed(3)
position6d = fixed(6)


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
    translation = draw(fixed(3))
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
        return [draw(fixed(3)) for _ in range(3)]
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


ROTATION = ("rotation part (the first three numbers of each row) must be orthonormal and "
            "right-handed: every entry of its transpose times itself within 0.01 of the "
            "identity's, and its determinant positive; a matrix within 0.01 but not within "
            "0.001 is repaired to the nearest rotation, the translation kept, and the repair "
            "is noted on standard error, while one further off is rejected.")


def _read_position6d_vector(value: Any) -> object:
    # The tool takes only an array here (anything else is a usage error),
    # reads every element as a float with the field name "KRValue", then
    # hands the floats to the vector reader, which has no value to locate a
    # failure in and raises a plain RuntimeError.
    if not isinstance(value, list):
        raise kv.KRValueError("a float vector is given as [NUMBER, ...]")
    values = [kv.extract_float(element, NAME, "KRValue") for element in value]
    return as_reader_failure(lambda: kv.extract_position6d_from_vector(values, NAME))


def _groups(record: "st.SearchStrategy[Any]") -> "st.SearchStrategy[Any]":
    """One record, a flat list of them, or a list of groups (each one record
    or a non-empty list of them)."""
    group = st.one_of(record, st.lists(record, min_size=1, max_size=4))
    return st.one_of(record, _list_of(record), st.lists(group, min_size=1, max_size=5))


# A transform that is not a rotation within the lenient tolerance fails with
# this; its bands are tested on the geometry records themselves.
_WRONG_TRANSFORM = r"^KRMotion: value Wrong Transform given\.$"


def _read_transform(value: Any) -> object:
    return kv.extract_transform_from_krvalue(value, NAME)


def _read_transforms(value: Any) -> object:
    return kv.extract_vector_transform_from_krvalue(value, NAME)


def _read_transform_groups(value: Any) -> object:
    return kv.extract_vector_transform_from_krvalue(value, NAME, False)


# Where the list readers decide between one record and a list: records with
# a string first, and lists of records holding a list of records.
_first_not_number = st.builds(lambda r, w: [w] + r[1:], fixed(3), scalar_values)

CASES = [
    ReaderCase("position2d", lambda v: kv.extract_position2d_from_krvalue(v, NAME), position2d,
               near=st.sampled_from([[[]], [[1]], [[1, 2], 3], [["1", 2]]])),
    ReaderCase("pose2d", lambda v: kv.extract_pose2d_from_krvalue(v, NAME), pose2d),
    ReaderCase("pose2d-and-time", lambda v: kv.extract_pose2d_and_time_from_krvalue(v, NAME),
               pose2d_and_time, near=then(fixed(3), st.lists(scalar_values, min_size=1, max_size=1))),
    ReaderCase("position3d", lambda v: kv.extract_position3d_from_krvalue(v, NAME), position3d),
    ReaderCase("position6d", lambda v: kv.extract_position6d_from_krvalue(v, NAME), position6d),
    ReaderCase("position6d-vector", _read_position6d_vector, position6d),
    ReaderCase("transform", _read_transform, transform,
               near=not_transform, gaps=(Gap("The " + ROTATION, rejected_with(_read_transform, _WRONG_TRANSFORM)),)),
    ReaderCase("position2ds", lambda v: kv.extract_vector_position2d_from_krvalue(v, NAME),
               st.one_of(position2d_flat, _list_of(position2d)), near=_first_not_number),
    ReaderCase("pose2ds", lambda v: kv.extract_vector_pose2d_from_krvalue(v, NAME),
               st.one_of(pose2d_exact, _list_of(pose2d)), near=st.one_of(pose2d, _first_not_number)),
    ReaderCase("pose2d-and-times", lambda v: kv.extract_vector_pose2d_and_time_from_krvalue(v, NAME),
               st.one_of(pose2d_and_time, _list_of(pose2d_and_time)), near=_first_not_number),
    ReaderCase("position3ds", lambda v: kv.extract_vector_position3d_from_krvalue(v, NAME),
               # Anything that is not a list, and the empty list, are no positions.
               st.one_of(position3d, _list_of(position3d), st.just([]), scalar_values)),
    ReaderCase("position6ds", lambda v: kv.extract_vector_position6d_from_krvalue(v, NAME),
               st.one_of(position6d, _list_of(position6d)), near=_groups(position6d)),
    ReaderCase("transforms", _read_transforms,
               st.one_of(transform, _list_of(transform)),
               near=st.lists(st.one_of(transform, not_transform), min_size=1, max_size=4),
               gaps=(Gap("Each transform's " + ROTATION, rejected_with(_read_transforms, _WRONG_TRANSFORM)),)),
    ReaderCase("position6d-groups", lambda v: kv.extract_vector_position6d_from_krvalue(v, NAME, False),
               _groups(position6d)),
    ReaderCase("transform-groups", _read_transform_groups,
               _groups(transform), near=_groups(st.one_of(transform, not_transform)),
               gaps=(Gap("Each transform's " + ROTATION,
                          rejected_with(_read_transform_groups, _WRONG_TRANSFORM)),)),
]
