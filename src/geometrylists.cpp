// Geometry lists: one record or a list of records in the same argument, and
// for Position6D and Transform also a list of groups of records.
#include <kr/valueutils/geometrylists.h>

#include "geometry_internal.h"
#include "internal.h"

#include <string>
#include <vector>

namespace KR {
namespace ValueUtils {
namespace {

// One struct per record type: which array sizes stand for a single record,
// and the single-record reader that fills one.
struct Pose2DKind {
  using Record = KR::Math::Pose2D;
  static bool isSingleSize(unsigned int size) { return size == 3; }
  static void read(const KR::KRValue& v, const std::string& name, Record& out) {
    detail::readPose2D(v, name, out);
  }
};

struct Position2DKind {
  using Record = KR::Math::Position2D;
  static bool isSingleSize(unsigned int size) { return size == 2; }
  static void read(const KR::KRValue& v, const std::string& name, Record& out) {
    detail::readPosition2D(v, name, out);
  }
};

struct Pose2DAndTimeKind {
  using Record = KR::Math::Pose2DAndTime;
  static bool isSingleSize(unsigned int size) { return size >= 3; }
  static void read(const KR::KRValue& v, const std::string& name, Record& out) {
    detail::readPose2DAndTime(v, name, out);
  }
};

struct Position3DKind {
  using Record = KR::Math::Position3D;
  static bool isSingleSize(unsigned int size) { return size == 3; }
  static void read(const KR::KRValue& v, const std::string& name, Record& out) {
    detail::readPosition3D(v, name, out);
  }
};

struct Position6DKind {
  using Record = KR::Math::Position6D;
  static bool isSingleSize(unsigned int size) { return size == 6; }
  static void read(const KR::KRValue& v, const std::string& name, Record& out) {
    detail::readPosition6D(v, name, out);
  }
};

struct TransformKind {
  using Record = KR::Math::Transform;
  static bool isSingleSize(unsigned int size) { return size == 12 || size == 16; }
  static void read(const KR::KRValue& v, const std::string& name, Record& out) {
    detail::readTransform(v, name, out);
  }
};

// True when `value` is one record rather than a list of them: an array of a
// single-record size whose element 0 is a number. Only the size and element 0
// decide; the record reader checks the rest.
template <typename Kind>
bool isSingleRecord(const KR::KRValue& value) {
  return value.isArray() && Kind::isSingleSize(value.getSize()) && detail::isNumber(value[0]);
}

// Reads an array already known to be valid (possibly empty) as one record or
// a list of records. The output is sized before any element is read, so after
// a failure it holds every record, those after the failing one default-made.
template <typename Kind>
void readRecordsOfArray(const KR::KRValue& value, const std::string& name,
                        std::vector<typename Kind::Record>& out) {
  if (isSingleRecord<Kind>(value)) {
    out.resize(1);
    Kind::read(value, name, out[0]);
    return;
  }
  const unsigned int size = value.getSize();
  out.resize(size);
  if (size == 0) {
    return;
  }
  // The elements are contiguous in the array's block: walked by pointer,
  // without reloading the block and checking the index for each record.
  const KR::KRValue* elements = &value[0];
  typename Kind::Record* records = out.data();
  for (unsigned int i = 0; i < size; ++i) {
    Kind::read(elements[i], name, records[i]);
  }
}

// The flat list reader: a non-empty array read as one record or a list.
template <typename Kind>
void readList(const KR::KRValue& value, const std::string& name,
              std::vector<typename Kind::Record>& out) {
  out.clear();
  detail::checkArray(value, name);
  readRecordsOfArray<Kind>(value, name, out);
}

// The index of the first element that is not one record, or the size when
// every element is one.
template <typename Kind>
unsigned int firstNonRecord(const KR::KRValue& value) {
  const unsigned int size = value.getSize();
  for (unsigned int i = 0; i < size; ++i) {
    if (!isSingleRecord<Kind>(value[static_cast<int>(i)])) {
      return i;
    }
  }
  return size;
}

// The group reader. One record gives one group of one; a list in which some
// element is not a record is a list of groups, each read by the flat list
// reader; a flat list of records is one group per record, or a single group
// of all of them when `isSingleGroup` is true.
template <typename Kind>
void readGroups(const KR::KRValue& value, const std::string& name, bool isSingleGroup,
                std::vector<std::vector<typename Kind::Record>>& out) {
  out.clear();
  detail::checkArray(value, name);
  if (isSingleRecord<Kind>(value)) {
    out.resize(1);
    readList<Kind>(value, name, out[0]);
    return;
  }
  const unsigned int size = value.getSize();
  if (firstNonRecord<Kind>(value) < size) {
    out.resize(size);
    for (unsigned int i = 0; i < size; ++i) {
      readList<Kind>(value[static_cast<int>(i)], name, out[i]);
    }
    return;
  }
  if (isSingleGroup) {
    out.resize(1);
    readList<Kind>(value, name, out[0]);
    return;
  }
  // Every group gets its one default-made record before any is read.
  out.resize(size);
  for (auto& group : out) {
    group.resize(1);
  }
  for (unsigned int i = 0; i < size; ++i) {
    Kind::read(value[static_cast<int>(i)], name, out[i][0]);
  }
}

}  // namespace

void extractVectorPose2DFromKRValue(const KR::KRValue& value, const std::string& name,
                                    std::vector<KR::Math::Pose2D>& out) {
  readList<Pose2DKind>(value, name, out);
}

void extractVectorPosition2DFromKRValue(const KR::KRValue& value, const std::string& name,
                                        std::vector<KR::Math::Position2D>& out) {
  readList<Position2DKind>(value, name, out);
}

void extractVectorPose2DAndTimeFromKRValue(const KR::KRValue& value, const std::string& name,
                                           std::vector<KR::Math::Pose2DAndTime>& out) {
  readList<Pose2DAndTimeKind>(value, name, out);
}

void extractVectorPosition3DFromKRValue(const KR::KRValue& value, const std::string& name,
                                        std::vector<KR::Math::Position3D>& out) {
  out.clear();
  // Unlike the other list readers, anything but an array is an empty list,
  // not an error; an empty array is one too.
  if (!value.isArray()) {
    return;
  }
  readRecordsOfArray<Position3DKind>(value, name, out);
}

void extractVectorPosition6DFromKRValue(const KR::KRValue& value, const std::string& name,
                                        std::vector<KR::Math::Position6D>& out) {
  readList<Position6DKind>(value, name, out);
}

void extractVectorTransformFromKRValue(const KR::KRValue& value, const std::string& name,
                                       std::vector<KR::Math::Transform>& out) {
  readList<TransformKind>(value, name, out);
}

void extractVectorPosition6DFromKRValue(const KR::KRValue& value, const std::string& name,
                                        const bool& isSingleGroup,
                                        std::vector<std::vector<KR::Math::Position6D>>& out) {
  readGroups<Position6DKind>(value, name, isSingleGroup, out);
}

void extractVectorTransformFromKRValue(const KR::KRValue& value, const std::string& name,
                                       const bool& isSingleGroup,
                                       std::vector<std::vector<KR::Math::Transform>>& out) {
  readGroups<TransformKind>(value, name, isSingleGroup, out);
}

}  // namespace ValueUtils
}  // namespace KR
