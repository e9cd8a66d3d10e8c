"""The readers of single numbers, axis masks, frames, durations, float,
string and bool lists and key/value maps, each called as the krvalue tool
calls it with its default options (--name value, --field value, --min 0,
--max 1, --count 1, --single-group and --skip-second off)."""

from typing import Any, List

from hypothesis import strategies as st

import krvalueutils as kv

from . import (ReaderCase, anything, as_reader_failure, fixed, lists_of, numbers, scalar_values,
               words)

NAME = "value"

# Ints the mask and frame readers take, and floats that truncate to one of
# them, with the float32 neighbours of the limits; then those just outside.
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
near_masks = st.sampled_from([0, 64, -1, 0.9999999403953552, 64.0, -63, 127, 65, -0.0])
near_frames = st.sampled_from([-1, 3, -1.0, 3.0, 4, -2, 10000000000.0])


def _read_duration(value: Any) -> object:
    # The tool takes the two values out of a list of exactly two itself.
    if not isinstance(value, list) or len(value) != 2:
        raise kv.KRValueError("a duration is given as [seconds, microseconds]")
    return as_reader_failure(lambda: kv.extract_duration(value[0], value[1], NAME))


def _entry(key: str, value: Any, rest: List[Any]) -> List[Any]:
    return [key, value] + rest


def _not_null(value: Any) -> bool:
    return value is not None


# Map entries: a key, a value that is not null, then elements the reader
# ignores. Keys are often repeated, the first entry of a key winning.
_keys = st.one_of(words, st.sampled_from(["speed", "names"]))
_entries = st.builds(_entry, _keys, anything.filter(_not_null), st.lists(scalar_values, max_size=2))
_flat_entries = st.builds(_entry, _keys, scalar_values.filter(_not_null),
                          st.lists(scalar_values, max_size=1))


def _wrapped(value: Any) -> List[Any]:
    return [value]


CASES = [
    ReaderCase("check-array", lambda v: kv.check_array_from_krvalue(v, NAME),
               lists_of(anything, 1, scalar_values)),
    ReaderCase("float", lambda v: kv.extract_float(v, NAME, NAME), numbers),
    ReaderCase("float-clip", lambda v: kv.extract_float_and_clip(v, 0.0, 1.0, NAME, NAME), numbers),
    ReaderCase("int", lambda v: kv.extract_int_from_krvalue(v, NAME, NAME), numbers),
    ReaderCase("axis-mask", lambda v: kv.extract_axis_mask_from_krvalue(v, NAME), masks,
               near=st.one_of(near_masks, numbers)),
    ReaderCase("axis-masks", lambda v: kv.extract_vector_axis_mask_from_krvalue(v, NAME),
               st.one_of(masks, lists_of(masks, 1)), near=st.one_of(near_masks, numbers)),
    ReaderCase("frame", lambda v: kv.extract_frame_from_krvalue(v, NAME), frames,
               near=st.one_of(near_frames, numbers)),
    ReaderCase("frames", lambda v: kv.extract_vector_frame_from_krvalue(v, NAME),
               st.one_of(frames, lists_of(frames, 1)), near=st.one_of(near_frames, numbers)),
    ReaderCase("duration", _read_duration, fixed(2)),
    ReaderCase("floats", lambda v: kv.extract_vector_floats_from_krvalue(v, NAME),
               st.one_of(numbers, lists_of(numbers, 1))),
    ReaderCase(
        "float-groups", lambda v: kv.extract_vector_floats_from_krvalue(v, NAME, False),
        st.one_of(numbers, lists_of(numbers, 1),
                  lists_of(numbers).map(_wrapped),  # a list wrapped once, [[]] too
                  lists_of(st.one_of(numbers, st.lists(numbers, min_size=1, max_size=3)), 1)),
        near=st.sampled_from([[[[]]], [[], []], [[], 1], [1, []], [[1, [2]]], [[1], [[2]]]])),
    ReaderCase("strings", lambda v: kv.extract_vector_strings_from_krvalue(v, NAME),
               st.one_of(words, lists_of(words, 1))),
    ReaderCase("bools", lambda v: kv.extract_vector_bools_from_krvalue(v, 1, NAME),
               st.one_of(st.booleans(), numbers, lists_of(anything, 0, scalar_values))),
    ReaderCase("key-value-map", lambda v: kv.extract_key_value_map_from_krvalue(v, NAME, False),
               lists_of(_entries, 0, _flat_entries),
               near=st.sampled_from([[["speed", None]], [[None, 1]], [["speed", None, 1]]])),
]
