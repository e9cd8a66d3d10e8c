#!/usr/bin/env python3
"""Reading 100,000 Pose2D from a Python list of lists into a numpy array:
krvalueutils against numpy.asarray (which checks nothing) and against a plain
Python loop that makes the same checks as the reader.

Run with the package on the path, for instance
    PYTHONPATH=build/release/python python3 bench/bench_python.py
Prints the best time of each over several repetitions and the two ratios.

A thread keeps the value it converted last and reuses its blocks, so a
repeated read of lists of the same layout allocates nothing. The time of a
read that finds nothing to reuse (then releases what it built, as a call on a
short list does) is printed too.
"""

import argparse
import time
import timeit

import numpy

import krvalueutils


def python_reader(value: object, name: str) -> numpy.ndarray:
    """extract_vector_pose2d_from_krvalue's checks and messages, in Python."""
    if value is None:
        raise RuntimeError("KRMotion: " + name + " KRValue is invalid.")
    if not isinstance(value, (list, tuple)):
        raise RuntimeError("KRMotion: " + name + " KRValue is not an array.")
    if len(value) == 0:
        raise RuntimeError("KRMotion: " + name + " KRValue is empty.")
    number = (int, float)
    if len(value) == 3 and isinstance(value[0], number) and not isinstance(value[0], bool):
        value = [value]
    flat = []
    for pose in value:
        if not isinstance(pose, (list, tuple)) or len(pose) < 3:
            raise RuntimeError("KRMotion: " + name + " Pose2D is not valid. It has to be [x, y, theta].")
        for field, number_value in zip(("x", "y", "theta"), pose):
            if isinstance(number_value, bool) or not isinstance(number_value, number):
                raise RuntimeError(name + " " + field + ": Expected a float")
            flat.append(number_value)
    return numpy.array(flat, dtype=numpy.float32).reshape(-1, 3)


def best(function, repeat: int) -> float:  # type: ignore[no-untyped-def]
    # CPU time of this process: steadier than wall time on a shared machine.
    return min(timeit.repeat(function, number=1, repeat=repeat, timer=time.process_time))


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--count", type=int, default=100_000)
    parser.add_argument("--repeat", type=int, default=15)
    args = parser.parse_args()

    data = [[i * 0.001, -i * 0.002, float(i % 7)] for i in range(args.count)]
    ours = krvalueutils.extract_vector_pose2d_from_krvalue(data, "poses")
    assert numpy.array_equal(ours, numpy.asarray(data, dtype=numpy.float32))
    assert numpy.array_equal(ours, python_reader(data, "poses"))

    read = krvalueutils.extract_vector_pose2d_from_krvalue
    one = [[0.0, 0.0, 0.0]]
    t_ours = best(lambda: read(data, "poses"), args.repeat)
    t_fresh = best(lambda: (read(data, "poses"), read(one, "poses")), args.repeat)
    t_numpy = best(lambda: numpy.asarray(data, dtype=numpy.float32), args.repeat)
    t_loop = best(lambda: python_reader(data, "poses"), args.repeat)

    print(f"{args.count} Pose2D, best of {args.repeat}:")
    print(f"  krvalueutils                 {t_ours * 1e3:8.2f} ms")
    print(f"  krvalueutils, nothing reused {t_fresh * 1e3:8.2f} ms")
    print(f"  numpy.asarray (float32)      {t_numpy * 1e3:8.2f} ms")
    print(f"  Python loop, same checks     {t_loop * 1e3:8.2f} ms")
    print(f"krvalueutils / numpy.asarray = {t_ours / t_numpy:.2f}x (target <= 1.5x)")
    print(f"Python loop / krvalueutils   = {t_loop / t_ours:.1f}x faster (target >= 10x)")
    print(f"  nothing reused: {t_fresh / t_numpy:.2f}x numpy.asarray, "
          f"{t_loop / t_fresh:.1f}x faster than the loop")


if __name__ == "__main__":
    main()
