// A measurement between two labelled frames: a transform, the points seen and
// how long it took.
#pragma once

#include <kr/math/krmath_export.h>
#include <kr/math/position3d.h>
#include <kr/math/transform.h>

#include <boost/chrono/duration.hpp>

#include <string>
#include <vector>

namespace KR {
namespace Math {

/// `transform` takes coordinates of the frame `label2` into the frame
/// `label1`; `points` are expressed in `label1`; `duration` is how long the
/// measurement took. Defaults to empty labels, the identity, no points and a
/// zero duration.
struct KRMATH_API MetricalData {
  std::string label1;
  std::string label2;
  Transform transform;
  std::vector<Position3D> points;
  boost::chrono::nanoseconds duration{0};
};

/// Every field equal (floats exactly).
KRMATH_API bool operator==(const MetricalData& a, const MetricalData& b);
KRMATH_API bool operator!=(const MetricalData& a, const MetricalData& b);

}  // namespace Math
}  // namespace KR
