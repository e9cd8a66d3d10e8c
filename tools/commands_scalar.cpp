// Scalars, clipping, axis masks, frames and durations.
#include "commands.h"

#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include <boost/chrono/duration.hpp>

#include <cerrno>
#include <cstdlib>
#include <sstream>

namespace krvaluetool {
namespace {

using namespace KR::ValueUtils;

std::string formatMask(const std::bitset<6>& mask) {
  static const char* const kAxes[6] = {"x", "y", "z", "wx", "wy", "wz"};
  std::string text = mask.to_string() + " (";
  bool first = true;
  for (std::size_t bit = 0; bit < 6; ++bit) {
    if (!mask.test(bit)) {
      continue;
    }
    text += first ? "" : ", ";
    text += kAxes[bit];
    first = false;
  }
  return text + ")";
}

std::string formatFrame(KR::Math::FRAME frame) {
  return std::string(KR::Math::frameName(frame)) + " (" + std::to_string(int(frame)) + ")";
}

template <typename T, typename Format>
std::string formatList(const std::vector<T>& list, Format format) {
  std::string text;
  for (std::size_t i = 0; i < list.size(); ++i) {
    text += (i ? "\n" : "") + std::to_string(i) + ": " + format(list[i]);
  }
  return text;
}

std::string readDuration(const KR::KRValue& value, const Options& options) {
  if (!value.isArray() || value.getSize() != 2) {
    throw UsageError("a duration is given as [seconds, microseconds]");
  }
  const boost::chrono::nanoseconds d = extractDuration(value[0], value[1], options.name);
  return std::to_string(d.count()) + " ns";
}

std::string writeDuration(const std::string& input, const Options&) {
  errno = 0;
  char* end = nullptr;
  const long long ns = std::strtoll(input.c_str(), &end, 10);
  if (input.empty() || *end != '\0' || errno == ERANGE) {
    throw UsageError("a duration is given as a whole number of nanoseconds");
  }
  KR::KRValue seconds;
  KR::KRValue microseconds;
  convertDurationToKRValue(boost::chrono::nanoseconds(ns), seconds, microseconds);
  return KR::printKRValue(KR::KRValue::array(seconds, microseconds));
}

}  // namespace

void addScalarCommands(Commands& c) {
  c.readers.push_back({"check-array", "VALUE; prints ok for a non-empty array",
                       [](const KR::KRValue& v, const Options& o) {
                         checkArrayFromKRValue(v, o.name);
                         return std::string("ok");
                       }});
  c.readers.push_back({"float", "NUMBER; prints the float (uses --field)",
                       [](const KR::KRValue& v, const Options& o) {
                         return formatFloat(extractFloat(v, o.name, o.field));
                       }});
  c.readers.push_back({"float-clip",
                       "NUMBER; prints the float clipped to [--min, --max], warning "
                       "on standard error when clipped (uses --field)",
                       [](const KR::KRValue& v, const Options& o) {
                         return formatFloat(
                             extractFloatAndClip(v, o.min, o.max, o.name, o.field));
                       }});
  c.readers.push_back({"int", "NUMBER; prints the int, a float truncated (uses --field)",
                       [](const KR::KRValue& v, const Options& o) {
                         return std::to_string(extractIntFromKRValue(v, o.name, o.field));
                       }});
  c.readers.push_back({"axis-mask", "INT; prints the six bits and the axes they select",
                       [](const KR::KRValue& v, const Options& o) {
                         std::bitset<6> mask;
                         extractAxisMaskFromKRValue(v, o.name, mask);
                         return formatMask(mask);
                       }});
  c.readers.push_back({"axis-masks", "INT or [INT, ...]; prints one mask per line",
                       [](const KR::KRValue& v, const Options& o) {
                         std::vector<std::bitset<6>> masks;
                         extractVectorAxisMaskFromKRValue(v, o.name, masks);
                         return formatList(masks, formatMask);
                       }});
  c.readers.push_back({"frame", "INT; prints the frame",
                       [](const KR::KRValue& v, const Options& o) {
                         KR::Math::FRAME frame = KR::Math::FRAME_TORSO;
                         extractFrameFromKRValue(v, o.name, frame);
                         return formatFrame(frame);
                       }});
  c.readers.push_back({"frames", "INT or [INT, ...]; prints one frame per line",
                       [](const KR::KRValue& v, const Options& o) {
                         std::vector<KR::Math::FRAME> frames;
                         extractVectorFrameFromKRValue(v, o.name, frames);
                         return formatList(frames, formatFrame);
                       }});
  c.readers.push_back({"duration", "[SECONDS, MICROSECONDS]; prints the nanoseconds",
                       readDuration});

  c.writers.push_back({"duration",
                       "NANOSECONDS; prints [seconds, microseconds] as int values",
                       writeDuration});
}

}  // namespace krvaluetool
