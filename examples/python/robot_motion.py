#!/usr/bin/env python3
"""Reads a motion request the way a platform script receives it, as plain
Python values, and turns it into records, numpy arrays and a trajectory."""

import logging
from fractions import Fraction

import krvalueutils as kv

# Waypoints, a speed and a path, as the JSON text form of a value.
REQUEST = kv.loads('[[[0, 0, 0], [1.0, 0.5, 0.25], [2, 1, 0.5]], 1.5, ["Line", [1.0, 0.0]]]')


def main() -> None:
    # Warnings of the library (a clipped speed below) arrive through logging.
    logging.basicConfig(format="%(levelname)s %(name)s.%(funcName)s: %(message)s")

    assert isinstance(REQUEST, list)
    waypoints, speed, path_description = REQUEST
    assert isinstance(waypoints, list)

    # A list of poses becomes a float32 array of shape (N, 3): x, y, theta.
    poses = kv.extract_vector_pose2d_from_krvalue(waypoints, "waypoints")
    print("waypoints", poses.shape, poses.dtype)
    print("last waypoint", kv.extract_pose2d_from_krvalue(waypoints[-1], "waypoint"))

    # Numbers are checked and clipped; the clip is logged as a warning.
    clipped = kv.extract_float_and_clip(speed, 0.0, 1.0, "speed", "value")
    print("speed", clipped)

    # A malformed value raises RuntimeError with the library's exact message.
    try:
        kv.extract_pose2d_from_krvalue([1.0, 2.0], "target")
    except RuntimeError as error:
        print("rejected:", error)

    # A path description becomes a builder; calling it makes the path.
    path = kv.extract_path2d_builder_from_krvalue(path_description, "path")(kv.Pose2D())
    print("path length", path.length, "end", path.end_pose)

    # A trajectory along it, sampled every 0.5 s into an (N, 9) array.
    builder = kv.extract_trajectory_pose2d_builder_from_krvalue(
        ["NonHolonomic", path_description, 0.0],
        "trajectory",
        Fraction(1, 100),
        kv.Limits(max_velocity=0.5, max_acceleration=0.5),
        (1.0, 1.0),
        1.0,
    )
    trajectory = builder(kv.Pose2D())
    times = [float(i) * 0.5 for i in range(int(trajectory.duration * 2) + 1)]
    states = trajectory.sample(times)
    print("duration", trajectory.duration, "samples", states.shape)
    end = trajectory.state_at(float(trajectory.duration)).position
    print("end as a value:", kv.dumps(kv.extract_krvalue_from_pose2d(end)))


if __name__ == "__main__":
    main()
