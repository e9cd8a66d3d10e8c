"""Tests of the Python package krvalueutils: values both ways, exact messages,
numpy shapes, logging, paths and trajectories, threads and the example."""

import ast
import inspect
import logging
import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from fractions import Fraction
from pathlib import Path

import numpy as np
import pytest

import krvalueutils as kv


@pytest.mark.parametrize(
    "value, text",
    [
        ((1, (2.0,)), "[1, [2.0]]"),
        ([np.float32(1.5), np.int64(3), np.bool_(True)], "[1.5, 3, true]"),
        (np.array([[1, 2], [3, 4]], dtype=np.int32), "[[1, 2], [3, 4]]"),
        (np.array([0.25], dtype=np.float64), "[0.25]"),
    ],
)
def test_tuples_and_numpy_are_read_as_lists_and_numbers(value: object, text: str) -> None:
    assert kv.dumps(value) == text


def test_a_value_deeper_than_the_recursion_limit_raises_recursion_error() -> None:
    with pytest.raises(RecursionError, match="while converting a KRValue$"):
        kv.loads("[" * 100_000 + "]" * 100_000)


def test_each_value_is_read_whole_after_another() -> None:
    # Arguments are converted into the value the thread kept from its last
    # call: nothing of an earlier layout may show through, also after a
    # failed conversion and with two value arguments in one call.
    values = [[[1.0, 2.0], "x", [3]], [5, [[6.0]], None, 7.5], [[1.0, 2.0]], ["ab", [True]],
              None, 2.5, [[], [[]], [0.5, 1.5]]]
    for value in values + values[::-1]:
        assert kv.loads(kv.dumps(value)) == value
    with pytest.raises(TypeError):
        kv.dumps([[1.0, 2.0], [3.0, {}]])
    assert kv.dumps([[4.0]]) == "[[4.0]]"
    kv.dumps([[0.5, 0.5, 0.5]] * 1000)


@pytest.mark.parametrize(
    "value, error, words",
    [
        ([1, 2, [{}]], TypeError, ["dict", "value[2][0]"]),
        (b"x", TypeError, ["bytes", "value"]),
        ([object()], TypeError, ["object", "value[0]"]),
        ([0, [2**31]], OverflowError, ["2147483648", "value[1][0]"]),
        ([-(2**31) - 1], OverflowError, ["-2147483649", "value[0]"]),
        ([[2**70]], OverflowError, ["value[0][0]"]),
        ([np.complex64(1)], TypeError, ["numpy.complex64", "value[0]"]),
    ],
)
def test_unconvertible_values_name_type_and_position(
    value: object, error: type, words: list[str]
) -> None:
    with pytest.raises(error) as raised:
        kv.extract_float(value, "arg", "f")
    for word in words:
        assert word in str(raised.value)


# Each C++ message is checked in the C++ suites; these rows check how Python
# values arrive (None is an invalid value, True a bool, [] an empty array, an
# int outside the enumeration) and that every C++ failure becomes a
# RuntimeError with its text unchanged.
MESSAGES = [
    (kv.extract_float, (None, "arg", "x"), "arg x: Expected a float but found an invalid KRValue"),
    (kv.extract_float, (True, "arg", "x"), "arg x: Expected a float"),
    (kv.check_array_from_krvalue, ([], "arg"), "KRMotion: arg KRValue is empty."),
    (kv.extract_trajectory_pose2d_builder_from_krvalue,
     (["Holonomic", ["Line", [1, 0]], 0.0], "t", Fraction(1, 100), (1, 1), (1, 1), 1.0),
     "tInvalid HolonomicTrajectoryPose2D KRValue"),
    (kv.rest_reflex_mode_to_string, (7,), "Unknown REST_REFLEX_MODE: 7"),
    (kv.string_to_rest_reflex_mode, ("safe",), "Cannot convert safe to REST_REFLEX_MODE."),
    (kv.loads, ("",), "KRValue text: no value at line 1, column 1 (offset 0): the text is empty or only whitespace"),
]


@pytest.mark.parametrize("function, args, message", MESSAGES)
def test_failures_raise_the_exact_message(function, args, message: str) -> None:  # type: ignore
    with pytest.raises(RuntimeError) as raised:
        function(*args)
    assert str(raised.value) == message


@pytest.mark.parametrize(
    "function, value, expected",
    [
        (kv.extract_vector_pose2d_from_krvalue, [[1, 2, 3], [4, 5, 6.5]], [[1, 2, 3], [4, 5, 6.5]]),
        (kv.extract_vector_pose2d_from_krvalue, [1, 2, 3], [[1, 2, 3]]),
        (kv.extract_vector_pose2d_and_time_from_krvalue, [[1, 2, 3], [1, 2, 3, 4]],
         [[1, 2, 3, -1], [1, 2, 3, 4]]),
        (kv.extract_vector_position3d_from_krvalue, None, np.zeros((0, 3))),
        (kv.extract_vector_position6d_from_krvalue, [1, 2, 3, 4, 5, 6], [[1, 2, 3, 4, 5, 6]]),
        (kv.extract_vector_floats_from_krvalue, 2, [2]),
        (kv.extract_navigation_from_krvalue, [[0, 0, [[1, 2], [3, 4]]], ["a", "b", [5, 6]]],
         [[1, 2], [3, 4], [5, 6]]),
    ],
)
def test_record_lists_are_float32_arrays(function, value: object, expected: object) -> None:  # type: ignore
    array = function(value, "arg")
    assert array.dtype == np.float32
    np.testing.assert_array_equal(array, np.asarray(expected, dtype=np.float32))
    assert array.shape == np.shape(expected)


def test_writers_take_arrays_or_records_and_write_floats() -> None:
    records = [kv.Position2D(x=1, y=2), kv.Position2D(3, 4)]
    array = np.array([[1, 2], [3, 4]], dtype=np.float64)
    written = kv.extract_krvalue_from_vector_position2d(records)
    assert written == kv.extract_krvalue_from_vector_position2d(array) == [[1.0, 2.0], [3.0, 4.0]]
    assert all(type(x) is float for pair in written for x in pair)  # type: ignore
    assert kv.extract_krvalue_from_vector_position2d([]) is None
    assert kv.create_krvalue_from_vector_position3d([]) == []
    with pytest.raises(TypeError, match=r"or a float array of shape \(N, 2\), got numpy.ndarray$"):
        kv.extract_krvalue_from_vector_position2d(np.zeros((2, 3)))
    state = kv.Pose2DPosVelAcc(position=kv.Pose2D(1, 2, 3))
    assert kv.extract_krvalue_from_vector_pose2d_pos_vel_acc(np.arange(9).reshape(1, 9)) == [
        [[0.0, 1.0, 2.0], [3.0, 4.0, 5.0], [6.0, 7.0, 8.0]]
    ]
    assert kv.extract_krvalue_from_pose2d_pos_vel_acc(state)[0] == [1.0, 2.0, 3.0]  # type: ignore


@pytest.mark.parametrize(
    "record, same, other, text",
    [
        (kv.Pose2D(x=1, y=2, theta=0.5), kv.Pose2D(1, 2, 0.5), kv.Pose2D(1, 2), "Pose2D(x=1, y=2, theta=0.5)"),
        (kv.Limits(0.5, 0.1), kv.Limits(max_velocity=0.5, max_acceleration=0.1), kv.Limits(0.5, 0.2),
         "Limits(max_velocity=0.5, max_acceleration=0.1)"),
        (kv.SupportSequence("s", [0.1], [True]), kv.SupportSequence(name="s", values=[0.1], flags=[True]),
         kv.SupportSequence("s", [0.1], [False]),
         "SupportSequence(name='s', values=[0.1], flags=[True])"),
        (kv.Parameter(1, kv.Position2D(0.5, 1)), kv.Parameter(type=1, offset=kv.Position2D(0.5, 1)),
         kv.Parameter(2, kv.Position2D(0.5, 1)), "Parameter(type=1, offset=Position2D(x=0.5, y=1))"),
    ],
)
def test_records_have_keywords_equality_and_repr(record, same, other, text: str) -> None:  # type: ignore
    assert record == same and not record != same
    assert record != other
    assert repr(record) == text


def test_state_records_round_trip() -> None:
    data = kv.MetricalData("a", "b", kv.Transform(r1_c4=1), [kv.Position3D(1, 2, 3)], 1_500_000_000)
    assert kv.extract_metrical_data_from_krvalue(kv.extract_krvalue_from_metrical_data(data), "m") == data
    requests = kv.extract_vector_rest_request_from_krvalue([[["a", "b"], "Safe"]], "r")
    assert requests[0].reflex_modes == {"a": kv.RestReflexMode.SAFE, "b": kv.RestReflexMode.SAFE}
    assert kv.extract_krvalue_from_vector_rest_request(requests) == [[["a", "b"], ["Safe", "Safe"]]]
    assert kv.extract_touch_from_krvalue([["hand", True, [7]]], "t", with_ints=True) == {"hand": (True, 7)}
    assert kv.convert_duration_to_krvalue(-1_500_000_999) == (-1, -500000)
    assert kv.extract_duration(1, 2, "d") == 1_000_002_000


def test_warnings_go_to_logging_with_the_cpp_function_name(caplog, capfd) -> None:  # type: ignore
    logger = logging.getLogger("KRValueUtils")
    with caplog.at_level(logging.WARNING, logger="KRValueUtils"):
        assert kv.clip_and_warn(0, 1, 2.5, "arg", "speed") == 1.0
        assert kv.clip_and_warn(0, 1, 0.5, "arg", "speed") == 0.5  # not clipped: no warning
    assert [(r.name, r.levelno, r.funcName, r.getMessage()) for r in caplog.records] == [
        ("KRValueUtils", logging.WARNING, "clipAndWarn",
         "KRMotion arg: speed value +2.50000 is clipped to: +1.00000 because it must be in "
         "range [+0.00000 <-> +1.00000]")
    ]
    caplog.clear()
    capfd.readouterr()
    old = logger.level
    logger.setLevel(logging.ERROR)
    try:
        assert kv.decode_motion_config([1], "cfg") is None
    finally:
        logger.setLevel(old)
    assert caplog.records == []
    assert capfd.readouterr() == ("", "")


def test_path_and_trajectory_builders() -> None:
    path = kv.extract_path2d_builder_from_krvalue(["Composed", ["Line", [1, 0]], ["Line", [1, 0]]], "p")(
        kv.Pose2D(1, 0, 0)
    )
    assert path.length == pytest.approx(2)
    assert path.end_pose == kv.Pose2D(3, 0, 0)
    assert path.pose_at(0.5) == kv.Pose2D(1.5, 0, 0)
    np.testing.assert_allclose(path.sample(3), [[1, 0, 0], [2, 0, 0], [3, 0, 0]])
    with pytest.raises(ValueError, match="^the number of samples must not be negative$"):
        path.sample(-1)

    builder = kv.extract_trajectory_pose2d_builder_from_krvalue(
        ["Holonomic", ["Line", [1, 0]], 0.5, 4.0], "t", Fraction(1, 100), kv.Limits(1, 1), (1, 1), 1.0
    )
    trajectory = builder(kv.Pose2D())
    assert trajectory.duration == Fraction(4)
    states = trajectory.sample([0.0, 2.0, 4.0])
    assert states.shape == (3, 9) and states.dtype == np.float32
    np.testing.assert_allclose(states[2, :3], [1.0, 0.0, 0.5], atol=1e-6)
    np.testing.assert_allclose(states[[0, 2], 3:], 0.0, atol=1e-6)  # at rest at both ends
    with pytest.raises(TypeError, match="Fraction"):
        kv.extract_trajectory_pose2d_builder_from_krvalue(
            ["NonHolonomic", ["Line", [1, 0]], 1.0], "t", [0.01], (1, 1), (1, 1), 1.0
        )


def test_factories_of_either_kind_take_limit_tuples_and_keep_pieces_before_a_failure() -> None:
    factory = kv.NonHolonomicTrajectoryFactory((1, 1), kv.Limits(1, 1), Fraction(1, 10))
    with pytest.raises(RuntimeError, match="^p Unknown DirectPath2D type$"):
        kv.extract_path2d_into_trajectory_factory(
            ["Composed", ["Line", [1, 0]], ["Spiral", [1, 0]]], "p", factory
        )
    assert len(factory.pieces) == 1
    trajectory = factory.get_trajectory_builder(Fraction(0))(kv.Pose2D())
    assert trajectory.state_at(float(trajectory.duration)).position == kv.Pose2D(1, 0, 0)
    omni = kv.HolonomicTrajectoryFactory((1, 4), (1, 1), Fraction(1, 100))  # (velocity, acceleration)
    kv.extract_direct_path2d_into_trajectory_factory(["Line", [1, 0]], "p", omni)
    assert omni.get_trajectory_builder(0.0, Fraction(0))(kv.Pose2D()).duration == Fraction(5, 4)
    expected = "^expected a HolonomicTrajectoryFactory or a NonHolonomicTrajectoryFactory, got int$"
    with pytest.raises(TypeError, match=expected):
        kv.extract_path2d_into_trajectory_factory(["Line", [1, 0]], "p", 3)
    expected = r"^limits are Limits\(max_velocity, max_acceleration\) or a \(velocity, acceleration\) tuple"
    with pytest.raises(TypeError, match=expected + ", got list$"):
        kv.HolonomicTrajectoryFactory([1, 2], (1, 1), Fraction(1, 10))


def test_threads_read_and_warn_at_once(caplog) -> None:  # type: ignore
    poses = [[float(i), 2.0, 3.0] for i in range(5000)]

    def work() -> None:
        for _ in range(5):
            array = kv.extract_vector_pose2d_from_krvalue(poses, "p")
            assert array.shape == (5000, 3) and array[-1, 0] == 4999
            assert kv.clip_and_warn(0, 1, 2, "t", "f") == 1

    with caplog.at_level(logging.WARNING, logger="KRValueUtils"), ThreadPoolExecutor(4) as pool:
        runs = [pool.submit(work) for _ in range(4)]
    for run in runs:
        run.result()  # raises what the thread raised
    assert len(caplog.records) == 20


def test_example_script_runs() -> None:
    examples = os.environ.get(
        "KRVALUEUTILS_EXAMPLES", os.path.join(os.path.dirname(__file__), "../../examples/python")
    )
    result = subprocess.run(
        [sys.executable, os.path.join(examples, "robot_motion.py")],
        capture_output=True, text=True, check=False,
    )
    assert result.returncode == 0, result.stderr
    assert "rejected: KRMotion: target Pose2D is not valid. It has to be [x, y, theta]." in result.stdout
    assert "WARNING KRValueUtils.clipAndWarn: KRMotion speed" in result.stderr


def test_stub_parameter_names_are_the_modules_keywords() -> None:
    # stubtest sees every name but not the parameters of pybind11 functions;
    # their names, which callers pass as keywords, are in the signatures that
    # pybind11 writes at the top of each docstring (one per overload).
    stubs = ast.parse(Path(kv.__file__).with_name("__init__.pyi").read_text())
    checked = []

    def check(body: list[ast.stmt], owner: object) -> None:
        for node in body:
            if isinstance(node, ast.ClassDef):  # a class of the stubs only: its subclasses
                subclasses = [c.name for c in stubs.body if isinstance(c, ast.ClassDef)
                              and any(getattr(b, "id", "") == node.name for b in c.bases)]
                for name in [node.name] if hasattr(owner, node.name) else subclasses:
                    check(node.body, getattr(owner, name))
            elif isinstance(node, ast.FunctionDef) and (
                node.name == "__init__" or not node.name.startswith("_")
            ):
                if any(getattr(d, "id", "") == "property" for d in node.decorator_list):
                    continue
                function = getattr(owner, node.name)
                if inspect.isfunction(function):  # written in Python: its own signature
                    runtime = {tuple(inspect.signature(function).parameters)}
                else:
                    signatures = re.findall(r"^(?:\d+\. )?%s\((.*)\) ->" % node.name,
                                            function.__doc__, re.M)
                    runtime = {tuple(re.findall(r"(?:^|, )(\w+): ", s)) for s in signatures}
                stub = tuple(a.arg for a in node.args.args)
                assert stub in runtime, (owner, stub, runtime)
                checked.append(node.name)

    check(stubs.body, kv)
    assert len(checked) > 80
