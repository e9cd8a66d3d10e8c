// Scalars, clipping, axis masks, frames and durations.
#include "commands.h"

#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include <boost/chrono/duration.hpp>

#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <utility>
#include <vector>

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

KR::KRValue maskValue(const std::bitset<6>& mask) {
  return KR::KRValue(static_cast<int>(mask.to_ulong()));
}

std::string formatFrame(KR::Math::FRAME frame) {
  return std::string(KR::Math::frameName(frame)) + " (" + std::to_string(int(frame)) + ")";
}

KR::KRValue frameValue(KR::Math::FRAME frame) { return KR::KRValue(static_cast<int>(frame)); }

/// One entry per line, "i: entry"; with --json an array of their values.
template <typename T, typename Format, typename ToValue>
void printList(Output& out, const Options& options, const std::vector<T>& list, Format format,
               ToValue toValue) {
  if (options.json) {
    KR::KRValue values;
    values.arraySetSize(static_cast<int>(list.size()));
    for (std::size_t i = 0; i < list.size(); ++i) {
      values[static_cast<int>(i)] = toValue(list[i]);
    }
    printValue(out, values);
    return;
  }
  for (std::size_t i = 0; i < list.size(); ++i) {
    out << (i ? "\n" : "") << i << ": " << format(list[i]);
  }
}

void readDuration(const KR::KRValue& value, const Options& options, Output& out) {
  if (!value.isArray() || value.getSize() != 2) {
    throw UsageError("a duration is given as [seconds, microseconds]");
  }
  const boost::chrono::nanoseconds d = extractDuration(value[0], value[1], options.name);
  if (options.json) {
    KR::KRValue seconds;
    KR::KRValue microseconds;
    convertDurationToKRValue(d, seconds, microseconds);
    printValue(out, KR::KRValue::array(seconds, microseconds));
    return;
  }
  out << static_cast<long long>(d.count()) << " ns";
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
  // The seconds are a 32-bit int value: about 68 years either way.
  const long long wholeSeconds = ns / 1000000000;
  const int writtenSeconds = static_cast<int>(std::as_const(seconds));
  if (writtenSeconds != wholeSeconds) {
    std::cerr << "krvalue: warning: " << ns << " ns is " << wholeSeconds
              << " s, outside the seconds' int range [-2147483648, 2147483647]; the seconds "
                 "written wrap to "
              << writtenSeconds << "\n";
  }
  return KR::printKRValue(KR::KRValue::array(seconds, microseconds));
}

}  // namespace

void addScalarCommands(Commands& c) {
  c.readers.push_back({"check-array", "prints ok (--json: true) for a non-empty array",
                       [](const KR::KRValue& v, const Options& o, Output& out) {
                         checkArrayFromKRValue(v, o.name);
                         out << (o.json ? "true" : "ok");
                       }});
  c.readers.push_back({"float", "prints the float (uses --field)",
                       [](const KR::KRValue& v, const Options& o, Output& out) {
                         out << formatFloat(extractFloat(v, o.name, o.field));
                       }});
  c.readers.push_back({"float-clip",
                       "prints the float clipped to [--min, --max], warning on standard error when "
                       "clipped (uses --field)",
                       [](const KR::KRValue& v, const Options& o, Output& out) {
                         out << formatFloat(extractFloatAndClip(v, o.min, o.max, o.name, o.field));
                       }});
  c.readers.push_back({"int", "prints the int, a float truncated (uses --field)",
                       [](const KR::KRValue& v, const Options& o, Output& out) {
                         out << extractIntFromKRValue(v, o.name, o.field);
                       }});
  c.readers.push_back({"axis-mask", "prints the six bits and the axes they select",
                       [](const KR::KRValue& v, const Options& o, Output& out) {
                         std::bitset<6> mask;
                         extractAxisMaskFromKRValue(v, o.name, mask);
                         if (o.json) {
                           printValue(out, maskValue(mask));
                         } else {
                           out << formatMask(mask);
                         }
                       }});
  c.readers.push_back({"axis-masks", "prints one mask per line",
                       [](const KR::KRValue& v, const Options& o, Output& out) {
                         std::vector<std::bitset<6>> masks;
                         extractVectorAxisMaskFromKRValue(v, o.name, masks);
                         printList(out, o, masks, formatMask, maskValue);
                       }});
  c.readers.back().list = true;
  c.readers.push_back(
      {"frame", "prints the frame", [](const KR::KRValue& v, const Options& o, Output& out) {
         KR::Math::FRAME frame = KR::Math::FRAME_TORSO;
         extractFrameFromKRValue(v, o.name, frame);
         if (o.json) {
           printValue(out, frameValue(frame));
         } else {
           out << formatFrame(frame);
         }
       }});
  c.readers.push_back({"frames", "prints one frame per line",
                       [](const KR::KRValue& v, const Options& o, Output& out) {
                         std::vector<KR::Math::FRAME> frames;
                         extractVectorFrameFromKRValue(v, o.name, frames);
                         printList(out, o, frames, formatFrame, frameValue);
                       }});
  c.readers.back().list = true;
  c.readers.push_back(
      {"duration",
       "prints the nanoseconds (--json: the duration as the duration writer lays it out)",
       readDuration});

  c.writers.push_back({"duration",
                       "NANOSECONDS; prints [seconds, microseconds] as int values, warning "
                       "on standard error when the seconds wrap",
                       writeDuration});
}

}  // namespace krvaluetool
