"""Generated tests of the text form through Python: any value the value type
can hold (floats exact in float32) reads back from its text with its kinds,
NaN, infinities, -0.0, denormals, extreme ints and any Unicode string
included. Where malformed text fails is the C++ suite's business: the
binding passes the text through unchanged."""

import json
import math
import struct

from hypothesis import given, settings, strategies as st

import krvalueutils as kv

INT32 = st.integers(min_value=-(2**31), max_value=2**31 - 1)
# Every float32, NaN, the infinities, -0.0 and the denormals included.
FLOAT32 = st.floats(width=32, allow_nan=True, allow_infinity=True, allow_subnormal=True)
# Any Unicode string Python can encode as UTF-8 (no lone surrogates).
TEXT = st.text(alphabet=st.characters(blacklist_categories=("Cs",)))
SCALARS = st.none() | st.booleans() | INT32 | FLOAT32 | TEXT
VALUES = st.recursive(SCALARS, lambda children: st.lists(children, max_size=6), max_leaves=40)


def same(original: object, read: object) -> bool:
    """Equal, with the kinds kept (True is not 1, 1 is not 1.0), NaN equal to
    NaN and -0.0 told apart from 0.0 by its sign."""
    if type(original) is not type(read):
        return False
    if isinstance(original, float) and isinstance(read, float):
        if math.isnan(original):
            return math.isnan(read)
        return struct.pack("<f", original) == struct.pack("<f", read)
    if isinstance(original, list) and isinstance(read, list):
        return len(original) == len(read) and all(map(same, original, read))
    return original == read


@settings(max_examples=400, deadline=None)
@given(VALUES)
def test_every_value_reads_back_from_its_text(value: object) -> None:
    text = kv.dumps(value)
    read = kv.loads(text)
    assert same(value, read), (value, text, read)
    assert kv.dumps(read) == text


@settings(max_examples=200, deadline=None)
@given(st.lists(FLOAT32, min_size=1, max_size=20))
def test_printed_floats_are_the_words_and_numbers_python_reads(floats: list[float]) -> None:
    # The text form's words are Python's own: json reads what dumps writes,
    # each number as the double nearest to the float's shortest text, which
    # rounds back to the float.
    text = kv.dumps(floats)
    for original, read in zip(floats, json.loads(text)):
        if math.isnan(original):
            assert math.isnan(read)
        else:
            assert struct.unpack("<f", struct.pack("<f", read))[0] == original
    # And the other way: what json writes of them reads as the same floats.
    assert same(floats, kv.loads(json.dumps(floats)))
