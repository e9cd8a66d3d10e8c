// The list and map readers: how tolerant each one is, the exact messages, and
// what the output holds after a failure.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include "test_support.h"

#include <map>

namespace {

using KR::KRValue;
using KRTest::expectRows;
using KRTest::Row;
using namespace KR::ValueUtils;
using Floats = std::vector<float>;
using Groups = std::vector<Floats>;
using Bools = std::vector<bool>;
using Map = std::map<std::string, KRValue>;

KRValue parse(const std::string& text) { return KR::parseKRValue(text); }

const std::string kInvalid = "KRMotion: arg KRValue is invalid.";
const std::string kEmpty = "KRMotion: arg KRValue is empty.";
const std::string kNotArray = "KRMotion: arg KRValue is not an array.";
const std::string kNotFloat = "arg KRValue: Expected a float";

// Every reader reads into an output holding leftovers, so that clearing (and,
// after a failure, sizing) shows.

// A single number or string is a list of one; anything else that is not a
// non-empty array fails the shape check, a single bool too. An int reads as
// its float.
TEST(FlatLists, SingleScalarOrArrayOfFloatsAndStrings) {
  const auto floats = [](const std::string& text, Floats& out) {
    extractVectorFloatsFromKRValue(parse(text), "arg", out);
  };
  expectRows<Floats>(floats, {9, 9},
                     {{"2", kNoThrow, {2}},
                      {"2.5", kNoThrow, {2.5f}},
                      {"[16777217, -2.5]", kNoThrow, {16777216, -2.5f}},
                      {"true", kNotArray, {}},
                      {"null", kInvalid, {}},
                      // Sized first: the failing entry and the later ones are 0.
                      {"[1, \"a\", 3]", kNotFloat, {1, 0, 0}},
                      {"[1, null]", kNotFloat + " but found an invalid KRValue", {1, 0}},
                      {"[[1]]", kNotFloat, {0}}});
  const auto strings = [](const std::string& text, std::vector<std::string>& out) {
    extractVectorStringsFromKRValue(parse(text), "arg", out);
  };
  expectRows<std::vector<std::string>>(
      strings, {"old"},
      {{"\"s\"", kNoThrow, {"s"}},
       {"[\"a\", \"\"]", kNoThrow, {"a", ""}},
       {"3", kNotArray, {}},
       {"null", kInvalid, {}},
       // The value's own string conversion decides on a non-string element.
       {"[\"a\", 2]", "KRValue: expected a string value but found an int value", {"a", ""}}});
}

void expectGroupRows(bool isSingleGroup, const std::vector<Row<Groups>>& rows) {
  SCOPED_TRACE(isSingleGroup ? "single group" : "group per number");
  const auto read = [isSingleGroup](const std::string& text, Groups& out) {
    extractVectorFloatsFromKRValue(parse(text), "arg", isSingleGroup, out);
  };
  expectRows<Groups>(read, {{9}, {9, 9}, {9}, {9}}, rows);
}

TEST(FloatGroups, EitherFlag) {
  for (const bool isSingleGroup : {false, true}) {
    expectGroupRows(isSingleGroup,
                    {{"1.5", kNoThrow, {{1.5f}}},
                     {"-2", kNoThrow, {{-2}}},  // an int is a number too
                     {"[[1], [2, 3]]", kNoThrow, {{1}, {2, 3}}},
                     {"[1, [2, 3]]", kNoThrow, {{1}, {2, 3}}},
                     {"[]", kEmpty, {}},
                     // Mixed lists: the failing group as the flat reader left
                     // it, the later groups empty.
                     {"[[1, 2], [3, \"a\", 4], [5]]", kNotFloat, {{1, 2}, {3, 0, 0}, {}}},
                     {"[1, \"a\", [2]]", kNotArray, {{1}, {}, {}}},
                     {"[1, [], 2]", kEmpty, {{1}, {}, {}}},
                     {"[null]", kInvalid, {{}}}});
  }
}

TEST(FloatGroups, SingleGroup) {
  expectGroupRows(true, {{"[1, 2]", kNoThrow, {{1, 2}}},
                         {"[[1, 2]]", kNoThrow, {{1, 2}}},
                         {"[[]]", kEmpty, {{}}},  // unlike the per-number form
                         // A wrapped list is read by the flat reader.
                         {"[[1, \"a\", 2]]", kNotFloat, {{1, 0, 0}}}});
}

TEST(FloatGroups, GroupPerNumber) {
  expectGroupRows(false, {{"[1, 2]", kNoThrow, {{1}, {2}}},
                          {"[[1, 2]]", kNoThrow, {{1}, {2}}},
                          {"[[]]", kNoThrow, {}},
                          // All groups exist before reading: the failing one
                          // holds 0, the later ones are empty.
                          {"[[1, \"a\", 2]]", kNotFloat, {{1}, {0}, {}}},
                          {"[[[1], 2]]", kNotFloat, {{0}, {}}}});
}

void expectBoolRows(unsigned int count, const std::vector<Row<Bools>>& rows) {
  SCOPED_TRACE("count " + std::to_string(count));
  const auto read = [count](const std::string& text, Bools& out) {
    extractVectorBoolsFromKRValue(parse(text), count, "flags", out);
  };
  expectRows<Bools>(read, {true, false, true, false, true}, rows);
}

TEST(BoolList, RepeatsOneBoolSkipsUnusableElementsAndNeverFailsInsideAnArray) {
  expectBoolRows(
      3, {{"true", kNoThrow, {true, true, true}},
          // Inside an array `count` plays no part and unusable elements are skipped.
          {"[true, null, \"x\", false]", kNoThrow, {true, false}},
          {"[]", kNoThrow, {}},
          {"null", "flags : Expected a bool or vector of bool but found an invalid KRValue", {}},
          // "found an invalid" though the value is valid.
          {"\"true\"",
           "flags : Expected a bool, int, float or array but found an invalid KRValue",
           {}}});
  expectBoolRows(0, {{"true", kNoThrow, {}}});
  // Numbers convert as non-zero.
  expectBoolRows(2, {{"0", kNoThrow, {false, false}},
                     {"0.5", kNoThrow, {true, true}},
                     {"[1, 0, 2.5, [true], [], true]", kNoThrow, {true, false, true, true}}});
}

const std::string kMalformedEntry =
    "m KRValue is not valid. It should be an array of length 2 arrays, the first element "
    "being an std::string.\n";

void expectMapRows(bool skipSecondElement, const std::vector<Row<Map>>& rows) {
  SCOPED_TRACE(skipSecondElement ? "skipping element 1" : "value at 1");
  const auto read = [skipSecondElement](const std::string& text, Map& out) {
    extractKeyValueMapFromKRValue(parse(text), "m", skipSecondElement, out);
  };
  expectRows<Map>(read, {{"old", KRValue(0)}}, rows);
}

TEST(KeyValueMap, ValueMustBeAnArray) {
  for (const bool skip : {false, true}) {
    expectMapRows(skip, {{"null", "m KRValue is invalid", {}},
                         {"3", "m KRValue is not valid: it should be an array.", {}},
                         {"[]", kNoThrow, {}}});
  }
}

// A malformed entry ends the reader after the entries before it went in; the
// message speaks of length 2 arrays in both entry layouts.
TEST(KeyValueMap, MalformedEntryKeepsEarlierEntries) {
  const Map kept{{"a", KRValue(1)}};
  expectMapRows(false, {{"[[\"a\", 1], 5, [\"z\", 2]]", kMalformedEntry, kept},
                        {"[[\"a\", 1], [\"k\"]]", kMalformedEntry, kept},
                        {"[[\"a\", 1], [\"k\", null]]", kMalformedEntry, kept}});
  expectMapRows(true, {{"[[\"a\", 0, 1], [\"k\", 2]]", kMalformedEntry, kept},  // too short
                       {"[[\"a\", 0, 1], [3, 2, 1]]", kMalformedEntry, kept}});
}

TEST(KeyValueMap, FirstKeyWinsAndValueKindsAreKept) {
  expectMapRows(false, {{"[[\"k1\", 1], [\"k2\", 2], [\"k1\", 3]]",
                         kNoThrow,
                         {{"k1", KRValue(1)}, {"k2", KRValue(2)}}},
                        // Elements after the value are ignored. KRValue's == compares
                        // kinds: an int stays an int, a float a float.
                        {"[[\"i\", 1, \"extra\"], [\"f\", 1.0], [\"s\", \"x\"], [\"a\", [1, 2.5]], "
                         "[\"b\", false]]",
                         kNoThrow,
                         {{"i", KRValue(1)},
                          {"f", KRValue(1.0f)},
                          {"s", KRValue("x")},
                          {"a", KRValue::array(1, 2.5f)},
                          {"b", KRValue(false)}}}});
}

TEST(KeyValueMap, SkipSecondElementNeverLooksAtIt) {
  expectMapRows(true, {{"[[\"k1\", 0, 1]]", kNoThrow, {{"k1", KRValue(1)}}},
                       {"[[\"k1\", null, 1], [\"k2\", [[]], 2.5, 7]]",
                        kNoThrow,
                        {{"k1", KRValue(1)}, {"k2", KRValue(2.5f)}}},
                       {"[[\"k1\", 1]]", kMalformedEntry, {}}});
}

}  // namespace
