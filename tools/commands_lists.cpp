// Float, string and bool lists, groups of floats and key/value maps.
#include "commands.h"

#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include <map>
#include <string>
#include <vector>

namespace krvaluetool {
namespace {

using namespace KR::ValueUtils;

/// "[a, b, ...]", each entry formatted by `format`.
template <typename List, typename Format>
void printBracketed(Output& out, const List& list, Format format) {
  out << '[';
  bool first = true;
  for (const auto& entry : list) {
    out << (first ? "" : ", ") << format(entry);
    first = false;
  }
  out << ']';
}

/// Strings print quoted and escaped as the value text does, so that an empty
/// string or one holding ", " stays visible.
std::string formatString(const std::string& text) { return KR::printKRValue(KR::KRValue(text)); }

const char* formatBool(bool b) { return b ? "true" : "false"; }

/// "group i: [..]", one group per line; with --json the list of groups.
void printGroups(Output& out, const Options& options,
                 const std::vector<std::vector<float>>& groups) {
  if (options.json) {
    KR::KRValue value;
    createKRValueFromVectorVectorFloat(groups, value);
    if (groups.empty()) {
      value.arraySetSize(0);
    }
    printValue(out, value);
    return;
  }
  for (std::size_t i = 0; i < groups.size(); ++i) {
    out << (i ? "\n" : "") << "group " << i << ": ";
    printBracketed(out, groups[i], formatFloat);
  }
}

/// "key: value" per entry in key order, the value in its text form; with
/// --json the list of [key, value] pairs in key order.
void printMap(Output& out, const Options& options, const std::map<std::string, KR::KRValue>& map) {
  if (options.json) {
    KR::KRValue pairs;
    pairs.arraySetSize(0);
    for (const auto& entry : map) {
      pairs.arrayPush(KR::KRValue::array(entry.first, entry.second));
    }
    printValue(out, pairs);
    return;
  }
  bool first = true;
  for (const auto& entry : map) {
    out << (first ? "" : "\n") << entry.first << ": " << KR::printKRValue(entry.second);
    first = false;
  }
}

}  // namespace

void addListCommands(Commands& c) {
  c.readers.push_back(
      {"floats", "prints the floats", [](const KR::KRValue& v, const Options& o, Output& out) {
         std::vector<float> floats;
         extractVectorFloatsFromKRValue(v, o.name, floats);
         printBracketed(out, floats, formatFloat);
       }});
  c.readers.back().list = true;
  c.readers.push_back({"float-groups", "prints \"group i: [..]\" per group (uses --single-group)",
                       [](const KR::KRValue& v, const Options& o, Output& out) {
                         std::vector<std::vector<float>> groups;
                         extractVectorFloatsFromKRValue(v, o.name, o.singleGroup, groups);
                         printGroups(out, o, groups);
                       }});
  c.readers.back().list = true;
  c.readers.push_back({"strings", "prints the strings quoted",
                       [](const KR::KRValue& v, const Options& o, Output& out) {
                         std::vector<std::string> strings;
                         extractVectorStringsFromKRValue(v, o.name, strings);
                         printBracketed(out, strings, formatString);
                       }});
  c.readers.back().list = true;
  c.readers.push_back({"bools", "prints the bools",
                       [](const KR::KRValue& v, const Options& o, Output& out) {
                         if (o.count > kMaxCount) {
                           throw UsageError("--count " + std::to_string(o.count) +
                                            " is more bools than the tool prints (at most " +
                                            std::to_string(kMaxCount) + ")");
                         }
                         std::vector<bool> bools;
                         extractVectorBoolsFromKRValue(v, o.count, o.name, bools);
                         printBracketed(out, bools, formatBool);
                       }});
  c.readers.push_back({"key-value-map", "prints \"key: value\" per entry in key order",
                       [](const KR::KRValue& v, const Options& o, Output& out) {
                         std::map<std::string, KR::KRValue> map;
                         extractKeyValueMapFromKRValue(v, o.name, o.skipSecond, map);
                         printMap(out, o, map);
                       }});
}

}  // namespace krvaluetool
