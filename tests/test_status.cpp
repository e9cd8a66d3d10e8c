// Sensor and status records: temperature status, diagnosis, touch,
// navigation and metrical data; their messages, the order of their checks and
// what the output holds after a failure.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include "test_support.h"

#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace KR {
// The record has no comparison of its own; the tables compare whole outputs.
bool operator==(const TemperatureStatus& a, const TemperatureStatus& b) {
  return a.level == b.level && a.names == b.names;
}
void PrintTo(const TemperatureStatus& s, std::ostream* out) {
  const std::vector<std::string> names(s.names.begin(), s.names.end());
  *out << "{" << s.level << ", " << printKRValue(KRValue(names)) << "}";
}
namespace Math {
void PrintTo(const MetricalData& d, std::ostream* out) {
  *out << "{\"" << d.label1 << "\", \"" << d.label2 << "\", " << d.transform << ", "
       << d.points.size() << " points, " << d.duration.count() << " ns}";
}
}  // namespace Math
}  // namespace KR

namespace {

using KR::KRValue;
using KR::TemperatureStatus;
using KR::Math::MetricalData;
using KR::Math::Position2D;
using KR::Math::Position3D;
using KR::Math::Transform;
using namespace KR::ValueUtils;
using KRTest::expectRows;
using Names = std::set<std::string>;

KRValue parse(const std::string& text) { return KR::parseKRValue(text); }

const std::string kInvalid = "KRMotion: arg KRValue is invalid.";
const std::string kEmpty = "KRMotion: arg KRValue is empty.";
const std::string kNotArray = "KRMotion: arg KRValue is not an array.";
const std::string kSize = "arg: Invalid KRValue size.";
const std::string kNotInt = "arg KRValue: Expected a int";

TEST(TemperatureStatusWriter, AppendsLevelAndSortedNames) {
  KRValue fresh;
  convertTemperatureStatusToKRValue({2, {"B", "A"}}, fresh);
  EXPECT_EQ(fresh, parse(R"([2, ["A", "B"]])"));
  KRValue none;
  convertTemperatureStatusToKRValue({2, {}}, none);
  EXPECT_EQ(none, parse("[2, []]"));  // an empty array, not an invalid value
  KRValue grown = parse("[true]");
  convertTemperatureStatusToKRValue({-1, {"X"}}, grown);
  EXPECT_EQ(grown, parse(R"([true, -1, ["X"]])"));
}

// Names accumulate over those already held; the level is written before the
// names, so a bad name leaves the level and the names before it.
TEST(TemperatureStatusReader, AccumulatesNamesAndChecksInOrder) {
  const auto read = [](const std::string& text, TemperatureStatus& s) {
    extractTemperatureStatusFromKRValue(parse(text), s, "arg");
  };
  const TemperatureStatus old{7, {"Z"}};
  expectRows<TemperatureStatus>(
      read, old,
      {{R"([1, ["A"]])", kNoThrow, {1, {"A", "Z"}}},
       {R"([1.9, ["B", "A", "B"], "more"])", kNoThrow, {1, {"A", "B", "Z"}}},
       {R"([1, "A"])", kNoThrow, {1, {"Z"}}},  // element 1 is not required to be an array
       {"null", kInvalid, old},
       {"[]", kEmpty, old},
       {"3", kNotArray, old},
       {"[1]", kSize, old},
       {R"(["x", ["A"]])", kNotInt, old},
       {R"([null, ["A"]])", "arg KRValue: Expected a int but found an invalid KRValue", old}});

  TemperatureStatus partial = old;
  EXPECT_NE(messageOf([&] {
              extractTemperatureStatusFromKRValue(parse(R"([3, ["A", 5, "B"]])"), partial, "arg");
            }),
            kNoThrow);
  EXPECT_EQ(partial, (TemperatureStatus{3, {"A", "Z"}}));
}

// Element 1 must be a non-empty array, checked before the level is read.
TEST(DiagnosisReader, ChecksNamesArrayBeforeLevel) {
  using Out = std::pair<int, Names>;
  const auto read = [](const std::string& text, Out& out) {
    extractDiagnosisFromKRValue(parse(text), out.first, out.second, "arg");
  };
  const Out old{7, {"Z"}};
  expectRows<Out>(read, old,
                  {{R"([1, ["A"], 9])", kNoThrow, {1, {"A", "Z"}}},
                   {"null", kInvalid, old},
                   {"[1]", kSize, old},
                   {R"([1, "A"])", kNotArray, old},
                   {R"(["x", "A"])", kNotArray, old},  // the level is not read yet
                   {R"(["x", []])", kEmpty, old},
                   {R"(["x", ["A"]])", kNotInt, old}});

  Out partial = old;
  EXPECT_NE(messageOf([&] {
              extractDiagnosisFromKRValue(parse(R"([3, ["A", [], "B"]])"), partial.first,
                                          partial.second, "arg");
            }),
            kNoThrow);
  EXPECT_EQ(partial, (Out{3, {"A", "Z"}}));
}

const std::string kTouch = "arg Your collection of Touch was invalid.";

// The map is cleared first and holds the entries before a bad one; the first
// entry of a name wins.
TEST(TouchReader, BoolVariant) {
  using Out = std::map<std::string, bool>;
  const auto read = [](const std::string& text, Out& out) {
    extractTouchFromKRValue(parse(text), "arg", out);
  };
  const Out a{{"A", true}};
  expectRows<Out>(read, {{"old", true}},
                  {{"[]", kNoThrow, {}},
                   {"null", kInvalid, {}},
                   // A valid value of size 0 is taken as empty before the shape check.
                   {R"("x")", kNoThrow, {}},
                   {R"([["N", true], ["N", false]])", kNoThrow, {{"N", true}}},
                   {R"([["N", false, "more"], ["M", true]])", kNoThrow,
                    {{"M", true}, {"N", false}}},
                   // The seven entry tests, each after a good entry.
                   {R"([["A", true], null])", kTouch, a},
                   {R"([["A", true], 5])", kTouch, a},
                   {R"([["A", true], ["B"]])", kTouch, a},
                   {R"([["A", true], [null, true]])", kTouch, a},
                   {R"([["A", true], [1, true]])", kTouch, a},
                   {R"([["A", true], ["B", null]])", kTouch, a},
                   {R"([["A", true], ["B", 1]])", kTouch, a}});
}

TEST(TouchReader, BoolAndIntVariant) {
  using Out = std::map<std::string, std::pair<bool, int>>;
  const auto read = [](const std::string& text, Out& out) {
    extractTouchFromKRValue(parse(text), "arg", out);
  };
  expectRows<Out>(read, {{"old", {true, 1}}},
                  {{"[]", kNoThrow, {}},
                   {R"([["N", true, [3]]])", kNoThrow, {{"N", {true, 3}}}},
                   {R"([["N", true, []]])", kNoThrow, {{"N", {true, 0}}}},
                   {R"([["N", true]])", kNoThrow, {{"N", {true, 0}}}},
                   {R"([["N", true, 7]])", kNoThrow, {{"N", {true, 0}}}},  // no array: size 0
                   {R"([["N", false, [4, 5]], ["N", true, [6]]])", kNoThrow, {{"N", {false, 4}}}},
                   {R"([["N", 1]])", kTouch, {}},
                   {R"([["A", true, [2]], ["B", 1, [3]]])", kTouch, {{"A", {true, 2}}}}});
}

// Positions of earlier entries are kept; an entry that fails adds none of its
// own. The size message has no blank after the name.
TEST(NavigationReader, AppendsPositionsOfEveryEntry) {
  using Out = std::vector<Position2D>;
  const auto read = [](const std::string& text, Out& out) {
    extractNavigationFromKRValue(parse(text), "nav", out);
  };
  const std::string size = "navYour collection of Navigation Position2D was invalid.";
  const Out first{Position2D(1, 2)};
  expectRows<Out>(
      read, {Position2D(9, 9)},
      {{R"([[0, 0, [1, 2]], ["a", null, [[3, 4], [5, 6.5]]]])", kNoThrow,
        {Position2D(1, 2), Position2D(3, 4), Position2D(5, 6.5f)}},
       {"null", "KRMotion: nav KRValue is invalid.", {}},
       {"[]", "KRMotion: nav KRValue is empty.", {}},
       {"[[0, 0]]", size, {}},
       {"[[0, 0, [1, 2]], [0, 0, [1, 2], 3]]", size, first},
       {"[[0, 0, [1, 2]], 5]", "KRMotion: nav KRValue is not an array.", first},
       {"[[0, 0, [1, 2]], [0, 0, [[3, 4], [5, \"y\"]]]]", "nav y: Expected a float", first},
       // The position list reader rejects an empty list.
       {"[[0, 0, [1, 2]], [0, 0, []]]", "KRMotion: nav KRValue is empty.", first}});
}

// An identity rotation moved by (x, y, z).
Transform moved(float x, float y, float z) {
  Transform t;
  t.r1_c4 = x;
  t.r2_c4 = y;
  t.r3_c4 = z;
  return t;
}

MetricalData metrical(const std::string& label1, const std::string& label2,
                      const Transform& transform, const std::vector<Position3D>& points,
                      long long nanoseconds) {
  MetricalData d;
  d.label1 = label1;
  d.label2 = label2;
  d.transform = transform;
  d.points = points;
  d.duration = boost::chrono::nanoseconds(nanoseconds);
  return d;
}

TEST(MetricalDataRecord, ComparesEveryField) {
  const MetricalData d = metrical("a", "b", moved(1, 2, 3), {Position3D(1, 2, 3)}, 5);
  EXPECT_EQ(d, metrical("a", "b", moved(1, 2, 3), {Position3D(1, 2, 3)}, 5));
  EXPECT_NE(d, metrical("x", "b", moved(1, 2, 3), {Position3D(1, 2, 3)}, 5));
  EXPECT_NE(d, metrical("a", "x", moved(1, 2, 3), {Position3D(1, 2, 3)}, 5));
  EXPECT_NE(d, metrical("a", "b", moved(1, 2, 4), {Position3D(1, 2, 3)}, 5));
  EXPECT_NE(d, metrical("a", "b", moved(1, 2, 3), {Position3D(1, 2, 4)}, 5));
  EXPECT_NE(d, metrical("a", "b", moved(1, 2, 3), {}, 5));
  EXPECT_NE(d, metrical("a", "b", moved(1, 2, 3), {Position3D(1, 2, 3)}, 6));
  EXPECT_FALSE(d != d);
}

// Every row reads into `old`. A shape failure leaves it untouched; a bad
// point leaves the labels replaced and the points before it, the transform
// and duration as they were; points and the transform are reported under
// "MetricalDataExtractor", the duration under the caller's name.
TEST(MetricalDataReader, ShapeThenLabelsPointsTransformDuration) {
  const auto read = [](const std::string& text, MetricalData& out) {
    extractMetricalDataFromKRValue(parse(text), "arg", out);
  };
  const MetricalData old = metrical("o1", "o2", moved(7, 8, 9), {Position3D(9, 9, 9)}, 5000);
  const std::string t16 = "[1, 0, 0, 0.5, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1]";
  const std::string t12 = "[1, 0, 0, 0.5, 0, 1, 0, 0, 0, 0, 1, 0]";
  const std::string pts = "[[1, 2, 3], [4.5, 5, 6]]";
  const std::string zeros16 = "[0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1]";
  Transform zero = moved(0, 0, 0);
  zero.r1_c1 = zero.r2_c2 = zero.r3_c3 = 0;
  const auto value = [](const std::string& a, const std::string& b, const std::string& points,
                        const std::string& transform, const std::string& duration) {
    return "[" + a + ", " + b + ", " + points + ", " + transform + ", " + duration + "]";
  };
  const std::string shape = "arg Wrong input MetricalData type format";
  const std::string point = "KRMotion: MetricalDataExtractor Expected an KRValue with 3 floats "
                            "for x, y, z.";
  const std::vector<Position3D> read2{Position3D(1, 2, 3), Position3D(4.5f, 5, 6)};
  const MetricalData labelsAndFirst = metrical("a", "b", old.transform, {Position3D(1, 2, 3)},
                                               old.duration.count());
  expectRows<MetricalData>(
      read, old,
      {{value("\"a\"", "\"b\"", pts, t16, "[2, 250]"), kNoThrow,
        metrical("a", "b", moved(0.5f, 0, 0), read2, 2000250000)},
       {value("\"a\"", "\"b\"", "[]", t16, "[0, 1]"), kNoThrow,
        metrical("a", "b", moved(0.5f, 0, 0), {}, 1000)},
       {"[]", kEmpty, old},
       {"\"a\"", kNotArray, old},
       {"[\"a\", \"b\", [], " + t16 + "]", shape, old},
       {value("\"a\"", "\"b\"", pts, t16, "[2, 250], 0"), shape, old},
       {value("1", "\"b\"", pts, t16, "[2, 250]"), shape, old},
       {value("\"a\"", "1", pts, t16, "[2, 250]"), shape, old},
       {value("\"a\"", "\"b\"", "\"p\"", t16, "[2, 250]"), shape, old},
       {value("\"a\"", "\"b\"", pts, "5", "[2, 250]"), shape, old},
       {value("\"a\"", "\"b\"", pts, t12, "[2, 250]"), shape, old},
       {value("\"a\"", "\"b\"", pts, t16, "2"), shape, old},
       {value("\"a\"", "\"b\"", pts, t16, "[2, 250, 0]"), shape, old},
       {value("\"a\"", "\"b\"", "[[1, 2, 3], [1, 2]]", t16, "[2, 250]"), point, labelsAndFirst},
       {value("\"a\"", "\"b\"", "[[1, 2, 3], [1, 2, \"z\"], [7, 8, 9]]", t16, "[2, 250]"),
        "MetricalDataExtractor z: Expected a float", labelsAndFirst},
       {value("\"a\"", "\"b\"", pts, t16, "[2, \"u\"]"), kNotInt,
        metrical("a", "b", moved(0.5f, 0, 0), read2, old.duration.count())},
       // A rejected transform is left as read; the duration is not reached.
       {value("\"a\"", "\"b\"", "[]", zeros16, "[2, 250]"),
        "KRMotion: MetricalDataExtractor Wrong Transform given.",
        metrical("a", "b", zero, {}, old.duration.count())}});

}

TEST(MetricalDataWriter, LayoutAndRoundTrip) {
  Transform turned = moved(1, 2, 3);  // a quarter turn about z
  turned.r1_c1 = 0;
  turned.r1_c2 = -1;
  turned.r2_c1 = 1;
  turned.r2_c2 = 0;
  const MetricalData d = metrical("cam", "base", turned,
                                  {Position3D(1, 2, 3), Position3D(-0.5f, 0, 4)}, 3141592000);
  KRValue value = parse("[1, 2, 3]");  // replaced, not appended to
  extractKRValueFromMetricalData(d, value);
  EXPECT_EQ(value, parse(R"(["cam", "base", [[1.0, 2.0, 3.0], [-0.5, 0.0, 4.0]],)"
                         R"( [0.0, -1.0, 0.0, 1.0, 1.0, 0.0, 0.0, 2.0, 0.0, 0.0, 1.0, 3.0,)"
                         R"(  0.0, 0.0, 0.0, 1.0], [3, 141592]])"));
  MetricalData back;
  extractMetricalDataFromKRValue(value, "arg", back);
  EXPECT_EQ(back, d);

  const MetricalData empty;  // no points still writes an array the reader takes
  extractKRValueFromMetricalData(empty, value);
  EXPECT_EQ(value[2], parse("[]"));
  MetricalData emptyBack = d;
  extractMetricalDataFromKRValue(value, "arg", emptyBack);
  EXPECT_EQ(emptyBack, empty);
}

}  // namespace
