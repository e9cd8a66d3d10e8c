// Path and trajectory descriptions: readers that return builders (Python
// callables), the paths and trajectories those make, and the trajectory
// factories the feeding readers fill.
#include "values.h"

#include <kr/krvalueutils.h>

#include <pybind11/stl.h>

#include <boost/function.hpp>

#include <memory>
#include <string>
#include <vector>

namespace krpy {
namespace {

namespace M = KR::Math;
namespace T = KR::Math::Trajectory;
namespace VU = KR::ValueUtils;
using KR::KRValue;

/// A path builder of any kind, as the general path type.
struct PathBuilder {
  boost::function<T::KRPath2D*(const M::Pose2D&)> build;
};

/// A trajectory builder of any kind, as the general trajectory type.
struct TrajectoryBuilder {
  boost::function<T::KRTrajectoryPose2D*(const M::Pose2DPosVelAcc&)> build;
};

std::unique_ptr<T::KRPath2D> buildPath(const PathBuilder& builder, const M::Pose2D& start) {
  const py::gil_scoped_release release;
  return std::unique_ptr<T::KRPath2D>(builder.build(start));
}

std::unique_ptr<T::KRTrajectoryPose2D> buildTrajectory(const TrajectoryBuilder& builder,
                                                       const M::Pose2DPosVelAcc& start) {
  const py::gil_scoped_release release;
  return std::unique_ptr<T::KRTrajectoryPose2D>(builder.build(start));
}

/// `count` poses evenly spaced by arc length from the start to the end, as
/// a float32 array (count, 3).
py::array_t<float> samplePath(const T::KRPath2D& path, py::ssize_t count) {
  if (count < 0) {
    throw py::value_error("the number of samples must not be negative");
  }
  std::vector<M::Pose2D> poses(static_cast<std::size_t>(count));
  {
    const py::gil_scoped_release release;
    const double length = static_cast<double>(path.length());
    for (py::ssize_t i = 0; i < count; ++i) {
      const double s =
          count == 1 ? 0.0 : length * static_cast<double>(i) / static_cast<double>(count - 1);
      poses[static_cast<std::size_t>(i)] = path.poseAt(static_cast<float>(s));
    }
  }
  return toArray(poses, 3);
}

/// The state at each of `times` (seconds), as a float32 array (N, 9).
py::array_t<float> sampleTrajectory(const T::KRTrajectoryPose2D& trajectory,
                                    const py::array_t<double, py::array::c_style |
                                                                  py::array::forcecast>& times) {
  if (times.ndim() != 1) {
    throw py::type_error("times must be a sequence of numbers (one dimension)");
  }
  const double* t = times.data();
  std::vector<M::Pose2DPosVelAcc> states(static_cast<std::size_t>(times.shape(0)));
  {
    const py::gil_scoped_release release;
    for (std::size_t i = 0; i < states.size(); ++i) {
      states[i] = trajectory.stateAt(t[i]);
    }
  }
  return toArray(states, 9);
}

/// What a path is: "Line, length 1 from Pose2D(...) to Pose2D(...)". A path
/// of neither kind, the one a trajectory drives through blends, is told by
/// its segments: "Driven of 7 segments, ...".
std::string describePath(const T::KRPath2D& path) {
  std::string kind = "Driven of " + std::to_string(path.segments().size()) + " segments";
  if (const auto* direct = dynamic_cast<const T::KRDirectPath2D*>(&path)) {
    switch (direct->kind()) {
      case T::KRDirectPath2D::Kind::Line:
        kind = "Line";
        break;
      case T::KRDirectPath2D::Kind::ArcOfCircle:
        kind = "Circle";
        break;
      case T::KRDirectPath2D::Kind::Flat:
        kind = "Flat";
        break;
    }
  } else if (const auto* composed = dynamic_cast<const T::KRPath2DComposed*>(&path)) {
    kind = "Composed of " + std::to_string(composed->pieces().size()) + " pieces";
  }
  return kind + ", length " + M::floatText(path.length()) + " from " + streamed(path.startPose()) +
         " to " + streamed(path.endPose());
}

/// What a trajectory is: "NonHolonomic, 1213/100 s from Pose2D(...) to
/// Pose2D(...)".
std::string describeTrajectory(const T::KRTrajectoryPose2D& trajectory) {
  std::string kind = "NonHolonomic";
  if (dynamic_cast<const T::KRTrajectoryPose2DHolonomic*>(&trajectory) != nullptr) {
    kind = "Holonomic";
  } else if (const auto* composed =
                 dynamic_cast<const T::KRTrajectoryPose2DComposed*>(&trajectory)) {
    kind = "Composed of " + std::to_string(composed->pieces().size()) + " pieces";
  }
  const M::RationalSeconds duration = trajectory.duration();
  return kind + ", " + py::str(toFraction(duration)).cast<std::string>() + " s from " +
         streamed(trajectory.stateAt(0.0).position) + " to " +
         streamed(trajectory.stateAt(M::toSeconds(duration)).position);
}

// The concrete factories are final, so Python owns and deletes them exactly.
using Holonomic = T::HolonomicTrajectoryFactory;
using NonHolonomic = T::NonHolonomicTrajectoryFactory;

using Direct = T::KRDirectTrajectoryPose2D;

/// A direct trajectory's path, `which` of its two; null (None) for a
/// composed trajectory, which has one per piece. The path belongs to the
/// trajectory, which the returned Path keeps alive.
const T::KRPath2D* pathOf(const T::KRTrajectoryPose2D& trajectory,
                          const T::KRPath2D& (Direct::*which)() const) {
  const auto* direct = dynamic_cast<const Direct*>(&trajectory);
  return direct == nullptr ? nullptr : &(direct->*which)();
}

/// The factory a feeding reader fills: either kind.
T::TrajectoryFactory& toFactory(py::handle object) {
  if (py::isinstance<Holonomic>(object)) {
    return object.cast<Holonomic&>();
  }
  if (py::isinstance<NonHolonomic>(object)) {
    return object.cast<NonHolonomic&>();
  }
  throw py::type_error(std::string("expected a HolonomicTrajectoryFactory or a "
                                   "NonHolonomicTrajectoryFactory, got ") +
                       Py_TYPE(object.ptr())->tp_name);
}

void bindObjects(py::module_& m) {
  py::class_<T::KRPath2D, std::unique_ptr<T::KRPath2D>>(
      m, "Path", "A planar path built at a start pose, measured by arc length (meters).")
      .def_property_readonly("length", &T::KRPath2D::length, "total arc length in meters")
      .def_property_readonly("start_pose", &T::KRPath2D::startPose, "the pose it was built at")
      .def_property_readonly("end_pose", &T::KRPath2D::endPose,
                             "the last point with the tangent heading there")
      .def("pose_at", &T::KRPath2D::poseAt, py::arg("s"),
           "The pose at arc length `s`, clamped into [0, length].")
      .def("sample", &samplePath, py::arg("n"),
           "`n` poses evenly spaced from start to end as a float32 array (n, 3): x, y, theta.")
      .def("__repr__", [](const T::KRPath2D& path) {
        return "<krvalueutils.Path " + describePath(path) + ">";
      });

  py::class_<T::KRTrajectoryPose2D, std::unique_ptr<T::KRTrajectoryPose2D>>(
      m, "Trajectory", "A timed planar motion from rest to rest.")
      .def_property_readonly(
          "duration", [](const T::KRTrajectoryPose2D& t) { return toFraction(t.duration()); },
          "how long it lasts, a fractions.Fraction of seconds")
      .def("state_at", &T::KRTrajectoryPose2D::stateAt, py::arg("t"),
           "The Pose2DPosVelAcc `t` seconds after the start, clamped into [0, duration].")
      .def("sample", &sampleTrajectory, py::arg("times"),
           "The states at `times` (seconds) as a float32 array (N, 9): position x, y, theta, "
           "then velocity, then acceleration.")
      .def_property_readonly(
          "path", [](const T::KRTrajectoryPose2D& t) { return pathOf(t, &Direct::path); },
          "the path driven, with the transitions a blend tolerance made (None for a composed "
          "trajectory)")
      .def_property_readonly(
          "described_path",
          [](const T::KRTrajectoryPose2D& t) { return pathOf(t, &Direct::describedPath); },
          "the path as described, the same as `path` without a blend (None for a composed "
          "trajectory)")
      .def("__repr__", [](const T::KRTrajectoryPose2D& trajectory) {
        return "<krvalueutils.Trajectory " + describeTrajectory(trajectory) + ">";
      });

  py::class_<PathBuilder>(m, "PathBuilder",
                          "Makes a Path when called with a start Pose2D; owns what it needs.")
      .def("__call__", &buildPath, py::arg("start"), "A new Path built at `start`.")
      .def("__repr__", [](const PathBuilder& builder) {
        // What it builds, shown as built at the origin.
        return "<krvalueutils.PathBuilder " + describePath(*buildPath(builder, M::Pose2D())) + ">";
      });

  py::class_<TrajectoryBuilder>(m, "TrajectoryBuilder",
                                "Makes a Trajectory when called with a start state or pose.")
      .def("__call__", &buildTrajectory, py::arg("start"),
           "A new Trajectory from the start state (its velocity and acceleration are not used).")
      .def(
          "__call__",
          [](const TrajectoryBuilder& builder, const M::Pose2D& start) {
            return buildTrajectory(builder, M::Pose2DPosVelAcc(start, M::Pose2D(), M::Pose2D()));
          },
          py::arg("start"), "A new Trajectory from rest at the pose `start`.")
      .def("__repr__", [](const TrajectoryBuilder& builder) {
        // What it builds, shown as built from rest at the origin.
        return "<krvalueutils.TrajectoryBuilder " +
               describeTrajectory(*buildTrajectory(builder, M::Pose2DPosVelAcc())) + ">";
      });
}

/// The constructor and the path pieces shared by both factory kinds.
template <typename Factory>
py::class_<Factory> bindFactory(py::module_& m, const char* name, const char* doc) {
  py::class_<Factory> cls(m, name, doc);
  cls.def(py::init([](const LimitsArgument& first, const LimitsArgument& second,
                      const SecondsArgument& period, float fraction, float blendTolerance) {
            Factory factory(first.value, second.value, period.value, fraction);
            factory.setBlendTolerance(blendTolerance);
            return factory;
          }),
          py::arg("first_limits"), py::arg("second_limits"), py::arg("period"),
          py::arg("fraction_of_limits") = 1.0f, py::arg("blend_tolerance") = 0.0f,
          "Limits are Limits(...) or (velocity, acceleration); `period` a fractions.Fraction; "
          "`blend_tolerance` in meters (0: drive the path as described).")
      .def("add_line", &Factory::addLine, py::arg("end"), "Adds a straight line to `end`.")
      .def("add_circle", &Factory::addCircle, py::arg("centre"), py::arg("angle"),
           "Adds an arc about `centre` by `angle` radians.")
      .def("add_flat", &Factory::addFlat, py::arg("first_centre"), py::arg("first_angle"),
           py::arg("straight_end"), py::arg("second_centre"), py::arg("second_angle"),
           "Adds an arc, a straight segment and an arc.")
      .def_property_readonly(
          "pieces",
          [](const Factory& factory) {
            std::vector<PathBuilder> pieces;
            for (const auto& piece : factory.pieces()) {
              pieces.push_back(PathBuilder{piece});
            }
            return pieces;
          },
          "path builders of the pieces added so far, in order")
      .def_property_readonly(
          "period", [](const Factory& factory) { return toFraction(factory.period()); },
          "the controller's tick, a fractions.Fraction of seconds")
      .def_property("blend_tolerance", &Factory::blendTolerance, &Factory::setBlendTolerance,
                    "meters within which the trajectories built afterwards drive through the "
                    "joints of the path on transitions; 0 follows it exactly; RuntimeError "
                    "unless finite and not negative");
  return cls;
}

void bindFactories(py::module_& m) {
  bindFactory<Holonomic>(
      m, "HolonomicTrajectoryFactory",
      "Holonomic trajectories: translation limits first, rotation limits second.")
      .def(
          "get_trajectory_builder",
          [](const Holonomic& factory, float rotation, const SecondsArgument& duration) {
            return TrajectoryBuilder{factory.getTrajectoryBuilder(rotation, duration.value)};
          },
          py::arg("rotation"), py::arg("duration"),
          "A builder following the pieces while turning by `rotation` radians; `duration` a "
          "fractions.Fraction of seconds (0: the fastest).");
  bindFactory<NonHolonomic>(
      m, "NonHolonomicTrajectoryFactory",
      "Trajectories of a base facing along the path: linear limits first, angular second.")
      .def(
          "get_trajectory_builder",
          [](const NonHolonomic& factory, const SecondsArgument& duration) {
            return TrajectoryBuilder{factory.getTrajectoryBuilder(duration.value)};
          },
          py::arg("duration"),
          "A builder following the pieces; `duration` a fractions.Fraction of seconds.");
}

/// The trajectory readers share their arguments: (value, name, period,
/// first_limits, second_limits, factory_parameter, blend_tolerance=0) ->
/// TrajectoryBuilder. They bind the form with a blend tolerance, which with 0
/// is the form without one.
template <typename Builder>
void defTrajectoryReader(py::module_& m, const char* name,
                         void (*reader)(const KRValue&, const std::string&,
                                        const M::RationalSeconds&, const T::Limits&,
                                        const T::Limits&, float, float, Builder&),
                         const char* doc) {
  m.def(
      name,
      [reader](const KRValue& value, const std::string& argument, const SecondsArgument& period,
               const LimitsArgument& first, const LimitsArgument& second, float parameter,
               float blendTolerance) {
        const M::RationalSeconds& periodSeconds = period.value;
        const T::Limits& firstLimits = first.value;
        const T::Limits& secondLimits = second.value;
        Builder builder;
        located(value, argument, [&] {
          reader(value, argument, periodSeconds, firstLimits, secondLimits, parameter,
                 blendTolerance, builder);
        });
        return TrajectoryBuilder{builder};
      },
      py::arg("value"), py::arg("name"), py::arg("period"), py::arg("first_limits"),
      py::arg("second_limits"), py::arg("factory_parameter"), py::arg("blend_tolerance") = 0.0f,
      doc);
}

void bindReaders(py::module_& m) {
  m.def(
      "extract_direct_path2d_builder_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        boost::function<T::KRDirectPath2D*(const M::Pose2D&)> builder;
        located(value, name, [&] {
          VU::extractDirectPath2DBuilderFromKRValue(value, name, builder);
        });
        return PathBuilder{builder};
      },
      py::arg("value"), py::arg("name"),
      "A \"Line\", \"Circle\" or \"Flat\" description as a PathBuilder.");
  m.def(
      "extract_path2d_builder_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        PathBuilder builder;
        located(value, name, [&] {
          VU::extractPath2DBuilderFromKRValue(value, name, builder.build);
        });
        return builder;
      },
      py::arg("value"), py::arg("name"),
      readerDoc("path", "A direct or \"Composed\" path as a PathBuilder."));
  m.def(
      "extract_direct_path2d_into_trajectory_factory",
      [](const KRValue& value, const std::string& name, const Typed<FactoryType>& factory) {
        located(value, name, [&] {
          VU::extractDirectPath2DIntoTrajectoryFactory(value, name, toFactory(factory.object));
        });
      },
      py::arg("value"), py::arg("name"), py::arg("factory"),
      "Adds one direct path to `factory` (nothing on failure).");
  m.def(
      "extract_path2d_into_trajectory_factory",
      [](const KRValue& value, const std::string& name, const Typed<FactoryType>& factory) {
        located(value, name, [&] {
          VU::extractPath2DIntoTrajectoryFactory(value, name, toFactory(factory.object));
        });
      },
      py::arg("value"), py::arg("name"), py::arg("factory"),
      "Adds a direct or composed path to `factory`, piece by piece (no rollback).");

  defTrajectoryReader(m, "extract_direct_trajectory_pose2d_builder_from_krvalue",
                      &VU::extractDirectTrajectoryPose2DBuilderFromKRValue,
                      "A \"Holonomic\" or \"NonHolonomic\" description as a TrajectoryBuilder; "
                      "its factory gets `blend_tolerance` (meters).");
  defTrajectoryReader(m, "extract_trajectory_pose2d_composed_builder_from_krvalue",
                      &VU::extractTrajectoryPose2DComposedBuilderFromKRValue,
                      "A \"Composed\" trajectory description as a TrajectoryBuilder; every "
                      "factory it makes gets `blend_tolerance` (meters).");
  defTrajectoryReader(
      m, "extract_trajectory_pose2d_builder_from_krvalue",
      &VU::extractTrajectoryPose2DBuilderFromKRValue,
      readerDoc("trajectory",
                "A direct or composed trajectory description as a TrajectoryBuilder; every "
                "factory it makes gets `blend_tolerance` (meters)."));
}

}  // namespace

void bindPaths(py::module_& m) {
  bindObjects(m);
  bindFactories(m);
  bindReaders(m);
}

}  // namespace krpy
