"""Where a reader failed, from Python: KRValueError's path and argument, and
check(), which lists every bad element of a list."""

from fractions import Fraction

import pytest
from hypothesis import given, settings, strategies as st

import krvalueutils as kv


@pytest.mark.parametrize(
    "read, value, message, path",
    [
        (kv.extract_pose2d_from_krvalue, [1, 2],
         "KRMotion: waypoints Pose2D is not valid. It has to be [x, y, theta].", ()),
        (kv.extract_path2d_builder_from_krvalue,
         ["Composed", ["Line", [1, 0]], ["Circle", [0, None], 1]],
         "waypoints y: Expected a float but found an invalid KRValue", (2, 1, 1)),
        (kv.extract_vector_floats_from_krvalue, [1.0, 2, "3"], "waypoints KRValue: Expected a float",
         (2,)),
        (lambda value, name: kv.extract_trajectory_pose2d_builder_from_krvalue(
            value, name, Fraction(1, 100), (1, 1), (1, 1), 1.0),
         ["Composed", ["Holonomic", ["Line", [1, 0]], 0, True]],
         "waypoints KRValue: Expected a float", (1, 3)),
    ],
)
def test_a_failure_says_where_and_keeps_its_message(read, value, message, path) -> None:  # type: ignore
    with pytest.raises(kv.KRValueError) as raised:
        read(value, "waypoints")
    assert str(raised.value) == message
    assert raised.value.path == path
    assert raised.value.argument == "waypoints"
    assert isinstance(raised.value, RuntimeError)  # except RuntimeError keeps working


def test_conversion_errors_stay_type_and_overflow_errors_with_their_position() -> None:
    with pytest.raises(TypeError, match=r"^value\[1\]\[0\] is a dict"):
        kv.extract_vector_pose2d_from_krvalue([[1, 2, 3], [{}]], "waypoints")
    with pytest.raises(OverflowError, match=r"value\[2\]"):
        kv.extract_vector_floats_from_krvalue([1, 2, 2**40], "speeds")


def test_check_lists_every_bad_element() -> None:
    poses = [[1, 2, 3], [4, "y", 6], [1, 2], [7, 8, 9]]
    assert kv.check("pose2ds", poses, "waypoints") == [
        ((1, 1), "waypoints y: Expected a float"),
        ((2,), "KRMotion: waypoints Pose2D is not valid. It has to be [x, y, theta]."),
    ]
    assert kv.check("pose2ds", [[1, 2, 3]]) == []
    # No element fails alone: the failure of the whole.
    assert kv.check("support-sequences", [["a", [], []], ["a", [], []]]) == [
        ((1, 0), "KRMotion: value At least two support sequences containt the same name.")]
    assert kv.check("pose2ds", []) == [((), "KRMotion: value KRValue is empty.")]
    with pytest.raises(ValueError, match="unknown reader 'poses'"):
        kv.check("poses", [])


POSE = st.lists(st.floats(width=32, allow_nan=False) | st.integers(-1000, 1000),
                min_size=3, max_size=3)


@settings(max_examples=200, deadline=None)
@given(st.lists(POSE, min_size=1, max_size=30), st.data())
def test_a_spoiled_number_is_found_where_it_is(poses: list[list[float]], data: st.DataObject) -> None:
    i = data.draw(st.integers(0, len(poses) - 1))
    j = data.draw(st.integers(0, 2))
    spoiler = data.draw(st.sampled_from(["s", None, True, []]))
    poses[i][j] = spoiler  # type: ignore[call-overload]
    with pytest.raises(kv.KRValueError) as raised:
        kv.extract_vector_pose2d_from_krvalue(poses, "waypoints")
    # The poses before are read whole; a bool is no number either.
    assert raised.value.path == (i, j)
    assert kv.check("pose2ds", poses, "waypoints") == [((i, j), str(raised.value))]
