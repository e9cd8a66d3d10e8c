// Geometry readers on arbitrary values: single records, lists of records and
// groups of records. Each reader either succeeds or throws
// std::runtime_error; a record read holds the numbers of the value (floats
// bit for bit), a shape failure leaves the output untouched, lists are one
// record per element as their header describes, and records that have a
// writer read back the same after being written.
//
// Input layout: FuzzedDataProvider takes option bytes from the end of the
// input; there are none here, so the last byte chooses the value's decoding
// (see fuzz_value.h) and the bytes before it are the value.
#include <kr/krvalue.h>
#include <kr/krvalueutils.h>

#include "fuzz_value.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace {

using namespace KR::ValueUtils;
using KR::Math::Pose2D;
using KR::Math::Pose2DAndTime;
using KR::Math::Position2D;
using KR::Math::Position3D;
using KR::Math::Position6D;
using KR::Math::Transform;
using krfuzz::isNumber;
using krfuzz::sameBits;
using krfuzz::succeeds;

const std::string kName = "fuzz";

/// Records are plain floats without padding (their headers assert it), so
/// comparing their bytes compares every field bit for bit.
template <typename Record>
bool sameRecord(const Record& a, const Record& b) {
  return std::memcmp(&a, &b, sizeof(Record)) == 0;
}

template <typename Record>
bool sameRecords(const std::vector<Record>& a, const std::vector<Record>& b) {
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t k = 0; k < a.size(); ++k) {
    if (!sameRecord(a[k], b[k])) {
      return false;
    }
  }
  return true;
}

/// Element k of an array as a reader converts it; callers have checked that
/// it is a number.
float numberAt(const KR::KRValue& array, int k) { return static_cast<float>(array[k]); }

/// True when elements [0, count) of an array are all numbers.
bool numbersUpTo(const KR::KRValue& array, unsigned int count) {
  if (!array.isArray() || array.getSize() < count) {
    return false;
  }
  for (unsigned int k = 0; k < count; ++k) {
    if (!isNumber(array[static_cast<int>(k)])) {
      return false;
    }
  }
  return true;
}

/// A record of `Record` filled with a recognisable pattern, so that an output
/// left untouched can be told from one that was written.
template <typename Record>
Record sentinel() {
  Record record;
  float* fields = reinterpret_cast<float*>(&record);
  for (std::size_t k = 0; k < sizeof(Record) / sizeof(float); ++k) {
    fields[k] = 1000.0f + static_cast<float>(k);
  }
  return record;
}

/// Reads `value` with `read` into a sentinel-filled record; returns whether
/// it succeeded and the record.
template <typename Record, typename Reader>
bool readInto(const KR::KRValue& value, Reader read, Record& out) {
  out = sentinel<Record>();
  return succeeds([&] { read(value, kName, out); });
}

/// The record's fields as floats, in declaration order.
template <typename Record>
const float* fieldsOf(const Record& record) {
  return reinterpret_cast<const float*>(&record);
}

/// The fields equal elements [0, count) of `array`.
template <typename Record>
bool fieldsAre(const Record& record, const KR::KRValue& array, unsigned int count) {
  const float* fields = fieldsOf(record);
  for (unsigned int k = 0; k < count; ++k) {
    if (!sameBits(fields[k], numberAt(array, static_cast<int>(k)))) {
      return false;
    }
  }
  return true;
}

// --- single records ----------------------------------------------------------

void checkPosition2D(const KR::KRValue& value) {
  Position2D p;
  const bool got = readInto(value, extractPosition2DFromKRValue, p);
  const unsigned int size = value.getSize();
  const bool shapeFails = !value.isArray() || size == 0 || size >= 3 ||
                          (size == 2 && !isNumber(value[0])) ||
                          (size == 1 && !value[0].isArray());
  if (shapeFails) {
    KRFUZZ_CHECK(!got && sameRecord(p, sentinel<Position2D>()));
    return;
  }
  if (!got) {
    return;
  }
  // [x, y] or [[x, y, ...]].
  const KR::KRValue& fields = size == 2 ? value : value[0];
  KRFUZZ_CHECK(numbersUpTo(fields, 2) && fieldsAre(p, fields, 2));

  KR::KRValue written;
  extractKRValueFromPosition2D(p, written);
  Position2D back;
  KRFUZZ_CHECK(succeeds([&] { extractPosition2DFromKRValue(written, kName, back); }));
  KRFUZZ_CHECK(sameRecord(back, p));
}

void checkPose2D(const KR::KRValue& value) {
  Pose2D p;
  const bool got = readInto(value, extractPose2DFromKRValue, p);
  if (!value.isArray() || value.getSize() < 3) {
    KRFUZZ_CHECK(!got && sameRecord(p, sentinel<Pose2D>()));
    return;
  }
  KRFUZZ_CHECK(got == numbersUpTo(value, 3));
  if (!got) {
    return;
  }
  KRFUZZ_CHECK(fieldsAre(p, value, 3));

  KR::KRValue written;
  extractKRValueFromPose2D(p, written);
  Pose2D back;
  KRFUZZ_CHECK(succeeds([&] { extractPose2DFromKRValue(written, kName, back); }));
  KRFUZZ_CHECK(sameRecord(back, p));
}

void checkPose2DAndTime(const KR::KRValue& value) {
  Pose2DAndTime p;
  const bool got = readInto(value, extractPose2DAndTimeFromKRValue, p);
  if (!value.isArray() || value.getSize() < 3) {
    KRFUZZ_CHECK(!got && sameRecord(p, sentinel<Pose2DAndTime>()));
    return;
  }
  const unsigned int fields = value.getSize() == 3 ? 3 : 4;
  KRFUZZ_CHECK(got == numbersUpTo(value, fields));
  if (!got) {
    return;
  }
  KRFUZZ_CHECK(fieldsAre(p, value, fields));
  if (fields == 3) {
    KRFUZZ_CHECK(sameBits(p.time, -1.0f));
  }
}

/// Readers of records of exactly `size` numbers (Position3D, Position6D).
template <typename Record, typename Reader>
void checkExactRecord(const KR::KRValue& value, Reader read, unsigned int size) {
  Record r;
  const bool got = readInto(value, read, r);
  if (!value.isArray() || value.getSize() != size) {
    KRFUZZ_CHECK(!got && sameRecord(r, sentinel<Record>()));
    return;
  }
  KRFUZZ_CHECK(got == numbersUpTo(value, size));
  if (got) {
    KRFUZZ_CHECK(fieldsAre(r, value, size));
  }
}

void checkPosition6DFromVector(const KR::KRValue& value) {
  std::vector<float> floats;
  if (!succeeds([&] { extractVectorFloatsFromKRValue(value, kName, floats); })) {
    return;
  }
  Position6D p = sentinel<Position6D>();
  const bool got = succeeds([&] { extractPosition6DFromVector(floats, kName, p); });
  KRFUZZ_CHECK(got == (floats.size() == 6));
  if (got) {
    KRFUZZ_CHECK(std::memcmp(&p, floats.data(), sizeof p) == 0);
  } else {
    KRFUZZ_CHECK(sameRecord(p, sentinel<Position6D>()));
  }
}

void checkTransform(const KR::KRValue& value) {
  Transform t;
  const bool got = readInto(value, extractTransformFromKRValue, t);
  const unsigned int size = value.getSize();
  if (!value.isArray() || (size != 12 && size != 16)) {
    KRFUZZ_CHECK(!got && sameRecord(t, sentinel<Transform>()));
    return;
  }
  if (!got) {
    return;
  }
  KRFUZZ_CHECK(numbersUpTo(value, 12));
  // A transform within 0.001 as read is kept; one within 0.01 is repaired
  // into one within 0.001, its translation kept.
  KRFUZZ_CHECK(t.isTransform(0.001f));
  Transform asRead;
  std::memcpy(&asRead, &t, sizeof asRead);
  float* fields = reinterpret_cast<float*>(&asRead);
  for (int k = 0; k < 12; ++k) {
    fields[k] = numberAt(value, k);
  }
  KRFUZZ_CHECK(sameBits(t.r1_c4, asRead.r1_c4) && sameBits(t.r2_c4, asRead.r2_c4) &&
               sameBits(t.r3_c4, asRead.r3_c4));
  if (asRead.isTransform(0.001f)) {
    KRFUZZ_CHECK(sameRecord(t, asRead));
  } else {
    KRFUZZ_CHECK(asRead.isTransform(0.01f));
  }
}

// --- lists -------------------------------------------------------------------

/// A list reader's single reader with the reader signature of the list.
template <typename Record>
using SingleReader = void (*)(const KR::KRValue&, const std::string&, Record&);
template <typename Record>
using ListReader = void (*)(const KR::KRValue&, const std::string&, std::vector<Record>&);

/// Whether the list reader takes `value` as one record: one of the record's
/// single sizes with a number first.
bool isSingleRecord(const KR::KRValue& value, const std::function<bool(unsigned int)>& singleSize) {
  return value.isArray() && value.getSize() > 0 && singleSize(value.getSize()) &&
         isNumber(value[0]);
}

/// One record per element (or the value as one record): on success the list
/// holds what the single reader reads from each; after a failure it still
/// has its full size, as the list is sized before reading.
template <typename Record>
void checkList(const KR::KRValue& value, ListReader<Record> readList,
               SingleReader<Record> readOne, const std::function<bool(unsigned int)>& singleSize,
               bool emptyIsFine) {
  std::vector<Record> list(2, sentinel<Record>());
  const bool got = succeeds([&] { readList(value, kName, list); });
  if (!value.isArray() || value.getSize() == 0) {
    KRFUZZ_CHECK(got == emptyIsFine);
    KRFUZZ_CHECK(list.empty());
    return;
  }
  const bool single = isSingleRecord(value, singleSize);
  KRFUZZ_CHECK(list.size() == (single ? 1u : value.getSize()));
  if (!got) {
    return;
  }
  for (std::size_t k = 0; k < list.size(); ++k) {
    const KR::KRValue& element = single ? value : value[static_cast<int>(k)];
    Record expected;
    KRFUZZ_CHECK(succeeds([&] { readOne(element, kName, expected); }));
    KRFUZZ_CHECK(sameRecord(list[k], expected));
  }
}

void checkLists(const KR::KRValue& value) {
  checkList<Pose2D>(value, extractVectorPose2DFromKRValue, extractPose2DFromKRValue,
                    [](unsigned int n) { return n == 3; }, false);
  checkList<Position2D>(value, extractVectorPosition2DFromKRValue,
                        extractPosition2DFromKRValue, [](unsigned int n) { return n == 2; },
                        false);
  checkList<Pose2DAndTime>(value, extractVectorPose2DAndTimeFromKRValue,
                           extractPose2DAndTimeFromKRValue,
                           [](unsigned int n) { return n >= 3; }, false);
  checkList<Position3D>(value, extractVectorPosition3DFromKRValue,
                        extractPosition3DFromKRValue, [](unsigned int n) { return n == 3; }, true);
  checkList<Position6D>(value, extractVectorPosition6DFromKRValue,
                        extractPosition6DFromKRValue, [](unsigned int n) { return n == 6; },
                        false);
  checkList<Transform>(value, extractVectorTransformFromKRValue, extractTransformFromKRValue,
                       [](unsigned int n) { return n == 12 || n == 16; }, false);
}

/// Lists with writers read back the same after being written.
void checkListRoundTrips(const KR::KRValue& value) {
  std::vector<Position2D> positions;
  if (succeeds([&] { extractVectorPosition2DFromKRValue(value, kName, positions); })) {
    KR::KRValue written;
    extractKRValueFromVectorPosition2D(positions, written);
    std::vector<Position2D> back;
    KRFUZZ_CHECK(succeeds([&] { extractVectorPosition2DFromKRValue(written, kName, back); }));
    KRFUZZ_CHECK(sameRecords(back, positions));
  }
  std::vector<Position3D> points;
  if (succeeds([&] { extractVectorPosition3DFromKRValue(value, kName, points); })) {
    KR::KRValue written;
    createKRValueFromVectorPosition3D(points, written);
    std::vector<Position3D> back;
    KRFUZZ_CHECK(succeeds([&] { extractVectorPosition3DFromKRValue(written, kName, back); }));
    KRFUZZ_CHECK(sameRecords(back, points));
  }
}

// --- groups ------------------------------------------------------------------

template <typename Record>
using GroupReader = void (*)(const KR::KRValue&, const std::string&, const bool&,
                             std::vector<std::vector<Record>>&);

/// One record is one group of one; a list of records one group each (or one
/// group of all); anything else one group per element, read as a list.
template <typename Record>
void checkGroups(const KR::KRValue& value, bool isSingleGroup, GroupReader<Record> readGroups,
                 ListReader<Record> readList, SingleReader<Record> readOne,
                 const std::function<bool(unsigned int)>& singleSize) {
  std::vector<std::vector<Record>> groups(1);
  if (!succeeds([&] { readGroups(value, kName, isSingleGroup, groups); })) {
    return;
  }
  std::vector<std::vector<Record>> expected;
  if (isSingleRecord(value, singleSize)) {
    expected.emplace_back(1);
    KRFUZZ_CHECK(succeeds([&] { readOne(value, kName, expected[0][0]); }));
    KRFUZZ_CHECK(groups.size() == 1 && sameRecords(groups[0], expected[0]));
    return;
  }
  KRFUZZ_CHECK(value.isArray() && value.getSize() > 0);
  bool allRecords = true;
  for (unsigned int k = 0; k < value.getSize(); ++k) {
    allRecords = allRecords && isSingleRecord(value[static_cast<int>(k)], singleSize);
  }
  if (allRecords) {
    std::vector<Record> records;
    KRFUZZ_CHECK(succeeds([&] { readList(value, kName, records); }));
    if (isSingleGroup) {
      expected.push_back(records);
    } else {
      for (const Record& r : records) {
        expected.push_back({r});
      }
    }
  } else {
    for (unsigned int k = 0; k < value.getSize(); ++k) {
      expected.emplace_back();
      KRFUZZ_CHECK(
          succeeds([&] { readList(value[static_cast<int>(k)], kName, expected.back()); }));
    }
  }
  KRFUZZ_CHECK(groups.size() == expected.size());
  for (std::size_t g = 0; g < groups.size(); ++g) {
    KRFUZZ_CHECK(sameRecords(groups[g], expected[g]));
  }
}

void checkAllGroups(const KR::KRValue& value) {
  const auto six = [](unsigned int n) { return n == 6; };
  const auto matrix = [](unsigned int n) { return n == 12 || n == 16; };
  for (bool isSingleGroup : {false, true}) {
    checkGroups<Position6D>(value, isSingleGroup, extractVectorPosition6DFromKRValue,
                            extractVectorPosition6DFromKRValue, extractPosition6DFromKRValue, six);
    checkGroups<Transform>(value, isSingleGroup, extractVectorTransformFromKRValue,
                           extractVectorTransformFromKRValue, extractTransformFromKRValue,
                           matrix);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  const std::optional<KR::KRValue> decoded = krfuzz::decodeValue(data);
  if (!decoded) {
    return 0;
  }
  const KR::KRValue& value = *decoded;
  checkPosition2D(value);
  checkPose2D(value);
  checkPose2DAndTime(value);
  checkExactRecord<Position3D>(value, extractPosition3DFromKRValue, 3);
  checkExactRecord<Position6D>(value, extractPosition6DFromKRValue, 6);
  checkPosition6DFromVector(value);
  checkTransform(value);
  checkLists(value);
  checkListRoundTrips(value);
  checkAllGroups(value);
  return 0;
}
