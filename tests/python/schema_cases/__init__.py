"""What the schema agreement test needs of each reader, and the near misses
it makes of any reader's valid values.

Each family module (scalars, geometry, state, motion) lists one ReaderCase
per reader of the krvalue tool, under the tool's name, which is also the name
of the reader's schema. test_schemas.py checks every case: a value the reader
accepts is valid under the schema, and a value valid under the schema that
the reader rejects falls under one of the case's gaps, the constraints that
JSON Schema cannot express. A case without gaps claims that the reader and
its schema accept exactly the same values.
"""

import re
from dataclasses import dataclass, field
from typing import Any, Callable, Iterator, List, Optional, Tuple

from hypothesis import strategies as st

import krvalueutils as kv

# Ints and floats as the value type holds them: 32-bit ints, and floats that
# a 32-bit float holds exactly, finite (JSON has no NaN or infinity).
INT32_MIN = -(2**31)
INT32_MAX = 2**31 - 1
FLOAT32_MAX = 3.4028234663852886e38

SMALLEST_SUBNORMAL = 1.401298464324817e-45
SMALLEST_NORMAL = 1.1754943508222875e-38

ints = st.integers(INT32_MIN, INT32_MAX)
floats = st.floats(width=32, allow_nan=False, allow_infinity=False)
# Numbers at the edges of what the value type holds, drawn often: int32
# extremes, signed zeros, the smallest subnormal and normal floats, the
# largest float, the first int a float cannot hold and the floats at the ends
# of the int range.
edge_floats = st.sampled_from([
    0.0, -0.0, 1.0, -1.0, 0.5, SMALLEST_SUBNORMAL, -SMALLEST_SUBNORMAL, SMALLEST_NORMAL,
    FLOAT32_MAX, -FLOAT32_MAX, 16777217.0, -2147483648.0, 2147483648.0])
edge_ints = st.sampled_from([INT32_MIN, INT32_MAX, 0, -1, 1, 16777217])
any_float = st.one_of(floats, edge_floats)
numbers = st.one_of(ints, edge_ints, any_float)
# Words that are not a reader's type words or mode names, and a few that
# look like them.
words = st.one_of(st.text(max_size=12), st.sampled_from(["line", "LINE", "Line ", "", "composed"]))
# Not named "scalars": importing the family module schema_cases.scalars
# binds that name on this package.
scalar_values = st.one_of(st.none(), st.booleans(), ints, floats, words)
anything = st.recursive(scalar_values, lambda inner: st.lists(inner, max_size=5), max_leaves=20)
# Non-null values that are not lists, and those with null and the empty list.
non_null_scalars = st.one_of(st.booleans(), numbers, words)
non_arrays = st.one_of(st.none(), non_null_scalars, st.just([]))


def as_list(items: Tuple[Any, ...]) -> List[Any]:
    return list(items)


def is_list(value: Any) -> bool:
    return isinstance(value, list)


def is_number(value: Any) -> bool:
    return isinstance(value, (int, float)) and not isinstance(value, bool)


def lists_of(element: "st.SearchStrategy[Any]", min_size: int = 0,
             long_element: "Optional[st.SearchStrategy[Any]]" = None) -> "st.SearchStrategy[List[Any]]":
    """Short lists mostly, now and then a long one (of `long_element` where
    the elements are large themselves)."""
    return st.one_of(
        st.lists(element, min_size=min_size, max_size=6),
        st.lists(element if long_element is None else long_element,
                 min_size=max(min_size, 30), max_size=60))


def _concatenated(front: List[Any], rest: List[Any]) -> List[Any]:
    return front + rest


def then(front: "st.SearchStrategy[List[Any]]",
         rest: "st.SearchStrategy[List[Any]]") -> "st.SearchStrategy[List[Any]]":
    """A list followed by another."""
    return st.builds(_concatenated, front, rest)


def with_extra(prefix: "st.SearchStrategy[List[Any]]", max_extra: int = 2) -> "st.SearchStrategy[List[Any]]":
    """A list followed by up to `max_extra` elements of any kind, which the
    reader does not read."""
    return then(prefix, st.lists(anything, max_size=max_extra))


def fixed(count: int, element: "st.SearchStrategy[Any]" = numbers) -> "st.SearchStrategy[List[Any]]":
    return st.lists(element, min_size=count, max_size=count)


def rejected_with(read: Callable[[Any], object], *patterns: str) -> Callable[[Any], bool]:
    """A gap's test: `read` rejects the value with a message matching one of
    `patterns`, the message of the constraint the schema leaves out."""
    def applies(value: Any) -> bool:
        try:
            read(value)
        except kv.KRValueError as error:
            return any(re.search(pattern, str(error)) for pattern in patterns)
        return False
    return applies


def as_reader_failure(call: Callable[[], Any]) -> Any:
    """Runs a call the tool makes besides the reader (a conversion, building
    a path): its failure rejects the value as a reader's does, so a plain
    RuntimeError becomes KRValueError with the same message."""
    try:
        return call()
    except kv.KRValueError:
        raise
    except RuntimeError as error:
        raise kv.KRValueError(str(error)) from error


@dataclass(frozen=True)
class Gap:
    """A constraint of the reader that its schema cannot express, as the
    schema's description states it; `applies` tells whether a value that the
    schema allows and the reader rejects falls under it."""

    constraint: str
    applies: Callable[[Any], bool]


@dataclass(frozen=True)
class ReaderCase:
    """One reader against its schema."""

    # The krvalue tool's name of the reader, and of its schema.
    name: str
    # Runs the reader on a value with the argument name "value"; raises
    # krvalueutils.KRValueError (a RuntimeError) when the reader rejects it.
    read: Callable[[Any], object]
    # Values the reader accepts, covering every form it takes.
    valid: "st.SearchStrategy[Any]"
    # Near misses of the reader's own, beyond those made from `valid` by
    # near_misses(): unknown type words, a wrong kind where it matters.
    near: "st.SearchStrategy[Any]" = field(default_factory=st.nothing)
    # Empty: the schema expresses acceptance fully.
    gaps: Tuple[Gap, ...] = ()


# ---------------------------------------------------------------------------
# Near misses: a valid value with one thing changed somewhere in it.

def _paths(value: Any, prefix: Tuple[int, ...] = ()) -> Iterator[Tuple[int, ...]]:
    """Every position in a value, the whole first."""
    yield prefix
    if isinstance(value, list):
        for i, element in enumerate(value):
            yield from _paths(element, prefix + (i,))


def _replace(value: Any, path: Tuple[int, ...], new: Any) -> Any:
    if not path:
        return new
    copy = list(value)
    copy[path[0]] = _replace(value[path[0]], path[1:], new)
    return copy


def _at(value: Any, path: Tuple[int, ...]) -> Any:
    for i in path:
        value = value[i]
    return value


@st.composite
def _changed(draw: Callable[..., Any], valid: "st.SearchStrategy[Any]") -> Any:
    value = draw(valid)
    path = draw(st.sampled_from(list(_paths(value))))
    node = _at(value, path)
    changes: List[Callable[[], Any]] = [
        lambda: draw(scalar_values),                       # another kind
        lambda: [node],                                    # wrapped once more
        lambda: draw(st.lists(scalar_values, max_size=3)),  # a short list instead
    ]
    if isinstance(node, list):
        changes.append(lambda: node + [draw(anything)])   # one element more
        if node:
            changes.append(lambda: node[:-1])             # one element less
            changes.append(lambda: node + node[-1:])      # the last one twice
            changes.append(lambda: node[0])               # unwrapped
    if isinstance(node, str):
        changes.append(lambda: node.lower())
        changes.append(lambda: node + "s")
    if isinstance(node, int) and not isinstance(node, bool):
        changes.append(lambda: float(node))
    if isinstance(node, float) and INT32_MIN <= node <= INT32_MAX:
        changes.append(lambda: int(node))
    if isinstance(node, int) and not isinstance(node, bool):
        changes.append(lambda: draw(st.sampled_from([INT32_MIN, INT32_MAX, -1, 0, 6, 63, 64])))
    new = draw(st.sampled_from(changes))()
    return _replace(value, path, new)


def deeply_nested(valid: "st.SearchStrategy[Any]") -> "st.SearchStrategy[Any]":
    """A valid value wrapped in many lists."""
    # A named function: hypothesis reads a lambda's source on every draw.
    return st.builds(_wrap, valid, st.integers(2, 200))


def _wrap(value: Any, depth: int) -> Any:
    for _ in range(depth):
        value = [value]
    return value


def near_misses(valid: "st.SearchStrategy[Any]") -> "st.SearchStrategy[Any]":
    """Valid values with one change: another kind anywhere, an element more
    or less, a list wrapped or unwrapped, a word changed, an int for a float
    or a float for an int, extreme ints; and deep nesting."""
    return st.one_of(_changed(valid), deeply_nested(valid))


# ---------------------------------------------------------------------------
# Helpers for gaps.

def contains_integral_float(value: Any) -> bool:
    """Whether a float with an integral value (1.0) is somewhere in the
    value: JSON Schema's "integer" takes it, a reader that wants an int does
    not."""
    if isinstance(value, list):
        return any(contains_integral_float(element) for element in value)
    return isinstance(value, float) and value.is_integer()
