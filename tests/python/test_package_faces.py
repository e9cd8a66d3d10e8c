"""What the package shows a Python user: floats kept exact both ways (a
float64 rounds to the nearest float32, a finite one beyond the float range
raises OverflowError naming where it is), reprs that print each float in its
shortest exact form and say what paths and trajectories are, periods taken
exactly, signatures with real types, and dir() with the package's own names."""

import inspect
import math
import re
import struct
from fractions import Fraction

import numpy as np
import pytest
from hypothesis import given, settings, strategies as st

import krvalueutils as kv

FLOAT32_MAX = 3.4028234663852886e38
# Doubles from this magnitude on round to infinity as float32.
OVERFLOW = 3.4028235677973366e38


def float32(x: float) -> float:
    return float(np.float32(x))


def bits(x: float) -> int:
    return struct.unpack("<I", struct.pack("<f", x))[0]


finite_doubles = st.floats(allow_nan=False, allow_infinity=False)


@pytest.mark.filterwarnings("ignore:overflow encountered in cast:RuntimeWarning")
@settings(max_examples=500)
@given(x=finite_doubles, index=st.integers(0, 3))
def test_a_float_rounds_to_the_nearest_float32_or_overflows_where_it_is(x: float, index: int) -> None:
    value = [1.0, 2.0, 3.0, 4.0]
    value[index] = x
    if abs(x) >= OVERFLOW:
        with pytest.raises(OverflowError, match=re.escape(f"value[{index}] is the float {x!r}, outside")):
            kv.dumps(value)
        with pytest.raises(OverflowError, match=r"^the float .* is outside a KRValue float's range"):
            kv.Pose2D(x=x)
        with pytest.raises(OverflowError):
            kv.extract_krvalue_from_vector_position2d(np.array([[0.0, x]]))
        return
    read = kv.loads(kv.dumps(value))
    assert isinstance(read, list)
    assert bits(read[index]) == bits(float32(x))
    assert bits(kv.Pose2D(x=x).x) == bits(float32(x))


@pytest.mark.parametrize("special", [math.nan, math.inf, -math.inf])
def test_nan_and_infinities_stay(special: float) -> None:
    assert kv.dumps([special]) in ("[NaN]", "[Infinity]", "[-Infinity]")
    pose = kv.Pose2D(x=special)
    assert math.isnan(pose.x) if math.isnan(special) else pose.x == special


@settings(max_examples=500)
@given(x=st.floats(width=32), y=st.floats(width=32))
def test_a_records_repr_gives_back_its_floats(x: float, y: float) -> None:
    text = repr(kv.Position2D(x, y))
    shown = re.fullmatch(r"Position2D\(x=(\S+), y=(\S+)\)", text)
    assert shown, text
    for field, original in zip(shown.groups(), (x, y)):
        if math.isnan(original):
            assert field == "nan"
        else:
            assert bits(float(field)) == bits(original), text
    if not (math.isnan(x) or math.isnan(y)) and (x, y) != (y, x):
        assert (repr(kv.Position2D(y, x)) == text) == (bits(x) == bits(y))


def test_paths_trajectories_and_builders_say_what_they_are() -> None:
    builder = kv.extract_path2d_builder_from_krvalue(["Line", [2, 0]], "p")
    assert repr(builder) == ("<krvalueutils.PathBuilder Line, length 2 from Pose2D(x=0, y=0, theta=0) "
                             "to Pose2D(x=2, y=0, theta=0)>")
    path = builder(kv.Pose2D(1, 1, 0))
    assert repr(path) == ("<krvalueutils.Path Line, length 2 from Pose2D(x=1, y=1, theta=0) "
                          "to Pose2D(x=3, y=1, theta=0)>")
    composed = kv.extract_path2d_builder_from_krvalue(
        ["Composed", ["Line", [1, 0]], ["Line", [1, 0]]], "p")
    assert repr(composed).startswith("<krvalueutils.PathBuilder Composed of 2 pieces, length 2 ")
    trajectory = kv.extract_trajectory_pose2d_builder_from_krvalue(
        ["Holonomic", ["Line", [1, 0]], 0.5, 0], "t", Fraction(1, 100), (1, 1), (1, 1), 1.0)
    text = repr(trajectory)
    assert re.fullmatch(r"<krvalueutils\.TrajectoryBuilder Holonomic, \d+/?\d* s from "
                        r"Pose2D\(x=0, y=0, theta=0\) to Pose2D\(x=1, y=0, theta=0\.5\)>", text), text
    built = trajectory(kv.Pose2D())
    assert repr(built) == text.replace("TrajectoryBuilder", "Trajectory")
    assert f" {built.duration} s " in text


@pytest.mark.parametrize("period", [Fraction(1, 100), "1/100", "0.01"])
def test_a_period_is_exact_whatever_form_it_comes_in(period: object) -> None:
    assert kv.HolonomicTrajectoryFactory((1, 1), (1, 1), period).period == Fraction(1, 100)  # type: ignore


def test_a_whole_period_and_a_bad_one() -> None:
    assert kv.NonHolonomicTrajectoryFactory((1, 1), (1, 1), 2).period == 2
    with pytest.raises(TypeError, match="got bool$"):
        kv.NonHolonomicTrajectoryFactory((1, 1), (1, 1), True)
    with pytest.raises(ValueError, match="reads as a fraction"):
        kv.NonHolonomicTrajectoryFactory((1, 1), (1, 1), "fast")


def test_signatures_name_real_types_and_dir_only_the_packages_names() -> None:
    doc = kv.extract_trajectory_pose2d_builder_from_krvalue.__doc__ or ""
    assert "period: fractions.Fraction | int | str | float" in doc
    assert "first_limits: Limits | tuple[float, float]" in doc
    names = dir(kv)
    for name in names:
        public = getattr(kv, name)
        if isinstance(public, type) or inspect.isroutine(public):
            text = public.__doc__ or ""
            # pybind11 writes "handle" or "object" for a parameter it has no type name for.
            assert not re.search(r"(: |-> )(handle|object)\b|_krvalueutils", text), name
            assert public.__module__ == "krvalueutils", name
    assert names == sorted(names)
    assert not [name for name in names if name.startswith("_") or name in ("List", "Union", "json")]
    assert {"Pose2D", "KRValueError", "check", "schema", "loads", "Value"} <= set(names)


def test_a_readers_docstring_shows_its_failures() -> None:
    doc = kv.extract_pose2d_from_krvalue.__doc__ or ""
    for failure in kv.schema("pose2d")["x-messages"]:
        assert "\n    " + failure["message"] in doc


def test_every_schema_but_the_tools_own_is_shown_by_a_function() -> None:
    shown = set()
    for name in dir(kv):
        doc = getattr(kv, name).__doc__ or ""
        shown.update(re.findall(r'Schema: krvalueutils\.schema\("([^"]+)"\)', doc))
    # Comparing two rest requests is the tool's; Python compares them with ==.
    assert shown == set(kv.schema_names()) - {"rest-request-comparison"}


@settings(max_examples=300)
@given(seconds=st.floats(min_value=1e-6, max_value=1000.0))
def test_a_float_period_is_its_nearest_fraction_with_a_denominator_up_to_a_million(seconds: float) -> None:
    period = kv.HolonomicTrajectoryFactory((1, 1), (1, 1), seconds).period
    assert period == Fraction(seconds).limit_denominator(1_000_000)
    assert period.denominator <= 1_000_000
