// locateFailure: the path to the value whose check failed, for every reader
// family; the readers' messages and exception type unchanged; nothing kept
// between calls.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include "test_support.h"

#include <functional>
#include <map>
#include <random>
#include <stdexcept>

namespace {

using KR::KRValue;
using namespace KR::ValueUtils;

using Read = std::function<void(const KRValue&)>;

const KR::Math::RationalSeconds kPeriod(boost::rational<int>(1, 100));
const KR::Math::Trajectory::Limits kLimits(2, 2);

// A reader called as read(value, out) on a fresh output of type Out.
template <class Out, class F>
Read into(F read) {
  return [read](const KRValue& v) {
    Out out{};
    read(v, out);
  };
}

using Trajectory =
    boost::function<KR::Math::Trajectory::KRTrajectoryPose2D*(const KR::Math::Pose2DPosVelAcc&)>;

// The readers of every family, each called on a value with the name "arg".
const std::map<std::string, Read>& readers() {
  static const std::map<std::string, Read> all = {
      {"float", [](const KRValue& v) { extractFloat(v, "arg", "x"); }},
      {"axis-mask",
       into<std::bitset<6>>([](auto& v, auto& o) { extractAxisMaskFromKRValue(v, "arg", o); })},
      {"floats", into<std::vector<float>>(
                     [](auto& v, auto& o) { extractVectorFloatsFromKRValue(v, "arg", o); })},
      {"strings", into<std::vector<std::string>>(
                      [](auto& v, auto& o) { extractVectorStringsFromKRValue(v, "arg", o); })},
      {"bools", into<std::vector<bool>>(
                    [](auto& v, auto& o) { extractVectorBoolsFromKRValue(v, 2, "arg", o); })},
      {"map", into<std::map<std::string, KRValue>>(
                  [](auto& v, auto& o) { extractKeyValueMapFromKRValue(v, "arg", false, o); })},
      {"pose2d",
       into<KR::Math::Pose2D>([](auto& v, auto& o) { extractPose2DFromKRValue(v, "arg", o); })},
      {"pose2ds", into<std::vector<KR::Math::Pose2D>>(
                      [](auto& v, auto& o) { extractVectorPose2DFromKRValue(v, "arg", o); })},
      {"position6d-groups",
       into<std::vector<std::vector<KR::Math::Position6D>>>(
           [](auto& v, auto& o) { extractVectorPosition6DFromKRValue(v, "arg", false, o); })},
      {"transform", into<KR::Math::Transform>(
                        [](auto& v, auto& o) { extractTransformFromKRValue(v, "arg", o); })},
      {"key", into<KR::Math::Interpolation::Key>(
                  [](auto& v, auto& o) { extractKeyFromKRValue(v, "arg", o); })},
      {"path", into<KR::Math::Trajectory::Path2DBuilder>(
                   [](auto& v, auto& o) { extractPath2DBuilderFromKRValue(v, "arg", o); })},
      {"trajectory", into<Trajectory>([](auto& v, auto& o) {
         extractTrajectoryPose2DBuilderFromKRValue(v, "arg", kPeriod, kLimits, kLimits, 1.0f, o);
       })},
      {"composed-trajectory",
       into<KR::Math::Trajectory::TrajectoryPose2DComposedBuilder>([](auto& v, auto& o) {
         extractTrajectoryPose2DComposedBuilderFromKRValue(v, "arg", kPeriod, kLimits, kLimits,
                                                           1.0f, o);
       })},
      {"rest-requests", into<std::vector<KR::RestRequest>>([](auto& v, auto& o) {
         extractVectorRestRequestFromKRValue(v, "arg", o);
       })},
      {"touch", into<std::map<std::string, bool>>(
                    [](auto& v, auto& o) { extractTouchFromKRValue(v, "arg", o); })},
      {"navigation", into<std::vector<KR::Math::Position2D>>(
                         [](auto& v, auto& o) { extractNavigationFromKRValue(v, "arg", o); })},
      {"metrical-data", into<KR::Math::MetricalData>(
                            [](auto& v, auto& o) { extractMetricalDataFromKRValue(v, "arg", o); })},
      {"temperature-status", into<KR::TemperatureStatus>([](auto& v, auto& o) {
         extractTemperatureStatusFromKRValue(v, o, "arg");
       })},
      {"support-sequences", into<std::vector<KR::Math::SupportSequence>>([](auto& v, auto& o) {
         extractVectorSupportSequenceFromKRValue(v, "arg", o);
       })},
  };
  return all;
}

// The message a plain call throws: what locateFailure must report unchanged.
std::string plainMessage(const Read& read, const KRValue& value) {
  return messageOf([&] { read(value); });
}

struct Row {
  std::string reader, text, message, path;
};

TEST(LocateFailure, EachFamilyPointsAtTheValueItsCheckRejected) {
  const std::vector<Row> rows = {
      {"float", R"("a")", "arg x: Expected a float", ""},
      {"axis-mask", "64", "", ""},
      {"floats", R"([1, 2, "3"])", "arg KRValue: Expected a float", "[2]"},
      {"strings", R"(["a", 2])", "", "[1]"},  // the value's own conversion fails
      {"bools", R"("x")", "", ""},
      {"map", R"([["a", 1], ["b"]])", "", "[1]"},
      {"pose2d", "[1, 2]", "KRMotion: arg Pose2D is not valid. It has to be [x, y, theta].", ""},
      {"pose2ds", R"([[1, 2, 3], [4, "y", 6]])", "arg y: Expected a float", "[1][1]"},
      {"pose2ds", "[[1, 2, 3], [4, 5]]",
       "KRMotion: arg Pose2D is not valid. It has to be [x, y, theta].", "[1]"},
      {"position6d-groups", R"([[[1, 2, 3, 4, 5, 6]], [[1, 2, 3, 4, 5, null]]])",
       "arg wz: Expected a float but found an invalid KRValue", "[1][0][5]"},
      {"transform", "[1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1]", "", ""},
      {"key", R"([1, [1, 0, 0], [1, 0]])", "", "[2]"},
      {"key", R"([1, [1, 0, 0], ["x", 0, 0]])", "", "[2]"},
      {"path", R"(["Composed", ["Line", [1, 0]], ["Circle", [0, "r"], 1]])",
       "arg y: Expected a float", "[2][1][1]"},
      {"path", R"(["Composed", ["Line", [1, 0]], ["Spiral", [0, 1], 1]])", "", "[2][0]"},
      {"trajectory",
       R"(["Composed", ["Holonomic", ["Line", [1, 0]], 0, 1], ["NonHolonomic", ["Line", [1, false]], 1]])",
       "", "[2][1][1][1]"},
      {"composed-trajectory", R"(["NonHolonomic", ["Line", [1, 0]], 2])",
       "arg Wrong TrajectoryPose2DComposed format", "[0]"},
      {"rest-requests", R"([[["LArm"], "Safe"], [["RArm"], "Sleepy"]])", "", "[1][1]"},
      {"rest-requests", R"([[["LArm"], "Safe"], [["RArm"], [1.5, "x"]]])", "", "[1][1][1]"},
      {"touch", R"([["Head", true], ["Hand"]])", "", "[1]"},
      {"navigation", R"([[0, 0, [[1, 2]]], [0, 0, [[1, 2], [3, "y"]]]])", "", "[1][2][1][1]"},
      {"support-sequences", R"([["a", [], []], ["a", [], []]])", "", "[1][0]"},
      // The value's own string conversion fails on a name that is an int.
      {"temperature-status", R"([1, ["a", 2]])", "", "[1][1]"},
      {"metrical-data",
       R"(["a", "b", [[1, 2, 3]], [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, "z", 0, 0, 0, 1], [1, 2]])",
       "MetricalDataExtractor r3_c4: Expected a float", "[3][11]"},
      {"metrical-data",
       R"(["a", "b", [[1, 2, 3]], [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1], [1, "s"]])", "",
       "[4][1]"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.reader + " " + row.text);
    const Read& read = readers().at(row.reader);
    const KRValue value = KR::parseKRValue(row.text);
    const std::optional<Failure> failure = locateFailure(value, [&] { read(value); });
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->message, plainMessage(read, value));
    if (!row.message.empty()) {
      EXPECT_EQ(failure->message, row.message);
    }
    EXPECT_EQ(failure->pathText(), row.path);
  }
}

TEST(LocateFailure, SuccessOtherExceptionsAndNesting) {
  const KRValue poses = KR::parseKRValue("[[1, 2, 3], [4, 5, 6]]");
  const Read& read = readers().at("pose2ds");
  EXPECT_FALSE(locateFailure(poses, [&] { read(poses); }).has_value());
  // Not a reader's failure: passes through untouched.
  EXPECT_THROW(locateFailure(poses, [] { throw std::out_of_range("x"); }), std::out_of_range);
  // The value read need not be the root: a part of it is found inside.
  const KRValue bad = KR::parseKRValue(R"([[1, 2, 3], [[1, 2, 3], [4, "y", 6]]])");
  auto failure = locateFailure(bad, [&] { read(bad[1]); });
  ASSERT_TRUE(failure.has_value());
  EXPECT_EQ(failure->path, (std::vector<unsigned int>{1, 1, 1}));
  // A value outside the root leaves the path empty.
  failure = locateFailure(poses, [&] { read(bad[1]); });
  ASSERT_TRUE(failure.has_value());
  EXPECT_EQ(failure->path, std::vector<unsigned int>{});
  // Nested calls: the inner one sees its failure, the outer one its own.
  failure = locateFailure(bad, [&] {
    const auto inner = locateFailure(bad[1], [&] { read(bad[1]); });
    ASSERT_TRUE(inner.has_value());
    EXPECT_EQ(inner->pathText(), "[1][1]");
    read(bad);
  });
  ASSERT_TRUE(failure.has_value());
  EXPECT_EQ(failure->pathText(), "[1]");  // not a pose
  // Nothing survives a call: a later failure that no reader noted is not
  // blamed on the value an earlier one did.
  failure = locateFailure(bad, [] { throw std::runtime_error("not a reader"); });
  ASSERT_TRUE(failure.has_value());
  EXPECT_EQ(failure->message, "not a reader");
  EXPECT_EQ(failure->pathText(), "");
}

// Without locateFailure the readers throw exactly std::runtime_error, as
// before; messageOf fails the test for a subclass.
TEST(LocateFailure, ReadersStillThrowPlainRuntimeErrors) {
  for (const auto& [name, read] : readers()) {
    SCOPED_TRACE(name);
    EXPECT_NE(plainMessage(read, KRValue()), kNoThrow);
  }
}

// Valid values for each reader with numbers to spoil.
const std::map<std::string, std::vector<std::string>>& validValues() {
  static const std::map<std::string, std::vector<std::string>> all = {
      {"floats", {"[1, 2.5, -3, 4]"}},
      {"pose2ds", {"[[1, 2, 3], [4, 5, 6], [7, 8, 9, 10]]", "[1, 2, 3]"}},
      {"position6d-groups", {"[[[1, 2, 3, 4, 5, 6], [1, 2, 3, 4, 5, 6]], [[0, 0, 0, 0, 0, 0]]]"}},
      {"transform", {"[1, 0, 0, 5, 0, 1, 0, 6, 0, 0, 1, 7]"}},
      {"key", {"[1, [1, 0.5, 0], [1, 0.5, 0]]"}},
      {"path",
       {R"(["Composed", ["Line", [1, 0]], ["Circle", [0, 1], 1.5], ["Flat", [0, 1], 0, [1, 1], [2, 1], 0]])"}},
      {"trajectory",
       {R"(["Composed", ["Holonomic", ["Line", [1, 0]], 0.5, 2], ["NonHolonomic", ["Circle", [0, 1], 1], 3]])"}},
      {"rest-requests", {R"([[["LArm", "RArm"], [1.5, 2.5]], [["Head"], "Safe"]])"}},
      {"navigation", {"[[0, 0, [[1, 2], [3, 4]]], [1, 1, [[5, 6]]]]"}},
  };
  return all;
}

// Every path to a number in `value`.
void numberPaths(const KRValue& value, std::vector<unsigned int>& at,
                 std::vector<std::vector<unsigned int>>& out) {
  if (value.isInt() || value.isFloat()) {
    out.push_back(at);
  }
  for (unsigned int i = 0; value.isArray() && i < value.getSize(); ++i) {
    at.push_back(i);
    numberPaths(value[static_cast<int>(i)], at, out);
    at.pop_back();
  }
}

KRValue& elementAt(KRValue& value, const std::vector<unsigned int>& path) {
  KRValue* v = &value;
  for (const unsigned int i : path) {
    v = &(*v)[static_cast<int>(i)];
  }
  return *v;
}

bool isPrefix(const std::vector<unsigned int>& prefix, const std::vector<unsigned int>& path) {
  return prefix.size() <= path.size() && std::equal(prefix.begin(), prefix.end(), path.begin());
}

// One number of a valid value turned into a string (or another kind): the
// failure is located at that number, or at an array holding it where the
// reader's order of checks looks at the whole array first (a key's
// parameter, a rest request's angles, a mode's kind). The message is the
// plain call's.
TEST(LocateFailure, ASpoiledNumberIsFoundWhereItIs) {
  std::mt19937 rng(23);
  const KRValue spoilers[] = {KRValue("s"), KRValue(), KRValue(true), KRValue::array()};
  for (const auto& [name, texts] : validValues()) {
    const Read& read = readers().at(name);
    for (const std::string& text : texts) {
      const KRValue valid = KR::parseKRValue(text);
      ASSERT_EQ(plainMessage(read, valid), kNoThrow) << name << " " << text;
      std::vector<unsigned int> at;
      std::vector<std::vector<unsigned int>> paths;
      numberPaths(valid, at, paths);
      for (int round = 0; round < 40; ++round) {
        const std::vector<unsigned int>& spoilt = paths[rng() % paths.size()];
        KRValue value = valid;
        elementAt(value, spoilt) = spoilers[rng() % 4];
        const std::string message = plainMessage(read, value);
        if (message == kNoThrow) {
          continue;  // a number the reader does not read (a pose's time, say)
        }
        const auto failure = locateFailure(value, [&] { read(value); });
        ASSERT_TRUE(failure.has_value());
        SCOPED_TRACE(name + " " + KR::printKRValue(value) + ": " + failure->message);
        EXPECT_EQ(failure->message, message);
        EXPECT_TRUE(isPrefix(failure->path, spoilt)) << failure->pathText();
        EXPECT_GE(failure->path.size() + 1, spoilt.size()) << failure->pathText();
      }
    }
  }
}

}  // namespace
