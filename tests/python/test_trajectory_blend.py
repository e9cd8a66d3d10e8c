"""Blend tolerances through Python: the readers' keyword reaches every factory
they make, the factories take one and keep it, trajectories show the path
driven and the path as described, and a tolerance the factory refuses fails
with its message, as KRValueError from a reader and RuntimeError from a
factory."""

import math
import re
from fractions import Fraction
from typing import Callable, Optional

import numpy as np
import numpy.typing as npt
import pytest
from hypothesis import given, settings, strategies as st

import krvalueutils as kv

PERIOD = Fraction(1, 100)
LIMITS = (0.5, 0.5)
# A metre, a quarter turn to the left of radius 1 and a metre: the
# curvature jumps at both joints.
LINE_ARC_LINE: kv.Value = ["Composed", ["Line", [1, 0]], ["Circle", [0, 1], 1.5707964], ["Line", [1, 0]]]
NON_HOLONOMIC: kv.Value = ["NonHolonomic", LINE_ARC_LINE, 0]
HOLONOMIC: kv.Value = ["Holonomic", LINE_ARC_LINE, 0.5, 0]
REFUSED = re.compile(r"A trajectory factory's blend tolerance must be finite and not negative, "
                     r"got (-?nan|-?inf|-\d+\.\d{6})\.")

Read = Callable[..., kv.TrajectoryBuilder]
READERS: list[tuple[Read, kv.Value]] = [
    (kv.extract_direct_trajectory_pose2d_builder_from_krvalue, NON_HOLONOMIC),
    (kv.extract_trajectory_pose2d_composed_builder_from_krvalue, ["Composed", NON_HOLONOMIC]),
    (kv.extract_trajectory_pose2d_builder_from_krvalue, NON_HOLONOMIC),
]


def build(read: Read, value: object, **blend: float) -> kv.Trajectory:
    return read(value, "move", PERIOD, LIMITS, (1.0, 1.0), 1.0, **blend)(kv.Pose2D())


def samples(path: Optional[kv.Path]) -> npt.NDArray[np.float32]:
    assert path is not None
    return path.sample(101)


def as_float32(value: float) -> np.float32:
    """What a factory gets: the C++ float nearest `value`, inf beyond them."""
    with np.errstate(over="ignore"):
        return np.float32(value)


def test_a_blend_drives_through_the_joints_and_keeps_the_path_as_described() -> None:
    for value in (NON_HOLONOMIC, HOLONOMIC):
        exact = build(kv.extract_direct_trajectory_pose2d_builder_from_krvalue, value)
        blended = build(kv.extract_direct_trajectory_pose2d_builder_from_krvalue, value,
                        blend_tolerance=0.01)
        assert np.array_equal(samples(exact.path), samples(exact.described_path))
        assert np.array_equal(samples(blended.described_path), samples(exact.path))
        assert not np.array_equal(samples(blended.path), samples(blended.described_path))
        assert repr(blended.path).startswith("<krvalueutils.Path Driven of ")
        assert repr(blended.described_path).startswith("<krvalueutils.Path Composed of 3 pieces, ")
        # Both end where the description does.
        np.testing.assert_allclose(blended.sample([float(blended.duration)])[0, :2], [2, 2],
                                   atol=1e-5)
    # Facing along the path, the robot no longer slows down for the jumps.
    exact_time = build(kv.extract_direct_trajectory_pose2d_builder_from_krvalue, NON_HOLONOMIC).duration
    blended_time = build(kv.extract_direct_trajectory_pose2d_builder_from_krvalue, NON_HOLONOMIC,
                         blend_tolerance=0.01).duration
    assert blended_time < exact_time


@pytest.mark.parametrize("tolerance, shown", [
    (math.nan, "nan"), (-1.0, "-1.000000"), (math.inf, "inf"), (-math.inf, "-inf"),
    (-1e-40, "-0.000000"),  # a float32 denormal, still negative
])
def test_a_refused_tolerance_raises_the_factorys_message(tolerance: float, shown: str) -> None:
    message = f"A trajectory factory's blend tolerance must be finite and not negative, got {shown}."
    for read, value in READERS:
        with pytest.raises(kv.KRValueError) as raised:
            build(read, value, blend_tolerance=tolerance)
        assert (str(raised.value), raised.value.path, raised.value.argument) == (message, (), "move")
    with pytest.raises(RuntimeError) as refused:
        kv.HolonomicTrajectoryFactory(LIMITS, LIMITS, PERIOD, blend_tolerance=tolerance)
    assert type(refused.value) is RuntimeError and str(refused.value) == message
    factory = kv.NonHolonomicTrajectoryFactory(LIMITS, LIMITS, PERIOD, 1.0, 0.25)
    with pytest.raises(RuntimeError, match="^" + re.escape(message) + "$"):
        factory.blend_tolerance = tolerance
    assert factory.blend_tolerance == 0.25


def test_a_factory_keeps_its_tolerance_and_builders_keep_theirs() -> None:
    factory = kv.NonHolonomicTrajectoryFactory(LIMITS, (1, 1), PERIOD)
    assert factory.blend_tolerance == 0.0
    kv.extract_path2d_into_trajectory_factory(LINE_ARC_LINE, "p", factory)
    before = factory.get_trajectory_builder(0)
    factory.blend_tolerance = 0.01
    assert factory.blend_tolerance == np.float32(0.01)
    after = factory.get_trajectory_builder(0)
    read = build(kv.extract_direct_trajectory_pose2d_builder_from_krvalue, NON_HOLONOMIC,
                 blend_tolerance=0.01)
    assert after(kv.Pose2D()).duration == read.duration < before(kv.Pose2D()).duration
    made = kv.HolonomicTrajectoryFactory(LIMITS, (1, 1), PERIOD, blend_tolerance=0.01)
    assert made.blend_tolerance == np.float32(0.01)


# Any double, and the edges of its float32 conversion: values that round to
# 0 or -0 (accepted), to the largest float32 (accepted) or beyond it (an
# OverflowError before any factory sees it).
TOLERANCES = st.floats(allow_nan=True, allow_infinity=True) | st.sampled_from([
    0.0, -0.0, 5e-324, -5e-324, 1e-45, -1e-45, 3.4028235e38, 3.40282356e38, 3.4028236e38, -3.5e38,
    1e-3, 0.05, 10.0])


@settings(max_examples=200, deadline=None)
@given(tolerance=TOLERANCES, reader=st.sampled_from(READERS))
def test_any_tolerance_is_the_factorys_to_refuse_and_keeps_the_path_as_described(
        tolerance: float, reader: tuple[Read, kv.Value]) -> None:
    read, value = reader
    single = as_float32(tolerance)
    if math.isfinite(tolerance) and math.isinf(single):
        with pytest.raises(OverflowError, match="outside a KRValue float's range"):
            build(read, value, blend_tolerance=tolerance)
        return
    try:
        kv.NonHolonomicTrajectoryFactory(LIMITS, LIMITS, PERIOD, blend_tolerance=tolerance)
        verdict = None
    except RuntimeError as error:
        verdict = str(error)
    assert (verdict is None) == bool(np.isfinite(single) and single >= 0)
    if verdict is not None:
        assert REFUSED.fullmatch(verdict), verdict
        with pytest.raises(kv.KRValueError) as raised:
            build(read, value, blend_tolerance=tolerance)
        assert (str(raised.value), raised.value.path) == (verdict, ())
        return
    trajectory = build(read, value, blend_tolerance=tolerance)
    exact = build(read, value)
    # A composed trajectory of one piece is that piece, read with the same
    # tolerance by the direct reader.
    piece = build(kv.extract_direct_trajectory_pose2d_builder_from_krvalue, NON_HOLONOMIC,
                  blend_tolerance=tolerance)
    times = np.linspace(0.0, float(piece.duration), 33)
    assert trajectory.duration == piece.duration
    assert np.array_equal(trajectory.sample(times), piece.sample(times))
    if trajectory.described_path is not None:
        assert np.array_equal(samples(trajectory.described_path), samples(exact.path))
    if single == 0:
        assert np.array_equal(samples(piece.path), samples(piece.described_path))
        assert trajectory.duration == exact.duration
