// The records the readers return and the writers take, as Python classes with
// named fields, keyword constructors, == and a readable repr.
#include "values.h"

#include <kr/krvalueutils.h>

#include <pybind11/operators.h>
#include <pybind11/stl.h>

#include <sstream>
#include <string>

namespace krpy {
namespace {

namespace M = KR::Math;

/// == and != from the record's own comparison, a repr from its operator<<.
template <typename Class>
Class& compareAndPrint(Class& cls) {
  using Record = typename Class::type;
  cls.def(py::self == py::self)
      .def(py::self != py::self)
      .def("__repr__", &streamed<Record>);
  cls.attr("__hash__") = py::none();
  return cls;
}

void bindPlanar(py::module_& m) {
  py::class_<M::Position2D> position2d(m, "Position2D", "A point in the plane: x and y in meters.");
  position2d
      .def(py::init<float, float>(), py::arg("x") = 0.0f, py::arg("y") = 0.0f,
           "Position2D(x=0.0, y=0.0)")
      .def_readwrite("x", &M::Position2D::x, "meters")
      .def_readwrite("y", &M::Position2D::y, "meters");
  compareAndPrint(position2d);

  py::class_<M::Pose2D> pose2d(
      m, "Pose2D", "A position and heading in the plane: x, y in meters, theta in radians.");
  pose2d
      .def(py::init<float, float, float>(), py::arg("x") = 0.0f, py::arg("y") = 0.0f,
           py::arg("theta") = 0.0f, "Pose2D(x=0.0, y=0.0, theta=0.0)")
      .def_readwrite("x", &M::Pose2D::x, "meters")
      .def_readwrite("y", &M::Pose2D::y, "meters")
      .def_readwrite("theta", &M::Pose2D::theta, "radians, counter-clockwise from the x axis");
  compareAndPrint(pose2d);

  py::class_<M::Pose2DAndTime> poseAndTime(
      m, "Pose2DAndTime", "A pose and the time in seconds at which it holds (-1: no time).");
  poseAndTime
      .def(py::init<M::Pose2D, float>(), py::arg("pose") = M::Pose2D(), py::arg("time") = 0.0f,
           "Pose2DAndTime(pose=Pose2D(), time=0.0)")
      .def_readwrite("pose", &M::Pose2DAndTime::pose, "the pose")
      .def_readwrite("time", &M::Pose2DAndTime::time, "seconds; negative when absent");
  compareAndPrint(poseAndTime);

  py::class_<M::Pose2DPosVelAcc> state(
      m, "Pose2DPosVelAcc",
      "A planar motion state: position, velocity and acceleration, each a Pose2D.");
  state
      .def(py::init<const M::Pose2D&, const M::Pose2D&, const M::Pose2D&>(),
           py::arg("position") = M::Pose2D(), py::arg("velocity") = M::Pose2D(),
           py::arg("acceleration") = M::Pose2D(),
           "Pose2DPosVelAcc(position=Pose2D(), velocity=Pose2D(), acceleration=Pose2D())")
      .def_readwrite("position", &M::Pose2DPosVelAcc::position, "meters and radians")
      .def_readwrite("velocity", &M::Pose2DPosVelAcc::velocity, "m/s and rad/s")
      .def_readwrite("acceleration", &M::Pose2DPosVelAcc::acceleration, "m/s^2 and rad/s^2");
  compareAndPrint(state);
}

void bindSpatial(py::module_& m) {
  py::class_<M::Position3D> position3d(m, "Position3D", "A point in space: x, y, z in meters.");
  position3d
      .def(py::init<float, float, float>(), py::arg("x") = 0.0f, py::arg("y") = 0.0f,
           py::arg("z") = 0.0f, "Position3D(x=0.0, y=0.0, z=0.0)")
      .def_readwrite("x", &M::Position3D::x, "meters")
      .def_readwrite("y", &M::Position3D::y, "meters")
      .def_readwrite("z", &M::Position3D::z, "meters");
  compareAndPrint(position3d);

  py::class_<M::Position6D> position6d(
      m, "Position6D", "A position (meters) and rotations about x, y, z (radians) in space.");
  position6d
      .def(py::init<float, float, float, float, float, float>(), py::arg("x") = 0.0f,
           py::arg("y") = 0.0f, py::arg("z") = 0.0f, py::arg("wx") = 0.0f, py::arg("wy") = 0.0f,
           py::arg("wz") = 0.0f, "Position6D(x=0.0, y=0.0, z=0.0, wx=0.0, wy=0.0, wz=0.0)")
      .def_readwrite("x", &M::Position6D::x, "meters")
      .def_readwrite("y", &M::Position6D::y, "meters")
      .def_readwrite("z", &M::Position6D::z, "meters")
      .def_readwrite("wx", &M::Position6D::wx, "radians about x")
      .def_readwrite("wy", &M::Position6D::wy, "radians about y")
      .def_readwrite("wz", &M::Position6D::wz, "radians about z");
  compareAndPrint(position6d);

  py::class_<M::Transform> transform(
      m, "Transform",
      "The upper three rows of a homogeneous matrix, r1_c1 to r3_c4; defaults to the identity.");
  transform.def(
      py::init([](float r1_c1, float r1_c2, float r1_c3, float r1_c4, float r2_c1, float r2_c2,
                  float r2_c3, float r2_c4, float r3_c1, float r3_c2, float r3_c3, float r3_c4) {
        M::Transform t;
        t.r1_c1 = r1_c1, t.r1_c2 = r1_c2, t.r1_c3 = r1_c3, t.r1_c4 = r1_c4;
        t.r2_c1 = r2_c1, t.r2_c2 = r2_c2, t.r2_c3 = r2_c3, t.r2_c4 = r2_c4;
        t.r3_c1 = r3_c1, t.r3_c2 = r3_c2, t.r3_c3 = r3_c3, t.r3_c4 = r3_c4;
        return t;
      }),
      py::arg("r1_c1") = 1.0f, py::arg("r1_c2") = 0.0f, py::arg("r1_c3") = 0.0f,
      py::arg("r1_c4") = 0.0f, py::arg("r2_c1") = 0.0f, py::arg("r2_c2") = 1.0f,
      py::arg("r2_c3") = 0.0f, py::arg("r2_c4") = 0.0f, py::arg("r3_c1") = 0.0f,
      py::arg("r3_c2") = 0.0f, py::arg("r3_c3") = 1.0f, py::arg("r3_c4") = 0.0f,
      "Transform(r1_c1=1.0, ..., r3_c4=0.0): row by row, the identity by default.");
  // Fields r<row>_c<column>, in the order they are read and written.
  float M::Transform::*const fields[] = {
      &M::Transform::r1_c1, &M::Transform::r1_c2, &M::Transform::r1_c3, &M::Transform::r1_c4,
      &M::Transform::r2_c1, &M::Transform::r2_c2, &M::Transform::r2_c3, &M::Transform::r2_c4,
      &M::Transform::r3_c1, &M::Transform::r3_c2, &M::Transform::r3_c3, &M::Transform::r3_c4};
  for (int i = 0; i < 12; ++i) {
    const std::string field = "r" + std::to_string(i / 4 + 1) + "_c" + std::to_string(i % 4 + 1);
    transform.def_readwrite(field.c_str(), fields[i], "matrix entry");
  }
  transform.def("is_transform", &M::Transform::isTransform, py::arg("tolerance"),
                "True when the rotation is orthonormal within `tolerance` with determinant > 0.");
  compareAndPrint(transform);
}

void bindKeys(py::module_& m) {
  using M::Interpolation::Key;
  using M::Interpolation::Parameter;
  py::class_<Parameter>(m, "Parameter",
                        "One side of a key: interpolation type (0..3) and Bezier handle offset.")
      .def(py::init<int, const M::Position2D&>(), py::arg("type") = 3,
           py::arg("offset") = M::Position2D(), "Parameter(type=3, offset=Position2D())")
      .def_readwrite("type", &Parameter::type, "0 constant, 1 linear, 2 Bezier, 3 Bezier auto")
      .def_readwrite("offset", &Parameter::offset, "(seconds, value) from the key")
      .def("__eq__",
           [](const Parameter& a, const Parameter& b) {
             return a.type == b.type && a.offset == b.offset;
           })
      .def("__repr__",
           [](const Parameter& p) {
             return "Parameter(type=" + std::to_string(p.type) + ", offset=" + streamed(p.offset) +
                    ")";
           })
      .attr("__hash__") = py::none();

  py::class_<Key> key(m, "Key", "A Bezier interpolation key: value and its two sides.");
  key.def(py::init<float, const Parameter&, const Parameter&>(), py::arg("value") = 0.0f,
          py::arg("first_param") = Parameter(), py::arg("second_param") = Parameter(),
          "Key(value=0.0, first_param=Parameter(), second_param=Parameter())")
      .def_readwrite("value", &Key::value, "the key's value")
      .def_readwrite("first_param", &Key::firstParam, "the incoming side")
      .def_readwrite("second_param", &Key::secondParam, "the outgoing side");
  compareAndPrint(key);
}

void bindStateRecords(py::module_& m) {
  py::class_<M::MetricalData>(m, "MetricalData",
                              "A measurement between two labelled frames: transform, points "
                              "and duration (integer nanoseconds).")
      .def(py::init([](std::string label1, std::string label2, const M::Transform& transform,
                       std::vector<M::Position3D> points, long long duration) {
             M::MetricalData data;
             data.label1 = std::move(label1);
             data.label2 = std::move(label2);
             data.transform = transform;
             data.points = std::move(points);
             data.duration = boost::chrono::nanoseconds(duration);
             return data;
           }),
           py::arg("label1") = "", py::arg("label2") = "", py::arg("transform") = M::Transform(),
           py::arg("points") = std::vector<M::Position3D>(), py::arg("duration") = 0,
           "MetricalData(label1='', label2='', transform=Transform(), points=[], duration=0)")
      .def_readwrite("label1", &M::MetricalData::label1, "frame the transform maps into")
      .def_readwrite("label2", &M::MetricalData::label2, "frame the transform maps from")
      .def_readwrite("transform", &M::MetricalData::transform, "label2 to label1")
      .def_readwrite("points", &M::MetricalData::points, "list of Position3D (a copy)")
      .def_property(
          "duration", [](const M::MetricalData& d) { return d.duration.count(); },
          [](M::MetricalData& d, long long ns) { d.duration = boost::chrono::nanoseconds(ns); },
          "nanoseconds")
      .def(py::self == py::self)
      .def(py::self != py::self)
      .def("__repr__",
           [](const M::MetricalData& d) {
             return py::str("MetricalData(label1={!r}, label2={!r}, transform={}, points={!r}, "
                            "duration={})")
                 .format(d.label1, d.label2, streamed(d.transform), d.points,
                         d.duration.count());
           })
      .attr("__hash__") = py::none();

  py::class_<M::SupportSequence>(m, "SupportSequence",
                                 "A named list of floats with one bool flag each.")
      .def(py::init<std::string, const std::vector<float>&, const std::vector<bool>&>(),
           py::arg("name") = "", py::arg("values") = std::vector<float>(),
           py::arg("flags") = std::vector<bool>(),
           "SupportSequence(name='', values=[], flags=[]); RuntimeError unless the lists are "
           "as long as each other.")
      .def_readwrite("name", &M::SupportSequence::name, "the sequence's name")
      .def_readwrite("values", &M::SupportSequence::values, "list of floats (a copy)")
      .def_readwrite("flags", &M::SupportSequence::flags, "list of bools (a copy)")
      .def(py::self == py::self)
      .def(py::self != py::self)
      .def("__repr__",
           [](const M::SupportSequence& s) {
             return py::str("SupportSequence(name={!r}, values={}, flags={!r})")
                 .format(s.name, floatsText(s.values), s.flags);
           })
      .attr("__hash__") = py::none();

  py::enum_<KR::REST_REFLEX_MODE>(m, "RestReflexMode", "How a part goes to rest.")
      .value("SAFE", KR::SAFE, "\"Safe\"")
      .value("IMMEDIATE", KR::IMMEDIATE, "\"Immediate\"")
      .value("CUSTOM", KR::CUSTOM, "\"Custom\": to the request's angles");

  py::class_<KR::RestRequest>(m, "RestRequest",
                              "Which named parts to put at rest, and how: a mode per name and "
                              "optionally one angle per name.")
      .def(py::init([](std::map<std::string, KR::REST_REFLEX_MODE> modes,
                       std::vector<std::string> names, std::vector<float> angles) {
             return KR::RestRequest{std::move(modes), std::move(names), std::move(angles)};
           }),
           py::arg("reflex_modes") = std::map<std::string, KR::REST_REFLEX_MODE>(),
           py::arg("names") = std::vector<std::string>(), py::arg("angles") = std::vector<float>(),
           "RestRequest(reflex_modes={}, names=[], angles=[])")
      .def_readwrite("reflex_modes", &KR::RestRequest::reflexModes, "dict name -> RestReflexMode")
      .def_readwrite("names", &KR::RestRequest::names, "the parts, in the caller's order")
      .def_readwrite("angles", &KR::RestRequest::angles, "empty, or one angle per name")
      .def(py::self == py::self)
      .def(py::self != py::self)
      .def("__repr__",
           [](const KR::RestRequest& r) {
             return py::str("RestRequest(reflex_modes={!r}, names={!r}, angles={})")
                 .format(r.reflexModes, r.names, floatsText(r.angles));
           })
      .attr("__hash__") = py::none();

  py::class_<KR::TemperatureStatus>(m, "TemperatureStatus",
                                    "A temperature level and the names of the parts concerned.")
      .def(py::init([](int level, std::set<std::string> names) {
             return KR::TemperatureStatus{level, std::move(names)};
           }),
           py::arg("level") = 0, py::arg("names") = std::set<std::string>(),
           "TemperatureStatus(level=0, names=set())")
      .def_readwrite("level", &KR::TemperatureStatus::level, "the overall level")
      .def_readwrite("names", &KR::TemperatureStatus::names, "set of part names (a copy)")
      .def("__eq__",
           [](const KR::TemperatureStatus& a, const KR::TemperatureStatus& b) {
             return a.level == b.level && a.names == b.names;
           })
      .def("__repr__",
           [](const KR::TemperatureStatus& s) {
             return py::str("TemperatureStatus(level={}, names={!r})").format(s.level, s.names);
           })
      .attr("__hash__") = py::none();

  using KR::Math::Trajectory::Limits;
  py::class_<Limits>(m, "Limits", "Largest speed and acceleration allowed (magnitudes).")
      .def(py::init<float, float>(), py::arg("max_velocity"), py::arg("max_acceleration"),
           "Limits(max_velocity, max_acceleration)")
      .def_readwrite("max_velocity", &Limits::maxVelocity, "m/s or rad/s")
      .def_readwrite("max_acceleration", &Limits::maxAcceleration, "m/s^2 or rad/s^2")
      .def("__eq__",
           [](const Limits& a, const Limits& b) {
             return a.maxVelocity == b.maxVelocity && a.maxAcceleration == b.maxAcceleration;
           })
      .def("__repr__",
           [](const Limits& l) {
             return "Limits(max_velocity=" + M::floatText(l.maxVelocity) +
                    ", max_acceleration=" + M::floatText(l.maxAcceleration) + ")";
           })
      .attr("__hash__") = py::none();
}

}  // namespace

void bindRecords(py::module_& m) {
  bindPlanar(m);
  bindSpatial(m);
  bindKeys(m);
  bindStateRecords(m);
}

}  // namespace krpy
