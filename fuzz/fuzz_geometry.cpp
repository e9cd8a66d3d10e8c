// Geometry readers on arbitrary values: only std::runtime_error escapes, a
// failure of the shape test leaves a record untouched, a transform read is a
// transform, records with a writer read back equal once written, and a
// located failure has the plain call's message and a path into the value
// that ends at what the message blames (not a number, for a number's field).
//
// Input layout: no options; the last byte chooses the value's decoding (see
// fuzz_value.h).
#include <kr/krvalue.h>
#include <kr/krvalueutils.h>

#include "fuzz_value.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

using namespace KR::ValueUtils;
using namespace KR::Math;
using krfuzz::succeeds;

const std::string kName = "fuzz";

/// A failure of a record's shape test: "KRMotion: <name> ..." from the array
/// checks or the record's own size check. A number that fails to read names
/// its field instead ("<name> x: ..."), and the transform check, also
/// "KRMotion: ...", comes after all twelve numbers are written.
bool isShapeFailure(const std::string& message) {
  return message.rfind("KRMotion: ", 0) == 0 &&
         message.find("Wrong Transform given") == std::string::npos;
}

/// Reads a record over a recognisable pattern; returns whether it succeeded
/// and checks that a failure of the shape left the pattern as it was.
template <typename Record, typename Reader>
bool readRecord(const KR::KRValue& value, Reader read, Record& out) {
  std::memset(static_cast<void*>(&out), 0x5a, sizeof out);
  Record before;
  std::memcpy(static_cast<void*>(&before), &out, sizeof out);
  const std::optional<std::string> message = krfuzz::failure([&] { read(value, kName, out); });
  if (message && isShapeFailure(*message)) {
    KRFUZZ_CHECK(std::memcmp(&before, &out, sizeof out) == 0);
  }
  return !message;
}

/// What `write` makes of a record list reads back equal through `read`.
template <typename Record, typename Write, typename Read>
void checkWritten(const std::vector<Record>& records, Write write, Read read) {
  KR::KRValue written;
  write(records, written);
  std::vector<Record> back;
  read(written, kName, back);
  KRFUZZ_CHECK(krfuzz::sameRecords(back, records));
}

void checkRecords(const KR::KRValue& value) {
  Position2D position;
  if (readRecord(value, extractPosition2DFromKRValue, position)) {
    checkWritten<Position2D>({position}, extractKRValueFromVectorPosition2D,
                             extractVectorPosition2DFromKRValue);
  }
  Pose2D pose;
  if (readRecord(value, extractPose2DFromKRValue, pose)) {
    KR::KRValue written;
    extractKRValueFromPose2D(pose, written);
    Pose2D back;
    extractPose2DFromKRValue(written, kName, back);
    KRFUZZ_CHECK(krfuzz::samePose(back, pose));
  }
  Pose2DAndTime timed;
  readRecord(value, extractPose2DAndTimeFromKRValue, timed);
  Position3D point;
  readRecord(value, extractPosition3DFromKRValue, point);
  Position6D six;
  readRecord(value, extractPosition6DFromKRValue, six);
  Transform transform;
  if (readRecord(value, extractTransformFromKRValue, transform)) {
    KRFUZZ_CHECK(transform.isTransform(0.001f));
  }
}

/// locateFailure on a list reader: the same message as a plain call, and a
/// path that leads into `value`; where the message says a number was
/// expected, it leads to something that is not one.
template <typename Read>
void checkLocated(const KR::KRValue& value, Read read) {
  const std::optional<std::string> plain = krfuzz::failure([&] { read(value); });
  const std::optional<Failure> located = locateFailure(value, [&] { read(value); });
  KRFUZZ_CHECK(plain.has_value() == located.has_value());
  if (!located) {
    return;
  }
  KRFUZZ_CHECK(located->message == *plain);
  const KR::KRValue* at = &value;
  for (const unsigned int index : located->path) {
    KRFUZZ_CHECK(at->isArray() && index < at->getSize());
    at = &(*at)[static_cast<int>(index)];
  }
  if (located->message.find(": Expected a float") != std::string::npos) {
    KRFUZZ_CHECK(!at->isInt() && !at->isFloat());
  }
}

void checkLists(const KR::KRValue& value) {
  std::vector<Position2D> positions;
  if (succeeds([&] { extractVectorPosition2DFromKRValue(value, kName, positions); })) {
    checkWritten(positions, extractKRValueFromVectorPosition2D, extractVectorPosition2DFromKRValue);
  }
  std::vector<Position3D> points;
  if (succeeds([&] { extractVectorPosition3DFromKRValue(value, kName, points); })) {
    checkWritten(points, createKRValueFromVectorPosition3D, extractVectorPosition3DFromKRValue);
  }
  std::vector<Pose2D> poses;
  succeeds([&] { extractVectorPose2DFromKRValue(value, kName, poses); });
  std::vector<Pose2DAndTime> timed;
  succeeds([&] { extractVectorPose2DAndTimeFromKRValue(value, kName, timed); });
  std::vector<float> floats;
  Position6D six;
  if (succeeds([&] { extractVectorFloatsFromKRValue(value, kName, floats); })) {
    succeeds([&] { extractPosition6DFromVector(floats, kName, six); });
  }
  checkLocated(value, [](const KR::KRValue& v) {
    std::vector<Pose2DAndTime> out;
    extractVectorPose2DAndTimeFromKRValue(v, kName, out);
  });
  checkLocated(value, [](const KR::KRValue& v) {
    std::vector<std::vector<Transform>> out;
    extractVectorTransformFromKRValue(v, kName, false, out);
  });
  for (bool isSingleGroup : {false, true}) {
    std::vector<std::vector<Position6D>> sixes;
    succeeds([&] { extractVectorPosition6DFromKRValue(value, kName, isSingleGroup, sixes); });
    std::vector<std::vector<Transform>> transforms;
    succeeds([&] { extractVectorTransformFromKRValue(value, kName, isSingleGroup, transforms); });
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  const std::optional<KR::KRValue> value = krfuzz::decodeValue(data);
  if (value) {
    checkRecords(*value);
    checkLists(*value);
  }
  return 0;
}
