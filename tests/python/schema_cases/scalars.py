"""The readers of single numbers, axis masks, frames, durations, float,
string and bool lists and key/value maps, each called as the krvalue tool
calls it with its default options (--name value, --field value, --min 0,
--max 1, --count 1, --single-group and --skip-second off).

Strategies are built from named functions rather than lambdas: hypothesis
describes every function that st.builds calls, and for a lambda it does so
by reading its source again on each draw."""

from typing import Any, List, Optional

from hypothesis import strategies as st

import krvalueutils as kv

from . import FLOAT32_MAX, INT32_MAX, INT32_MIN, ReaderCase, anything, floats, ints, words

NAME = "value"

# Numbers at the edges of what the value type holds: int32 extremes, signed
# zeros, the smallest subnormal and normal floats, the largest float, the
# first int a float cannot hold and the floats at the ends of the int range.
_edge_numbers = st.sampled_from([
    INT32_MIN, INT32_MAX, 0, -1, 1, 0.0, -0.0,
    1.401298464324817e-45, -1.401298464324817e-45, 1.1754943508222875e-38,
    FLOAT32_MAX, -FLOAT32_MAX, 16777217, -2147483648.0, 2147483648.0,
])
numbers = st.one_of(ints, floats, _edge_numbers)

# Single values of every kind, the elements of long lists of anything.
_flat_values = st.one_of(st.none(), st.booleans(), ints, floats, words)


def _lists(element: "st.SearchStrategy[Any]", min_size: int = 0,
           long_element: "Optional[st.SearchStrategy[Any]]" = None) -> "st.SearchStrategy[List[Any]]":
    """Short lists mostly, now and then a long one (of `long_element` where
    the elements are large themselves)."""
    return st.one_of(
        st.lists(element, min_size=min_size, max_size=6),
        st.lists(element if long_element is None else long_element,
                 min_size=max(min_size, 30), max_size=80),
    )


def _append(head: List[Any], last: Any) -> List[Any]:
    return head + [last]


def _ending_in(head: "st.SearchStrategy[List[Any]]", last: "st.SearchStrategy[Any]") -> "st.SearchStrategy[List[Any]]":
    """Lists of good elements with one more, usually bad, at the end."""
    return st.builds(_append, head, last)


def _wrapped(value: Any) -> List[Any]:
    return [value]


def _not_null(value: Any) -> bool:
    return value is not None


# Ints the mask and frame readers take, and floats that truncate to one of
# them, with the float32 neighbours of the limits.
masks = st.one_of(
    st.integers(1, 63),
    st.floats(1.0, 64.0, exclude_max=True, width=32),
    st.sampled_from([1, 63, 1.0, 1.0000001192092896, 63.999996185302734]),
)
frames = st.one_of(
    st.integers(0, 2),
    st.floats(-1.0, 3.0, exclude_min=True, exclude_max=True, width=32),
    st.sampled_from([0, 2, -0.0, -0.9999999403953552, 2.999999761581421]),
)
# Ints and floats just outside the mask and frame ranges.
_near_masks = st.sampled_from([0, 64, -1, 0.9999999403953552, 64.0, -63, 127, 65, -0.0])
_near_frames = st.sampled_from([-1, 3, -1.0, 3.0, 4, -2, 10000000000.0])


def _read_check_array(value: Any) -> object:
    return kv.check_array_from_krvalue(value, NAME)


def _read_float(value: Any) -> object:
    return kv.extract_float(value, NAME, NAME)


def _read_float_clip(value: Any) -> object:
    return kv.extract_float_and_clip(value, 0.0, 1.0, NAME, NAME)


def _read_int(value: Any) -> object:
    return kv.extract_int_from_krvalue(value, NAME, NAME)


def _read_axis_mask(value: Any) -> object:
    return kv.extract_axis_mask_from_krvalue(value, NAME)


def _read_axis_masks(value: Any) -> object:
    return kv.extract_vector_axis_mask_from_krvalue(value, NAME)


def _read_frame(value: Any) -> object:
    return kv.extract_frame_from_krvalue(value, NAME)


def _read_frames(value: Any) -> object:
    return kv.extract_vector_frame_from_krvalue(value, NAME)


def _read_duration(value: Any) -> object:
    # The tool takes the two values out of a list of exactly two itself.
    if not isinstance(value, list) or len(value) != 2:
        raise kv.KRValueError("a duration is given as [seconds, microseconds]")
    try:
        return kv.extract_duration(value[0], value[1], NAME)
    except kv.KRValueError:
        raise
    except RuntimeError as error:
        # The binding raises the library's failure here as a plain
        # RuntimeError; as a reader's failure it is a KRValueError.
        raise kv.KRValueError(str(error)) from error


def _read_floats(value: Any) -> object:
    return kv.extract_vector_floats_from_krvalue(value, NAME)


def _read_float_groups(value: Any) -> object:
    return kv.extract_vector_floats_from_krvalue(value, NAME, False)


def _read_strings(value: Any) -> object:
    return kv.extract_vector_strings_from_krvalue(value, NAME)


def _read_bools(value: Any) -> object:
    return kv.extract_vector_bools_from_krvalue(value, 1, NAME)


def _read_key_value_map(value: Any) -> object:
    return kv.extract_key_value_map_from_krvalue(value, NAME, False)


# Map entries: a key, a value that is not null, then elements the reader
# ignores. Keys are often repeated, the first entry of a key winning.
def _entry(key: str, value: Any, rest: List[Any]) -> List[Any]:
    return [key, value] + rest


_keys = st.one_of(words, st.sampled_from(["speed", "names"]))
_entries = st.builds(_entry, _keys, anything.filter(_not_null), st.lists(_flat_values, max_size=2))
_flat_entries = st.builds(_entry, _keys, _flat_values.filter(_not_null), st.lists(_flat_values, max_size=1))

# Number groups for float-groups: a group is a number or a non-empty list of
# numbers; long lists hold short groups.
_groups = st.one_of(numbers, _lists(numbers, 1))
_short_groups = st.one_of(numbers, st.lists(numbers, min_size=1, max_size=3))

CASES = [
    ReaderCase(
        name="check-array",
        read=_read_check_array,
        valid=_lists(anything, 1, _flat_values),
        near=st.sampled_from([[], None, "[]", 0, 0.0, True]),
    ),
    ReaderCase(
        name="float",
        read=_read_float,
        valid=numbers,
        near=st.one_of(st.lists(numbers, min_size=1, max_size=2), st.sampled_from(["1", True, False, None])),
    ),
    ReaderCase(
        name="float-clip",
        read=_read_float_clip,
        valid=numbers,
        near=st.one_of(st.lists(numbers, min_size=1, max_size=2), st.sampled_from(["0.5", True, None])),
    ),
    ReaderCase(
        name="int",
        read=_read_int,
        valid=numbers,
        near=st.one_of(st.lists(numbers, min_size=1, max_size=2), st.sampled_from(["1", True, False, None])),
    ),
    ReaderCase(
        name="axis-mask",
        read=_read_axis_mask,
        valid=masks,
        near=st.one_of(_near_masks, st.lists(masks, min_size=1, max_size=2), numbers),
    ),
    ReaderCase(
        name="axis-masks",
        read=_read_axis_masks,
        valid=st.one_of(masks, _lists(masks, 1)),
        near=st.one_of(
            _near_masks,
            _ending_in(st.lists(masks, max_size=4), st.one_of(_near_masks, numbers)),
            st.lists(st.lists(masks, min_size=1, max_size=2), min_size=1, max_size=2),
        ),
    ),
    ReaderCase(
        name="frame",
        read=_read_frame,
        valid=frames,
        near=st.one_of(_near_frames, st.lists(frames, min_size=1, max_size=2), numbers),
    ),
    ReaderCase(
        name="frames",
        read=_read_frames,
        valid=st.one_of(frames, _lists(frames, 1)),
        near=st.one_of(
            _near_frames,
            _ending_in(st.lists(frames, max_size=4), st.one_of(_near_frames, numbers)),
            st.lists(st.lists(frames, min_size=1, max_size=2), min_size=1, max_size=2),
        ),
    ),
    ReaderCase(
        name="duration",
        read=_read_duration,
        valid=st.lists(numbers, min_size=2, max_size=2),
        near=st.one_of(st.lists(numbers, max_size=4), st.lists(st.one_of(numbers, anything), min_size=2, max_size=2)),
    ),
    ReaderCase(
        name="floats",
        read=_read_floats,
        valid=st.one_of(numbers, _lists(numbers, 1)),
        near=st.one_of(
            st.sampled_from([[], [[]], [[1.0]], True, "1"]),
            _ending_in(st.lists(numbers, max_size=3), anything),
        ),
    ),
    ReaderCase(
        name="float-groups",
        read=_read_float_groups,
        valid=st.one_of(
            numbers,
            _lists(numbers, 1),
            _lists(numbers, 0).map(_wrapped),  # a list wrapped once, [[]] too
            _lists(_groups, 1, _short_groups),
        ),
        near=st.one_of(
            st.sampled_from([[], [[[]]], [[], []], [[], 1], [1, []], [[[1.0]]], [[1, [2]]], [[1], [[2]]]]),
            st.lists(st.one_of(numbers, st.lists(numbers, max_size=2), anything), min_size=1, max_size=3),
            st.lists(st.lists(anything, max_size=3), min_size=1, max_size=2),
        ),
    ),
    ReaderCase(
        name="strings",
        read=_read_strings,
        valid=st.one_of(words, _lists(words, 1)),
        near=st.one_of(
            st.sampled_from([[], [[]], [["a"]], [None], ["a", None], 0]),
            _ending_in(st.lists(words, max_size=3), anything),
        ),
    ),
    ReaderCase(
        name="bools",
        read=_read_bools,
        valid=st.one_of(st.booleans(), numbers, _lists(anything, 0, _flat_values)),
        near=st.one_of(words, st.none(), st.lists(st.one_of(words, st.none()), max_size=3)),
    ),
    ReaderCase(
        name="key-value-map",
        read=_read_key_value_map,
        valid=_lists(_entries, 0, _flat_entries),
        near=st.one_of(
            st.sampled_from([None, "speed", 1, [None], [[]], [["speed"]], [["speed", None]],
                             [[None, 1]], [[1, 2]], [["speed", None, 1]], [1]]),
            _ending_in(st.lists(_entries, max_size=3), st.one_of(_flat_values, st.lists(_flat_values, max_size=3))),
        ),
    ),
]
