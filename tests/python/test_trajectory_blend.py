"""Blend tolerances through Python: the readers' keyword reaches every factory
they make, the factories take one and keep it, trajectories show the path
driven and the path as described, and a tolerance the factory refuses fails
with its message, as KRValueError from a reader and RuntimeError from a
factory. Which tolerances the factory refuses, and what blending does, is
tested in C++."""

import math
from fractions import Fraction
from typing import Callable, Optional

import numpy as np
import numpy.typing as npt
import pytest

import krvalueutils as kv

PERIOD = Fraction(1, 100)
LIMITS = (0.5, 0.5)
# A metre, a quarter turn to the left of radius 1 and a metre: the
# curvature jumps at both joints.
LINE_ARC_LINE: kv.Value = ["Composed", ["Line", [1, 0]], ["Circle", [0, 1], 1.5707964], ["Line", [1, 0]]]
NON_HOLONOMIC: kv.Value = ["NonHolonomic", LINE_ARC_LINE, 0]
HOLONOMIC: kv.Value = ["Holonomic", LINE_ARC_LINE, 0.5, 0]

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


@pytest.mark.parametrize("read, value", READERS)
def test_each_reader_passes_the_tolerance_on(read: Read, value: kv.Value) -> None:
    # Facing along the path, the robot no longer slows down for the jumps.
    assert build(read, value, blend_tolerance=0.01).duration < build(read, value).duration


def test_a_blended_trajectory_shows_the_path_driven_and_the_path_as_described() -> None:
    for value in (NON_HOLONOMIC, HOLONOMIC):
        exact = build(kv.extract_direct_trajectory_pose2d_builder_from_krvalue, value)
        blended = build(kv.extract_direct_trajectory_pose2d_builder_from_krvalue, value,
                        blend_tolerance=0.01)
        assert np.array_equal(samples(exact.path), samples(exact.described_path))
        assert np.array_equal(samples(blended.described_path), samples(exact.path))
        assert not np.array_equal(samples(blended.path), samples(blended.described_path))
        assert repr(blended.path).startswith("<krvalueutils.Path Driven of ")
        np.testing.assert_allclose(blended.sample([float(blended.duration)])[0, :2], [2, 2],
                                   atol=1e-5)


@pytest.mark.parametrize("tolerance, shown", [(math.nan, "nan"), (-1e-40, "-0.000000")])
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
    with pytest.raises(RuntimeError, match="^" + message.replace(".", r"\.") + "$"):
        factory.blend_tolerance = tolerance
    assert factory.blend_tolerance == 0.25
    with pytest.raises(OverflowError, match="outside a KRValue float's range"):
        build(*READERS[0], blend_tolerance=3.4028236e38)


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
