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

from dataclasses import dataclass, field
from typing import Any, Callable, Iterator, List, Tuple

from hypothesis import strategies as st

# Ints and floats as the value type holds them: 32-bit ints, and floats that
# a 32-bit float holds exactly, finite (JSON has no NaN or infinity).
INT32_MIN = -(2**31)
INT32_MAX = 2**31 - 1
FLOAT32_MAX = 3.4028234663852886e38

ints = st.integers(INT32_MIN, INT32_MAX)
floats = st.floats(width=32, allow_nan=False, allow_infinity=False)
numbers = st.one_of(ints, floats)
# Words that are not a reader's type words or mode names, and a few that
# look like them.
words = st.one_of(st.text(max_size=12), st.sampled_from(["line", "LINE", "Line ", "", "composed"]))
# Not named "scalars": importing the family module schema_cases.scalars
# binds that name on this package.
scalar_values = st.one_of(st.none(), st.booleans(), ints, floats, words)
anything = st.recursive(scalar_values, lambda inner: st.lists(inner, max_size=5), max_leaves=20)


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
