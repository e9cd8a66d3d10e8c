#include <kr/math/metricaldata.h>

// Floats compare exactly (through the records' own operators), so a record
// holding a NaN differs from every record, itself included.

namespace KR {
namespace Math {

bool operator==(const MetricalData& a, const MetricalData& b) {
  return a.label1 == b.label1 && a.label2 == b.label2 && a.transform == b.transform &&
         a.points == b.points && a.duration == b.duration;
}

bool operator!=(const MetricalData& a, const MetricalData& b) { return !(a == b); }

}  // namespace Math
}  // namespace KR
