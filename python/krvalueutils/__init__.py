"""Checked conversions between plain Python values and robot records.

Values are plain Python objects: None (the invalid value), bool, int, float,
str and lists (a tuple reads as a list). Readers (``extract_..._from_krvalue``)
return their result and raise RuntimeError with the C++ library's message;
writers return the plain value. Lists of fixed-size numeric records come back
as numpy float32 arrays (numpy is needed for those functions only). Warnings
go to the logging logger "KRValueUtils".
"""

from ._krvalueutils import *  # noqa: F401,F403

from typing import Any as _Any, Callable as _Callable, List as _List, Tuple as _Tuple, Union as _Union

import json as _json

from . import _krvalueutils

#: A value as plain Python objects, as readers take them and writers return
#: them: None (the invalid value), bool, int, float, str or a list of values.
Value = _Union[None, bool, int, float, str, _List["Value"]]

# The readers check() knows, by the krvalue tool's names, and whether each is
# a list reader (whose elements check() reads one at a time).
_CHECKED: "dict[str, _Tuple[str, bool]]" = {
    "check-array": ("check_array_from_krvalue", False),
    "position2d": ("extract_position2d_from_krvalue", False),
    "pose2d": ("extract_pose2d_from_krvalue", False),
    "pose2d-and-time": ("extract_pose2d_and_time_from_krvalue", False),
    "position3d": ("extract_position3d_from_krvalue", False),
    "position6d": ("extract_position6d_from_krvalue", False),
    "transform": ("extract_transform_from_krvalue", False),
    "position2ds": ("extract_vector_position2d_from_krvalue", True),
    "pose2ds": ("extract_vector_pose2d_from_krvalue", True),
    "pose2d-and-times": ("extract_vector_pose2d_and_time_from_krvalue", True),
    "position3ds": ("extract_vector_position3d_from_krvalue", True),
    "position6ds": ("extract_vector_position6d_from_krvalue", True),
    "transforms": ("extract_vector_transform_from_krvalue", True),
    "floats": ("extract_vector_floats_from_krvalue", True),
    "strings": ("extract_vector_strings_from_krvalue", True),
    "axis-masks": ("extract_vector_axis_mask_from_krvalue", True),
    "frames": ("extract_vector_frame_from_krvalue", True),
    "axis-mask": ("extract_axis_mask_from_krvalue", False),
    "frame": ("extract_frame_from_krvalue", False),
    "key": ("extract_key_from_krvalue", False),
    "rest-requests": ("extract_vector_rest_request_from_krvalue", True),
    "support-sequence": ("extract_support_sequence_from_krvalue", False),
    "support-sequences": ("extract_vector_support_sequence_from_krvalue", True),
    "touch": ("extract_touch_from_krvalue", True),
    "navigation": ("extract_navigation_from_krvalue", True),
    "metrical-data": ("extract_metrical_data_from_krvalue", False),
    "path": ("extract_path2d_builder_from_krvalue", False),
    "direct-path": ("extract_direct_path2d_builder_from_krvalue", False),
}


def check(reader_name: str, value: _Any, name: str = "value") -> "list[tuple[tuple[int, ...], str]]":
    """Every failure of a reader on `value`, as (path, message) pairs; [] when
    it accepts the value. `reader_name` is the krvalue tool's name of the
    reader ("pose2ds"). A list reader reads each element on its own, as a list
    of one, so every bad element is found; when no element fails alone (an
    empty list, names repeated across elements), the reader's failure on the
    whole value is the one pair. ValueError for an unknown reader name."""
    if reader_name not in _CHECKED:
        raise ValueError(f"unknown reader {reader_name!r}; known: {', '.join(sorted(_CHECKED))}")
    function_name, is_list = _CHECKED[reader_name]
    read: _Callable[..., object] = getattr(_krvalueutils, function_name)
    try:
        read(value, name)
        return []
    except _krvalueutils.KRValueError as error:
        whole = (tuple(error.path), str(error))
    found = []
    if is_list and isinstance(value, (list, tuple)):
        for index, element in enumerate(value):
            try:
                read([element], name)
            except _krvalueutils.KRValueError as error:
                found.append(((index,) + tuple(error.path)[1:], str(error)))
    return found or [whole]


def schema(reader_name: str) -> "dict[str, _Any]":
    """The JSON Schema (draft 2020-12) of the values a reader accepts, as a
    dict, by the krvalue tool's name of the reader ("pose2ds"; "path" and
    "trajectory" for the descriptions). Its title is the layout, its
    description says what a schema cannot (int against float, orthonormality,
    unique names). ValueError for a name without a schema."""
    result: "dict[str, _Any]" = _json.loads(_krvalueutils._schema_text(reader_name))
    return result


def schema_names() -> "list[str]":
    """The names of the readers that have a schema, in order."""
    names: "list[str]" = _krvalueutils._schema_names()
    return names


def schema_bundle() -> "dict[str, _Any]":
    """Every reader's schema in one draft 2020-12 document, under
    $defs/<reader>, each keeping its own $id (urn:krvalueutils:schema:<reader>)."""
    result: "dict[str, _Any]" = _json.loads(_krvalueutils._schema_bundle())
    return result


# dir() and `from krvalueutils import *` show the package's own names only,
# not the helpers it imports.
__all__ = sorted(
    [name for name in dir(_krvalueutils) if not name.startswith("_")]
    + ["Value", "check", "schema", "schema_names", "schema_bundle"])


def __dir__() -> "list[str]":
    return list(__all__)
