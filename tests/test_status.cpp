// Sensor and status records: messages, order of checks, output after a failure.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include "test_support.h"

#include <map>
#include <ostream>
#include <set>
#include <utility>

namespace KR {
// The record has no comparison of its own; the tables compare whole outputs.
bool operator==(const TemperatureStatus& a, const TemperatureStatus& b) {
  return a.level == b.level && a.names == b.names;
}
void PrintTo(const TemperatureStatus& s, std::ostream* out) {
  const std::vector<std::string> names(s.names.begin(), s.names.end());
  *out << "{" << s.level << ", " << printKRValue(KRValue(names)) << "}";
}
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
const std::string kStringNotInt = "KRValue: expected a string value but found an int value";

TEST(TemperatureStatusWriter, AppendsLevelAndSortedNames) {
  KRValue none;
  convertTemperatureStatusToKRValue({2, {}}, none);
  EXPECT_EQ(none, parse("[2, []]"));  // an empty array, not an invalid value
  KRValue grown = parse("[true]");
  convertTemperatureStatusToKRValue({-1, {"X", "B", "A"}}, grown);
  EXPECT_EQ(grown, parse(R"([true, -1, ["A", "B", "X"]])"));
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
      {{R"([1.9, ["B", "A", "B"], "more"])", kNoThrow, {1, {"A", "B", "Z"}}},
       {R"([1, "A"])", kNoThrow, {1, {"Z"}}},  // element 1 is not required to be an array
       {"null", kInvalid, old},
       {"[1]", kSize, old},
       {R"(["x", ["A"]])", kNotInt, old},
       {R"([3, ["A", 5, "B"]])", kStringNotInt, {3, {"A", "Z"}}}});
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
                   {"[1]", kSize, old},
                   {R"(["x", "A"])", kNotArray, old},  // the level is not read yet
                   {R"(["x", ["A"]])", kNotInt, old},
                   {R"([3, ["A", 7, "B"]])", kStringNotInt, {3, {"A", "Z"}}}});
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
                   // Entry tests, each after a good entry.
                   {R"([["A", true], null])", kTouch, a},
                   {R"([["A", true], ["B", 1]])", kTouch, a}});
}

TEST(TouchReader, BoolAndIntVariant) {
  using Out = std::map<std::string, std::pair<bool, int>>;
  const auto read = [](const std::string& text, Out& out) {
    extractTouchFromKRValue(parse(text), "arg", out);
  };
  expectRows<Out>(read, {{"old", {true, 1}}},
                  {{R"([["N", true, []]])", kNoThrow, {{"N", {true, 0}}}},
                   {R"([["N", true]])", kNoThrow, {{"N", {true, 0}}}},
                   {R"([["N", true, 7]])", kNoThrow, {{"N", {true, 0}}}},  // no array: size 0
                   {R"([["N", false, [4, 5]], ["N", true, [6]]])", kNoThrow, {{"N", {false, 4}}}},
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
       {"[[0, 0, [1, 2]], [0, 0, [1, 2], 3]]", size, first},
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

// A shape failure leaves `old` untouched; a bad point leaves the labels
// replaced and the points before it. Points and the transform are reported
// under "MetricalDataExtractor", the duration under the caller's name.
TEST(MetricalDataReader, ShapeThenLabelsPointsTransformDuration) {
  const auto read = [](const std::string& text, MetricalData& out) {
    extractMetricalDataFromKRValue(parse(text), "arg", out);
  };
  const MetricalData old = metrical("o1", "o2", moved(7, 8, 9), {Position3D(9, 9, 9)}, 5000);
  // The good value with element i replaced by `e` ("" drops it).
  const auto with = [](std::size_t i, const std::string& e) {
    std::vector<std::string> v{"\"a\"", "\"b\"", "[[1, 2, 3], [4.5, 5, 6]]",
                               "[1, 0, 0, 0.5, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1]", "[2, 250]"};
    v[i] = e;
    std::string text = "[" + v[0];
    for (std::size_t k = 1; k < v.size(); ++k) text += v[k].empty() ? "" : ", " + v[k];
    return text + "]";
  };
  Transform zero = moved(0, 0, 0);
  zero.r1_c1 = zero.r2_c2 = zero.r3_c3 = 0;
  const std::string shape = "arg Wrong input MetricalData type format";
  const std::vector<Position3D> read2{Position3D(1, 2, 3), Position3D(4.5f, 5, 6)};
  const MetricalData labelsAndFirst = metrical("a", "b", old.transform, {Position3D(1, 2, 3)},
                                               old.duration.count());
  expectRows<MetricalData>(
      read, old,
      {{with(0, "\"a\""), kNoThrow, metrical("a", "b", moved(0.5f, 0, 0), read2, 2000250000)},
       {"[]", kEmpty, old},
       {with(4, ""), shape, old},
       {with(0, "1"), shape, old},
       {with(3, "[1, 0, 0, 0.5, 0, 1, 0, 0, 0, 0, 1, 0]"), shape, old},
       {with(2, "[[1, 2, 3], [1, 2]]"),
        "KRMotion: MetricalDataExtractor Expected an KRValue with 3 floats for x, y, z.",
        labelsAndFirst},
       {with(4, "[2, \"u\"]"), kNotInt,
        metrical("a", "b", moved(0.5f, 0, 0), read2, old.duration.count())},
       // A rejected transform is left as read; the duration is not reached.
       {with(3, "[0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1]"),
        "KRMotion: MetricalDataExtractor Wrong Transform given.",
        metrical("a", "b", zero, read2, old.duration.count())}});
}

TEST(MetricalDataWriter, LayoutAndRoundTrip) {
  Transform turned = moved(1, 2, 3);  // a quarter turn about z
  turned.r1_c1 = turned.r2_c2 = 0;
  turned.r1_c2 = -1;
  turned.r2_c1 = 1;
  const MetricalData d = metrical("cam", "base", turned,
                                  {Position3D(1, 2, 3), Position3D(-0.5f, 0, 4)}, 3141592000);
  KRValue value = parse("[1, 2, 3]");  // replaced, not appended to
  extractKRValueFromMetricalData(d, value);
  EXPECT_EQ(value, parse(R"(["cam", "base", [[1.0, 2.0, 3.0], [-0.5, 0.0, 4.0]],)"
                         R"( [0.0, -1.0, 0.0, 1.0, 1.0, 0.0, 0.0, 2.0, 0.0, 0.0, 1.0, 3.0,)"
                         R"(  0.0, 0.0, 0.0, 1.0], [3, 141592]])"));
}

}  // namespace
