"""Type stubs of krvalueutils: checked conversions between plain Python values
and robot records."""

from fractions import Fraction
from typing import Any, Literal, Optional, Sequence, Union, overload

import numpy
import numpy.typing

#: A value as plain Python objects: None (invalid), bool, int, float, str or a
#: list of values. Tuples and numpy numbers and arrays are accepted as input.
Value = Union[None, bool, int, float, str, list["Value"]]
_ValueLike = Union[
    None, bool, int, float, str, Sequence["_ValueLike"], numpy.generic, numpy.typing.NDArray[numpy.generic]
]
_FloatArray = numpy.typing.NDArray[numpy.float32]
# Writers take any real array of the right shape and convert it to float32.
_Numbers = Union[
    numpy.typing.NDArray[Union[numpy.floating[Any], numpy.integer[Any]]], Sequence[Sequence[float]]
]
_LimitsLike = Union["Limits", tuple[float, float]]
# Periods and durations: exact as a Fraction, an int or a str ("1/100"); a float
# becomes the nearest fraction with a denominator of at most 1,000,000.
_Seconds = Union[Fraction, int, str, float]

LOGGER_NAME: str

def __dir__() -> list[str]: ...

class KRValueError(RuntimeError):
    """A reader's failure: the library's exact message, where in the argument
    it failed and the argument's name."""
    path: tuple[int, ...]
    argument: str

def check(reader_name: str, value: _ValueLike, name: str = ...) -> list[tuple[tuple[int, ...], str]]:
    """Every failure of a reader on `value`, as (path, message) pairs."""

def schema(reader_name: str) -> dict[str, Any]:
    """The JSON Schema of the values a reader accepts, as a dict."""
def schema_names() -> list[str]: ...
def schema_bundle() -> dict[str, Any]:
    """Every reader's schema in one document, under $defs/<reader>."""

class _pybind11_type(type):
    """The metaclass pybind11 gives every class of the module."""

class Position2D(metaclass=_pybind11_type):
    """A point in the plane: x and y in meters."""
    x: float
    y: float
    def __init__(self, x: float = 0.0, y: float = 0.0) -> None: ...

class Pose2D(metaclass=_pybind11_type):
    """A position and heading in the plane: x, y in meters, theta in radians."""
    x: float
    y: float
    theta: float
    def __init__(self, x: float = 0.0, y: float = 0.0, theta: float = 0.0) -> None: ...

class Pose2DAndTime(metaclass=_pybind11_type):
    """A pose and the time in seconds at which it holds (-1: no time)."""
    pose: Pose2D
    time: float
    def __init__(self, pose: Pose2D = ..., time: float = 0.0) -> None: ...

class Pose2DPosVelAcc(metaclass=_pybind11_type):
    """A planar motion state: position, velocity and acceleration."""
    position: Pose2D
    velocity: Pose2D
    acceleration: Pose2D
    def __init__(
        self, position: Pose2D = ..., velocity: Pose2D = ..., acceleration: Pose2D = ...
    ) -> None: ...

class Position3D(metaclass=_pybind11_type):
    """A point in space: x, y, z in meters."""
    x: float
    y: float
    z: float
    def __init__(self, x: float = 0.0, y: float = 0.0, z: float = 0.0) -> None: ...

class Position6D(metaclass=_pybind11_type):
    """A position (meters) and rotations about x, y, z (radians)."""
    x: float
    y: float
    z: float
    wx: float
    wy: float
    wz: float
    def __init__(
        self,
        x: float = 0.0,
        y: float = 0.0,
        z: float = 0.0,
        wx: float = 0.0,
        wy: float = 0.0,
        wz: float = 0.0,
    ) -> None: ...

class Transform(metaclass=_pybind11_type):
    """The upper three rows of a homogeneous matrix; defaults to the identity."""
    r1_c1: float
    r1_c2: float
    r1_c3: float
    r1_c4: float
    r2_c1: float
    r2_c2: float
    r2_c3: float
    r2_c4: float
    r3_c1: float
    r3_c2: float
    r3_c3: float
    r3_c4: float
    def __init__(
        self,
        r1_c1: float = 1.0,
        r1_c2: float = 0.0,
        r1_c3: float = 0.0,
        r1_c4: float = 0.0,
        r2_c1: float = 0.0,
        r2_c2: float = 1.0,
        r2_c3: float = 0.0,
        r2_c4: float = 0.0,
        r3_c1: float = 0.0,
        r3_c2: float = 0.0,
        r3_c3: float = 1.0,
        r3_c4: float = 0.0,
    ) -> None: ...
    def is_transform(self, tolerance: float) -> bool:
        """True when the rotation is orthonormal within `tolerance`."""

class Parameter(metaclass=_pybind11_type):
    """One side of a key: interpolation type (0..3) and Bezier handle offset."""
    type: int
    offset: Position2D
    def __init__(self, type: int = 3, offset: Position2D = ...) -> None: ...

class Key(metaclass=_pybind11_type):
    """A Bezier interpolation key: value and its two sides."""
    value: float
    first_param: Parameter
    second_param: Parameter
    def __init__(
        self, value: float = 0.0, first_param: Parameter = ..., second_param: Parameter = ...
    ) -> None: ...

class MetricalData(metaclass=_pybind11_type):
    """A measurement between two labelled frames; duration in nanoseconds."""
    label1: str
    label2: str
    transform: Transform
    points: list[Position3D]
    duration: int
    def __init__(
        self,
        label1: str = "",
        label2: str = "",
        transform: Transform = ...,
        points: Sequence[Position3D] = ...,
        duration: int = 0,
    ) -> None: ...

class SupportSequence(metaclass=_pybind11_type):
    """A named list of floats with one bool flag each."""
    name: str
    values: list[float]
    flags: list[bool]
    def __init__(
        self, name: str = "", values: Sequence[float] = ..., flags: Sequence[bool] = ...
    ) -> None: ...

class RestReflexMode(metaclass=_pybind11_type):
    """How a part goes to rest."""
    SAFE: RestReflexMode
    IMMEDIATE: RestReflexMode
    CUSTOM: RestReflexMode
    __members__: dict[str, RestReflexMode]
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __init__(self, value: int) -> None: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...

class RestRequest(metaclass=_pybind11_type):
    """Which named parts to put at rest, and how."""
    reflex_modes: dict[str, RestReflexMode]
    names: list[str]
    angles: list[float]
    def __init__(
        self,
        reflex_modes: dict[str, RestReflexMode] = ...,
        names: Sequence[str] = ...,
        angles: Sequence[float] = ...,
    ) -> None: ...

class TemperatureStatus(metaclass=_pybind11_type):
    """A temperature level and the names of the parts concerned."""
    level: int
    names: set[str]
    def __init__(self, level: int = 0, names: set[str] = ...) -> None: ...

class Limits(metaclass=_pybind11_type):
    """Largest speed and acceleration allowed (magnitudes)."""
    max_velocity: float
    max_acceleration: float
    def __init__(self, max_velocity: float, max_acceleration: float) -> None: ...

class Path(metaclass=_pybind11_type):
    """A planar path built at a start pose, measured by arc length."""
    @property
    def length(self) -> float: ...
    @property
    def start_pose(self) -> Pose2D: ...
    @property
    def end_pose(self) -> Pose2D: ...
    def pose_at(self, s: float) -> Pose2D:
        """The pose at arc length `s`, clamped into [0, length]."""
    def sample(self, n: int) -> _FloatArray:
        """`n` poses evenly spaced from start to end, shape (n, 3)."""

class Trajectory(metaclass=_pybind11_type):
    """A timed planar motion from rest to rest."""
    @property
    def duration(self) -> Fraction: ...
    def state_at(self, t: float) -> Pose2DPosVelAcc:
        """The state `t` seconds after the start."""
    def sample(self, times: Union[Sequence[float], numpy.typing.NDArray[numpy.floating[Any]]]) -> _FloatArray:
        """The states at `times`, shape (N, 9)."""
    @property
    def path(self) -> Optional[Path]:
        """The path driven, blends included; None for a composed trajectory."""
    @property
    def described_path(self) -> Optional[Path]:
        """The path as described; None for a composed trajectory."""

class PathBuilder(metaclass=_pybind11_type):
    """Makes a Path when called with a start pose."""
    def __call__(self, start: Pose2D) -> Path: ...

class TrajectoryBuilder(metaclass=_pybind11_type):
    """Makes a Trajectory when called with a start state or pose."""
    @overload
    def __call__(self, start: Pose2DPosVelAcc) -> Trajectory: ...
    @overload
    def __call__(self, start: Pose2D) -> Trajectory: ...

class _TrajectoryFactory(metaclass=_pybind11_type):
    def __init__(
        self,
        first_limits: _LimitsLike,
        second_limits: _LimitsLike,
        period: _Seconds,
        fraction_of_limits: float = 1.0,
        blend_tolerance: float = 0.0,
    ) -> None: ...
    def add_line(self, end: Position2D) -> None: ...
    def add_circle(self, centre: Position2D, angle: float) -> None: ...
    def add_flat(
        self,
        first_centre: Position2D,
        first_angle: float,
        straight_end: Position2D,
        second_centre: Position2D,
        second_angle: float,
    ) -> None: ...
    @property
    def pieces(self) -> list[PathBuilder]: ...
    @property
    def period(self) -> Fraction: ...
    #: Meters within which the trajectories built afterwards drive through the
    #: joints of the path; 0 follows it exactly.
    blend_tolerance: float

class HolonomicTrajectoryFactory(_TrajectoryFactory):
    """Holonomic trajectories: translation limits first, rotation limits second."""
    def get_trajectory_builder(self, rotation: float, duration: _Seconds) -> TrajectoryBuilder: ...

class NonHolonomicTrajectoryFactory(_TrajectoryFactory):
    """Trajectories of a base facing along the path."""
    def get_trajectory_builder(self, duration: _Seconds) -> TrajectoryBuilder: ...

_AnyTrajectoryFactory = Union[HolonomicTrajectoryFactory, NonHolonomicTrajectoryFactory]

# Text form
def loads(text: str) -> Value:
    """Parses the JSON text form into a value."""
def dumps(value: _ValueLike) -> str:
    """The compact JSON text form of a value."""

# Scalars, masks, frames, durations
def clip_and_warn(min: float, max: float, data: float, name: str, field_name: str) -> float: ...
def extract_float_and_clip(
    value: _ValueLike, min: float, max: float, name: str, field_name: str
) -> float: ...
def check_array_from_krvalue(value: _ValueLike, name: str) -> None: ...
def extract_float(value: _ValueLike, name: str, field_name: str) -> float: ...
def extract_int_from_krvalue(value: _ValueLike, name: str, field_name: str) -> int: ...
def extract_axis_mask_from_krvalue(value: _ValueLike, name: str) -> int: ...
def extract_frame_from_krvalue(value: _ValueLike, name: str) -> int: ...
def extract_vector_axis_mask_from_krvalue(value: _ValueLike, name: str) -> list[int]: ...
def extract_vector_frame_from_krvalue(value: _ValueLike, name: str) -> list[int]: ...
def extract_duration(seconds: _ValueLike, microseconds: _ValueLike, name: str) -> int: ...
def convert_duration_to_krvalue(duration: int) -> tuple[int, int]: ...

# Lists and maps
@overload
def extract_vector_floats_from_krvalue(value: _ValueLike, name: str) -> _FloatArray: ...
@overload
def extract_vector_floats_from_krvalue(
    value: _ValueLike, name: str, is_single_group: bool
) -> list[_FloatArray]: ...
def extract_vector_strings_from_krvalue(value: _ValueLike, name: str) -> list[str]: ...
def extract_vector_bools_from_krvalue(value: _ValueLike, count: int, name: str) -> list[bool]: ...
def extract_key_value_map_from_krvalue(
    value: _ValueLike, name: str, skip_second_element: bool
) -> dict[str, Value]: ...

# Keys and motion configuration
def extract_key_from_krvalue(value: _ValueLike, name: str) -> Key: ...
def extract_vector_of_generic_control_points(
    times: Sequence[float], value: _ValueLike, name: str, min_time: float
) -> tuple[bool, list[tuple[float, Key]]]: ...
def decode_motion_config(value: _ValueLike, name: _ValueLike) -> Value: ...

# Geometry records
def extract_position2d_from_krvalue(value: _ValueLike, name: str) -> Position2D: ...
def extract_pose2d_from_krvalue(value: _ValueLike, name: str) -> Pose2D: ...
def extract_pose2d_and_time_from_krvalue(value: _ValueLike, name: str) -> Pose2DAndTime: ...
def extract_position3d_from_krvalue(value: _ValueLike, name: str) -> Position3D: ...
def extract_position6d_from_krvalue(value: _ValueLike, name: str) -> Position6D: ...
def extract_position6d_from_vector(values: Sequence[float], name: str) -> Position6D: ...
def extract_transform_from_krvalue(value: _ValueLike, name: str) -> Transform: ...

# Geometry lists: float32 arrays (N, k), columns in field order
def extract_vector_pose2d_from_krvalue(value: _ValueLike, name: str) -> _FloatArray: ...
def extract_vector_position2d_from_krvalue(value: _ValueLike, name: str) -> _FloatArray: ...
def extract_vector_pose2d_and_time_from_krvalue(value: _ValueLike, name: str) -> _FloatArray: ...
def extract_vector_position3d_from_krvalue(value: _ValueLike, name: str) -> _FloatArray: ...
@overload
def extract_vector_position6d_from_krvalue(value: _ValueLike, name: str) -> _FloatArray: ...
@overload
def extract_vector_position6d_from_krvalue(
    value: _ValueLike, name: str, is_single_group: bool
) -> list[_FloatArray]: ...
@overload
def extract_vector_transform_from_krvalue(value: _ValueLike, name: str) -> list[Transform]: ...
@overload
def extract_vector_transform_from_krvalue(
    value: _ValueLike, name: str, is_single_group: bool
) -> list[list[Transform]]: ...

# Geometry writers
def extract_krvalue_from_position2d(position: Position2D) -> Value: ...
def extract_krvalue_from_vector_position2d(
    positions: Union[Sequence[Position2D], _Numbers]
) -> Value: ...
def extract_krvalue_from_pose2d(pose: Pose2D) -> Value: ...
def extract_krvalue_from_pose2d_pos_vel_acc(state: Pose2DPosVelAcc) -> Value: ...
def extract_krvalue_from_vector_pose2d_pos_vel_acc(
    states: Union[Sequence[Pose2DPosVelAcc], _Numbers]
) -> Value: ...
def create_krvalue_from_vector_vector_float(groups: Sequence[Sequence[float]]) -> Value: ...
def create_krvalue_from_vector_position3d(
    positions: Union[Sequence[Position3D], _Numbers]
) -> Value: ...

# Rest requests
def extract_vector_rest_request_from_krvalue(value: _ValueLike, name: str) -> list[RestRequest]: ...
def extract_krvalue_from_vector_rest_request(requests: Sequence[RestRequest]) -> Value: ...
def rest_reflex_mode_to_string(mode: Union[int, RestReflexMode]) -> str: ...
def string_to_rest_reflex_mode(name: str) -> RestReflexMode: ...
def rest_requests_are_equivalent(a: RestRequest, b: RestRequest) -> bool: ...

# Support sequences
def extract_support_sequence_from_krvalue(value: _ValueLike, name: str) -> SupportSequence: ...
def extract_vector_support_sequence_from_krvalue(
    value: _ValueLike, name: str
) -> list[SupportSequence]: ...

# Sensor and status records
def convert_temperature_status_to_krvalue(status: TemperatureStatus) -> Value: ...
def extract_temperature_status_from_krvalue(value: _ValueLike, name: str) -> TemperatureStatus: ...
def extract_diagnosis_from_krvalue(value: _ValueLike, name: str) -> tuple[int, set[str]]: ...
@overload
def extract_touch_from_krvalue(
    value: _ValueLike, name: str, with_ints: Literal[False] = False
) -> dict[str, bool]: ...
@overload
def extract_touch_from_krvalue(
    value: _ValueLike, name: str, with_ints: Literal[True]
) -> dict[str, tuple[bool, int]]: ...
def extract_navigation_from_krvalue(value: _ValueLike, name: str) -> _FloatArray: ...
def extract_metrical_data_from_krvalue(value: _ValueLike, name: str) -> MetricalData: ...
def extract_krvalue_from_metrical_data(data: MetricalData) -> Value: ...

# Paths and trajectories
def extract_direct_path2d_builder_from_krvalue(value: _ValueLike, name: str) -> PathBuilder: ...
def extract_path2d_builder_from_krvalue(value: _ValueLike, name: str) -> PathBuilder: ...
def extract_direct_path2d_into_trajectory_factory(
    value: _ValueLike, name: str, factory: _AnyTrajectoryFactory
) -> None: ...
def extract_path2d_into_trajectory_factory(
    value: _ValueLike, name: str, factory: _AnyTrajectoryFactory
) -> None: ...
def extract_direct_trajectory_pose2d_builder_from_krvalue(
    value: _ValueLike,
    name: str,
    period: _Seconds,
    first_limits: _LimitsLike,
    second_limits: _LimitsLike,
    factory_parameter: float,
    blend_tolerance: float = 0.0,
) -> TrajectoryBuilder: ...
def extract_trajectory_pose2d_composed_builder_from_krvalue(
    value: _ValueLike,
    name: str,
    period: _Seconds,
    first_limits: _LimitsLike,
    second_limits: _LimitsLike,
    factory_parameter: float,
    blend_tolerance: float = 0.0,
) -> TrajectoryBuilder: ...
def extract_trajectory_pose2d_builder_from_krvalue(
    value: _ValueLike,
    name: str,
    period: _Seconds,
    first_limits: _LimitsLike,
    second_limits: _LimitsLike,
    factory_parameter: float,
    blend_tolerance: float = 0.0,
) -> TrajectoryBuilder: ...
