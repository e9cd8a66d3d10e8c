// Geometry readers, list readers and writers. Lists of fixed-size records
// come back as float32 arrays (N, k), columns in field order.
#include "values.h"

#include <kr/krvalueutils.h>

#include <pybind11/stl.h>

#include <string>
#include <vector>

namespace krpy {
namespace {

namespace M = KR::Math;
namespace VU = KR::ValueUtils;
using KR::KRValue;

/// One record reader: (value, name) -> Record.
template <typename Record>
void defRecordReader(py::module_& m, const char* name,
                     void (*reader)(const KRValue&, const std::string&, Record&),
                     const char* doc) {
  m.def(
      name,
      [reader](const KRValue& value, const std::string& argument) {
        Record record;
        located(value, argument, [&] { reader(value, argument, record); });
        return record;
      },
      py::arg("value"), py::arg("name"), doc);
}

/// One list reader: (value, name) -> float32 array (N, K).
template <typename Record, std::size_t K>
void defArrayReader(py::module_& m, const char* name,
                    void (*reader)(const KRValue&, const std::string&, std::vector<Record>&),
                    const char* doc) {
  m.def(
      name,
      [reader](const KRValue& value, const std::string& argument) {
        std::vector<Record> records;
        {
          const ReleaseIfLarge release(value);
          located(value, argument, [&] { reader(value, argument, records); });
        }
        return toArray(records, K);
      },
      py::arg("value"), py::arg("name"), doc);
}

void bindReaders(py::module_& m) {
  defRecordReader<M::Position2D>(m, "extract_position2d_from_krvalue",
                                 &VU::extractPosition2DFromKRValue,
                                 readerDoc("position2d", "[x, y] (or [[x, y]]) as a Position2D."));
  defRecordReader<M::Pose2D>(m, "extract_pose2d_from_krvalue", &VU::extractPose2DFromKRValue,
                             readerDoc("pose2d", "[x, y, theta, ...] as a Pose2D."));
  defRecordReader<M::Pose2DAndTime>(
      m, "extract_pose2d_and_time_from_krvalue", &VU::extractPose2DAndTimeFromKRValue,
      readerDoc("pose2d-and-time", "[x, y, theta] (time -1.0) or [x, y, theta, time, ...]."));
  defRecordReader<M::Position3D>(m, "extract_position3d_from_krvalue",
                                 &VU::extractPosition3DFromKRValue,
                                 readerDoc("position3d", "Exactly [x, y, z] as a Position3D."));
  defRecordReader<M::Position6D>(
      m, "extract_position6d_from_krvalue", &VU::extractPosition6DFromKRValue,
      readerDoc("position6d", "Exactly [x, y, z, wx, wy, wz] as a Position6D."));
  defRecordReader<M::Transform>(
      m, "extract_transform_from_krvalue", &VU::extractTransformFromKRValue,
      readerDoc("transform", "12 or 16 numbers, row by row, as a Transform."));
  m.def(
      "extract_position6d_from_vector",
      [](const std::vector<float>& values, const std::string& name) {
        M::Position6D out;
        VU::extractPosition6DFromVector(values, name, out);
        return out;
      },
      py::arg("values"), py::arg("name"),
      readerDoc("position6d-vector", "Exactly six floats as a Position6D."));

  defArrayReader<M::Pose2D, 3>(
      m, "extract_vector_pose2d_from_krvalue", &VU::extractVectorPose2DFromKRValue,
      readerDoc("pose2ds", "One Pose2D or a list of them as a float32 array (N, 3)."));
  defArrayReader<M::Position2D, 2>(
      m, "extract_vector_position2d_from_krvalue", &VU::extractVectorPosition2DFromKRValue,
      readerDoc("position2ds", "One Position2D or a list of them as a float32 array (N, 2)."));
  defArrayReader<M::Pose2DAndTime, 4>(
      m, "extract_vector_pose2d_and_time_from_krvalue", &VU::extractVectorPose2DAndTimeFromKRValue,
      readerDoc(
          "pose2d-and-times",
          "One Pose2DAndTime or a list of them as a float32 array (N, 4): x, y, theta, time."));
  defArrayReader<M::Position3D, 3>(
      m, "extract_vector_position3d_from_krvalue", &VU::extractVectorPosition3DFromKRValue,
      readerDoc("position3ds",
                "Position3D list as a float32 array (N, 3); anything that is "
                "not a non-empty list gives shape (0, 3)."));
  m.def(
      "extract_vector_position6d_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        std::vector<M::Position6D> records;
        {
          const ReleaseIfLarge release(value);
          located(value, name, [&] {
            VU::extractVectorPosition6DFromKRValue(value, name, records);
          });
        }
        return toArray(records, 6);
      },
      py::arg("value"), py::arg("name"),
      readerDoc("position6ds", "One Position6D or a list of them as a float32 array (N, 6)."));
  m.def(
      "extract_vector_position6d_from_krvalue",
      [](const KRValue& value, const std::string& name, bool isSingleGroup) {
        std::vector<std::vector<M::Position6D>> groups;
        {
          const ReleaseIfLarge release(value);
          located(value, name, [&] {
            VU::extractVectorPosition6DFromKRValue(value, name, isSingleGroup, groups);
          });
        }
        py::list out;
        for (const auto& group : groups) {
          out.append(toArray(group, 6));
        }
        return out;
      },
      py::arg("value"), py::arg("name"), py::arg("is_single_group"),
      readerDoc("position6d-groups", "Groups of Position6D: a list of float32 arrays (N, 6)."));
  m.def(
      "extract_vector_transform_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        std::vector<M::Transform> records;
        {
          const ReleaseIfLarge release(value);
          located(value, name, [&] {
            VU::extractVectorTransformFromKRValue(value, name, records);
          });
        }
        return records;
      },
      py::arg("value"), py::arg("name"),
      readerDoc("transforms", "One Transform or a list of them, as a list."));
  m.def(
      "extract_vector_transform_from_krvalue",
      [](const KRValue& value, const std::string& name, bool isSingleGroup) {
        std::vector<std::vector<M::Transform>> groups;
        {
          const ReleaseIfLarge release(value);
          located(value, name, [&] {
            VU::extractVectorTransformFromKRValue(value, name, isSingleGroup, groups);
          });
        }
        return groups;
      },
      py::arg("value"), py::arg("name"), py::arg("is_single_group"),
      readerDoc("transform-groups", "Groups of Transforms, as a list of lists."));
}

void bindWriters(py::module_& m) {
  m.def(
      "extract_krvalue_from_position2d",
      [](const M::Position2D& p) {
        KRValue out;
        VU::extractKRValueFromPosition2D(p, out);
        return out;
      },
      py::arg("position"), "[x, y]");
  m.def(
      "extract_krvalue_from_vector_position2d",
      [](const Typed<Position2DsType>& positions) {
        const auto records = toRecords<M::Position2D, 2>(positions.object, "Position2D");
        KRValue out;
        VU::extractKRValueFromVectorPosition2D(records, out);
        return out;
      },
      py::arg("positions"),
      "[[x, y], ...] from Position2D records or an (N, 2) array; None when empty.");
  m.def(
      "extract_krvalue_from_pose2d",
      [](const M::Pose2D& p) {
        KRValue out;
        VU::extractKRValueFromPose2D(p, out);
        return out;
      },
      py::arg("pose"), "[x, y, theta]");
  m.def(
      "extract_krvalue_from_pose2d_pos_vel_acc",
      [](const M::Pose2DPosVelAcc& p) {
        KRValue out;
        VU::extractKRValueFromPose2DPosVelAcc(p, out);
        return out;
      },
      py::arg("state"), "[[x, y, theta] of position, of velocity, of acceleration]");
  m.def(
      "extract_krvalue_from_vector_pose2d_pos_vel_acc",
      [](const Typed<StatesType>& states) {
        const auto records = toRecords<M::Pose2DPosVelAcc, 9>(states.object, "Pose2DPosVelAcc");
        KRValue out;
        VU::extractKRValueFromVectorPose2DPosVelAcc(records, out);
        return out;
      },
      py::arg("states"),
      "One element per state from Pose2DPosVelAcc records or an (N, 9) array; None when empty.");
  m.def(
      "create_krvalue_from_vector_vector_float",
      [](const std::vector<std::vector<float>>& groups) {
        KRValue out;
        VU::createKRValueFromVectorVectorFloat(groups, out);
        return out;
      },
      py::arg("groups"), "[[floats of groups[0]], ...]; [] when empty.");
  m.def(
      "create_krvalue_from_vector_position3d",
      [](const Typed<Position3DsType>& positions) {
        const auto records = toRecords<M::Position3D, 3>(positions.object, "Position3D");
        KRValue out;
        VU::createKRValueFromVectorPosition3D(records, out);
        return out;
      },
      py::arg("positions"), "[[x, y, z], ...] from Position3D records or an (N, 3) array.");
}

}  // namespace

void bindGeometry(py::module_& m) {
  bindReaders(m);
  bindWriters(m);
}

}  // namespace krpy
