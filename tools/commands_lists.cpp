// Float, string and bool lists, groups of floats and key/value maps.
#include "commands.h"

#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include <map>

namespace krvaluetool {
namespace {

using namespace KR::ValueUtils;

/// "[a, b, ...]", each entry formatted by `format`.
template <typename List, typename Format>
std::string formatBracketed(const List& list, Format format) {
  std::string text = "[";
  bool first = true;
  for (const auto& entry : list) {
    text += (first ? "" : ", ") + format(entry);
    first = false;
  }
  return text + "]";
}

std::string formatFloats(const std::vector<float>& floats) {
  return formatBracketed(floats, formatFloat);
}

/// Strings print quoted and escaped as the value text does, so that an empty
/// string or one holding ", " stays visible.
std::string formatString(const std::string& text) { return KR::printKRValue(KR::KRValue(text)); }

std::string formatBool(bool b) { return b ? "true" : "false"; }

/// "group i: [..]", one group per line.
std::string formatGroups(const std::vector<std::vector<float>>& groups) {
  std::string text;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    text += (i ? "\n" : "") + std::string("group ") + std::to_string(i) + ": " +
            formatFloats(groups[i]);
  }
  return text;
}

/// "key: value" per entry in key order, the value in its text form.
std::string formatMap(const std::map<std::string, KR::KRValue>& map) {
  std::string text;
  bool first = true;
  for (const auto& entry : map) {
    text += (first ? "" : "\n") + entry.first + ": " + KR::printKRValue(entry.second);
    first = false;
  }
  return text;
}

}  // namespace

void addListCommands(Commands& c) {
  c.readers.push_back({"floats", "NUMBER or [NUMBER, ...]; prints the floats",
                       [](const KR::KRValue& v, const Options& o) {
                         std::vector<float> floats;
                         extractVectorFloatsFromKRValue(v, o.name, floats);
                         return formatFloats(floats);
                       }});
  c.readers.push_back({"float-groups",
                       "NUMBER, [NUMBER, ...], [[NUMBER, ...]] or a list of numbers and "
                       "lists; prints \"group i: [..]\" per group (uses --single-group)",
                       [](const KR::KRValue& v, const Options& o) {
                         std::vector<std::vector<float>> groups;
                         extractVectorFloatsFromKRValue(v, o.name, o.singleGroup, groups);
                         return formatGroups(groups);
                       }});
  c.readers.push_back({"strings", "STRING or [STRING, ...]; prints the strings quoted",
                       [](const KR::KRValue& v, const Options& o) {
                         std::vector<std::string> strings;
                         extractVectorStringsFromKRValue(v, o.name, strings);
                         return formatBracketed(strings, formatString);
                       }});
  c.readers.push_back({"bools",
                       "BOOL or NUMBER (repeated --count times) or [BOOL, ...], other "
                       "elements skipped; prints the bools",
                       [](const KR::KRValue& v, const Options& o) {
                         std::vector<bool> bools;
                         extractVectorBoolsFromKRValue(v, o.count, o.name, bools);
                         return formatBracketed(bools, formatBool);
                       }});
  c.readers.push_back({"key-value-map",
                       "[[KEY, VALUE], ...] or with --skip-second [[KEY, SKIPPED, VALUE], "
                       "...]; prints \"key: value\" per entry in key order",
                       [](const KR::KRValue& v, const Options& o) {
                         std::map<std::string, KR::KRValue> map;
                         extractKeyValueMapFromKRValue(v, o.name, o.skipSecond, map);
                         return formatMap(map);
                       }});
}

}  // namespace krvaluetool
