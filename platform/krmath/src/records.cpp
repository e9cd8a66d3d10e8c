#include <kr/math/floattext.h>
#include <kr/math/pose2d.h>
#include <kr/math/pose2dandtime.h>
#include <kr/math/pose2dposvelacc.h>
#include <kr/math/position2d.h>
#include <kr/math/position3d.h>
#include <kr/math/position6d.h>

#include <ostream>
#include <stdexcept>
#include <string>

// Comparisons are exact float comparisons, so a record holding a NaN differs
// from every record, itself included. Printing writes each float in its
// shortest exact form (floattext.h), whatever the stream's formatting.

namespace KR {
namespace Math {

bool operator==(const Position2D& a, const Position2D& b) { return a.x == b.x && a.y == b.y; }

bool operator!=(const Position2D& a, const Position2D& b) { return !(a == b); }

std::ostream& operator<<(std::ostream& out, const Position2D& p) {
  return out << "Position2D(x=" << FloatText{p.x} << ", y=" << FloatText{p.y} << ")";
}

bool operator==(const Pose2D& a, const Pose2D& b) {
  return a.x == b.x && a.y == b.y && a.theta == b.theta;
}

bool operator!=(const Pose2D& a, const Pose2D& b) { return !(a == b); }

std::ostream& operator<<(std::ostream& out, const Pose2D& p) {
  return out << "Pose2D(x=" << FloatText{p.x} << ", y=" << FloatText{p.y}
             << ", theta=" << FloatText{p.theta} << ")";
}

bool operator==(const Pose2DAndTime& a, const Pose2DAndTime& b) {
  return a.pose == b.pose && a.time == b.time;
}

bool operator!=(const Pose2DAndTime& a, const Pose2DAndTime& b) { return !(a == b); }

std::ostream& operator<<(std::ostream& out, const Pose2DAndTime& p) {
  return out << "Pose2DAndTime(" << p.pose << ", time=" << FloatText{p.time} << ")";
}

bool operator==(const Pose2DPosVelAcc& a, const Pose2DPosVelAcc& b) {
  return a.position == b.position && a.velocity == b.velocity && a.acceleration == b.acceleration;
}

bool operator!=(const Pose2DPosVelAcc& a, const Pose2DPosVelAcc& b) { return !(a == b); }

std::ostream& operator<<(std::ostream& out, const Pose2DPosVelAcc& p) {
  return out << "Pose2DPosVelAcc(position=" << p.position << ", velocity=" << p.velocity
             << ", acceleration=" << p.acceleration << ")";
}

std::vector<float> Position3D::toVector() const { return {x, y, z}; }

bool operator==(const Position3D& a, const Position3D& b) {
  return a.x == b.x && a.y == b.y && a.z == b.z;
}

bool operator!=(const Position3D& a, const Position3D& b) { return !(a == b); }

std::ostream& operator<<(std::ostream& out, const Position3D& p) {
  return out << "Position3D(x=" << FloatText{p.x} << ", y=" << FloatText{p.y}
             << ", z=" << FloatText{p.z} << ")";
}

Position6D::Position6D(const std::vector<float>& values) {
  if (values.size() != 6) {
    throw std::runtime_error("Position6D needs 6 values (x, y, z, wx, wy, wz), got " +
                             std::to_string(values.size()));
  }
  x = values[0];
  y = values[1];
  z = values[2];
  wx = values[3];
  wy = values[4];
  wz = values[5];
}

std::vector<float> Position6D::toVector() const { return {x, y, z, wx, wy, wz}; }

bool operator==(const Position6D& a, const Position6D& b) {
  return a.x == b.x && a.y == b.y && a.z == b.z && a.wx == b.wx && a.wy == b.wy && a.wz == b.wz;
}

bool operator!=(const Position6D& a, const Position6D& b) { return !(a == b); }

std::ostream& operator<<(std::ostream& out, const Position6D& p) {
  return out << "Position6D(x=" << FloatText{p.x} << ", y=" << FloatText{p.y}
             << ", z=" << FloatText{p.z} << ", wx=" << FloatText{p.wx} << ", wy=" << FloatText{p.wy}
             << ", wz=" << FloatText{p.wz} << ")";
}

}  // namespace Math
}  // namespace KR
