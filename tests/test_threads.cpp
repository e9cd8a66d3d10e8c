// Readers, writers and warning-producing calls run from several threads at
// once on shared const inputs, with a counting log handler subscribed and
// another one subscribed and unsubscribed all along. Every thread must get
// exactly what the main thread got alone, every warning must reach the
// handler once, and the suite must run clean under ThreadSanitizer.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include <zu/log.h>

#include <gtest/gtest.h>

#include <atomic>
#include <bitset>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using KR::KRValue;
using namespace KR::Math;
using namespace KR::Math::Trajectory;
using namespace KR::ValueUtils;

constexpr int kThreads = 8;
constexpr int kRounds = 400;
constexpr int kRareEvery = 100;  // rounds between two runs of a rare check

const RationalSeconds kPeriod(boost::rational<int>(1, 100));
const Limits kLimits(2, 2);

KRValue parse(const std::string& text) { return KR::parseKRValue(text); }

// Results as text: anything with an operator<<, vectors and maps element by
// element, floats to nine digits so that a difference in any bit shows.
struct Text {
  std::ostringstream out;
  Text() { out.precision(9); }
  template <typename T>
  Text& operator<<(const T& x) {
    out << x << ' ';
    return *this;
  }
  template <typename A, typename B>
  Text& operator<<(const std::pair<A, B>& p) {
    return *this << p.first << p.second;
  }
  template <typename T>
  Text& operator<<(const std::vector<T>& v) {
    return all(v);
  }
  template <typename K, typename V>
  Text& operator<<(const std::map<K, V>& m) {
    return all(m);
  }
  template <typename Range>
  Text& all(const Range& range) {
    out << '{';
    for (const auto& x : range) *this << x;
    out << "} ";
    return *this;
  }
};

// Reads `value` under the name "r" into a fresh output and returns it.
template <typename Out>
Out read(void (*reader)(const KRValue&, const std::string&, Out&), const KRValue& value) {
  Out out{};
  reader(value, "r", out);
  return out;
}

template <typename In>
std::string write(void (*writer)(const In&, KRValue&), const In& in) {
  KRValue out;
  writer(in, out);
  return KR::printKRValue(out);
}

std::string sample(const KRTrajectoryPose2D& trajectory) {
  const double seconds = toSeconds(trajectory.duration());
  Text t;
  t << seconds;
  for (const double at : {0.0, 0.3, seconds / 2, seconds - 0.01}) t << trajectory.stateAt(at);
  return t.out.str();
}

// The shared inputs, made on the main thread and only read afterwards.
struct Inputs {
  const KRValue scalars = parse("[2.5, -2.9, 7, 2, [1, 63], [0, 2], null]");
  const KRValue lists = parse(R"([[1, 2.5, -3, 4], [[1, 2], [3]], ["a", "", "c"],
      [true, 0, 2.5, "skip", false], [["a", 1], ["b", [2, 3]], ["a", 9]]])");
  const KRValue records = parse(R"([[1, 2, 0.5], [1, 2, 0.5, 3], [[4, 5]], [1, 2, 3],
      [1, 2, 3, 0.1, 0.2, 0.3], [0, -1, 0, 1, 1, 0, 0, 2, 0, 0, 1, 3],
      [0, -1.003, 0, 1, 1.003, 0, 0, 2, 0, 0, 1.003, 3]])");  // the last one gets repaired
  const KRValue lists2 = parse(R"([[[1, 2, 3], [4, 5, 6]], [[1, 2], [3, 4]],
      [[1, 2, 3, 4], [5, 6, 7]], [[1, 2, 3], [4, 5, 6]],
      [[1, 2, 3, 4, 5, 6], [[6, 5, 4, 3, 2, 1], [0, 0, 0, 0, 0, 0]]],
      [[1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0], [0, -1, 0, 1, 1, 0, 0, 2, 0, 0, 1, 3]]])");
  const KRValue requests =
      parse(R"([[["A", "B"], "Safe"], [["C"], [0.5]], [["D", "E"], ["Immediate", "Custom"]]])");
  const KRValue sequences =
      parse(R"([["a", [1, 2.5], [true, false]], ["b", [], []], ["c", 3, true]])");
  const KRValue status = parse(R"([[2, ["B", "A"]], [["A", true], ["B", false, [4]]],
      [[0, 0, [[1, 2], [3, 4]]], ["x", "y", [5, 6]]], ["cam", "base", [[1, 2, 3], [-0.5, 0, 4]],
      [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1], [1, 500]]])");
  // An unknown interpolation type in the key and in one kept control point.
  const KRValue keys = parse(R"([[1.5, [7, -0.1, 0], [2, 0.2, 0.5]], [[0, [3, 0, 0], [3, 0, 0]],
      [1, [9, 0, 0], [1, 0, 0]], [2, [1, 0, 0], [3, 0, 0]]], [10, 20, 30]])");
  const KRValue config = parse(R"([["A", "1"], ["B", 2], ["C", null], ["D", 0.5]])");
  const KRValue path = parse(R"(["Composed", ["Line", [1, 0]], ["Circle", [0, 1], 1.5],
      ["Flat", [0, 1], 0.5, [1, 0], [1, 1], 0.5]])");
  const KRValue trajectory = parse(R"(["Composed", ["NonHolonomic", ["Line", [1, 0]], 2],
      ["Holonomic", ["Composed", ["Line", [1, 0]], ["Line", [0, 1]]], -0.5, 3]])");
  const KRValue failing = parse(R"([[["a", [1], [true]], ["a", [2], [false]]], null,
      ["Arc", [1, 2], 1], ["NonHolonomic", ["Line", [1, 0]], 0.5, 2.0],
      [2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2]])");
  const std::vector<Position2D> positions2D{{1, 2}, {-3, 0.25f}};
  const std::vector<Pose2DPosVelAcc> states{{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, {}};
  const std::vector<std::vector<float>> floatGroups{{1, 2}, {}, {3.5f}};
  const std::vector<Position3D> positions3D{{1, 2, 3}, {-1, 0, 0.5f}};
  const std::vector<KR::RestRequest> badRequests{{{}, {"A"}, {}}};  // a name without a mode
  TrajectoryPose2DBuilder sharedBuilder;                            // called by every thread
  Inputs() {
    extractTrajectoryPose2DBuilderFromKRValue(trajectory, "t", kPeriod, kLimits, kLimits, 1.0f,
                                              sharedBuilder);
  }
};

// A group of calls and the warnings one run of them logs; a rare check runs
// every kRareEvery rounds only (it prints a line on standard error each time).
struct Check {
  std::string what;
  int warnings;
  std::function<void(Text&)> run;
  bool rare = false;
};

std::string outcome(const Check& check) {
  Text t;
  try {
    check.run(t);
  } catch (const std::exception& e) {
    t << "unexpected exception:" << e.what();
  }
  return t.out.str();
}

// Calls that must throw, each with its exact message.
std::vector<std::pair<std::function<void()>, std::string>> failures(const Inputs& in) {
  const auto trajectory = [&in] {
    TrajectoryPose2DBuilder b;
    extractTrajectoryPose2DBuilderFromKRValue(in.failing[3], "r", kPeriod, kLimits, kLimits, 1, b);
  };
  return {
      {[&] { read(extractPose2DFromKRValue, in.records[2][0]); },
       "KRMotion: r Pose2D is not valid. It has to be [x, y, theta]."},
      {[&] { extractFloat(in.scalars[6], "r", "x"); },
       "r x: Expected a float but found an invalid KRValue"},
      {[&] { read<std::vector<float>>(extractVectorFloatsFromKRValue, in.lists[3]); },
       "r KRValue: Expected a float"},
      {[&] { read(extractVectorStringsFromKRValue, in.lists[3]); },
       "KRValue: expected a string value but found a bool value"},
      {[&] { read(extractTransformFromKRValue, in.failing[4]); },
       "KRMotion: r Wrong Transform given."},
      {[&] { read(extractVectorSupportSequenceFromKRValue, in.failing[0]); },
       "KRMotion: r At least two support sequences containt the same name."},
      {[&] { read(extractPath2DBuilderFromKRValue, in.failing[2]); },
       "r Unknown DirectPath2D type"},
      {trajectory, "rInvalid HolonomicTrajectoryPose2D KRValue"},
      {[&] { write(extractKRValueFromVectorRestRequest, in.badRequests); }, "map::at"},
      // An unusable entry whose name is not a string: the warning's text
      // cannot be made, so the call throws and logs nothing.
      {[&] {
         KRValue decoded;
         decodeMotionConfig(in.scalars[6], in.scalars[2], decoded);
       },
       "KRValue: expected a string value but found an int value"},
  };
}

std::string messageOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const std::exception& e) {
    return e.what();
  }
  return "<no exception>";
}

std::vector<Check> makeChecks(const Inputs& in) {
  using V6 = std::vector<std::vector<Position6D>>;
  using Keys = std::vector<std::pair<float, Interpolation::Key>>;
  return {
      {"scalars", 0,
       [&](Text& t) {
         const KRValue& s = in.scalars;
         std::bitset<6> mask;
         FRAME frame = FRAME_TORSO;
         checkArrayFromKRValue(s, "r");
         extractAxisMaskFromKRValue(s[2], "r", mask);
         extractFrameFromKRValue(s[3], "r", frame);
         t << extractFloat(s[0], "r", "f") << extractIntFromKRValue(s[1], "r", "i") << mask << frame
           << read(extractVectorAxisMaskFromKRValue, s[4])
           << read(extractVectorFrameFromKRValue, s[5]);
       }},
      {"lists", 0,
       [&](Text& t) {
         std::vector<std::vector<float>> groups;
         std::vector<bool> bools;
         std::map<std::string, KRValue> map;
         extractVectorFloatsFromKRValue(in.lists[1], "r", false, groups);
         extractVectorBoolsFromKRValue(in.lists[3], 3, "r", bools);
         extractKeyValueMapFromKRValue(in.lists[4], "r", false, map);
         t << read<std::vector<float>>(extractVectorFloatsFromKRValue, in.lists[0]) << groups
           << read(extractVectorStringsFromKRValue, in.lists[2]) << bools << map;
       }},
      {"records", 0,
       [&](Text& t) {
         const KRValue& r = in.records;
         t << read(extractPose2DFromKRValue, r[0]) << read(extractPose2DAndTimeFromKRValue, r[1])
           << read(extractPosition2DFromKRValue, r[2]) << read(extractPosition3DFromKRValue, r[3])
           << read(extractPosition6DFromKRValue, r[4]) << read(extractTransformFromKRValue, r[5]);
       }},
      {"repaired transform", 0,
       [&](Text& t) { t << read(extractTransformFromKRValue, in.records[6]); }, true},
      {"record lists", 0,
       [&](Text& t) {
         const KRValue& r = in.lists2;
         V6 groups;
         extractVectorPosition6DFromKRValue(r[4], "r", false, groups);
         t << read(extractVectorPose2DFromKRValue, r[0])
           << read(extractVectorPosition2DFromKRValue, r[1])
           << read(extractVectorPose2DAndTimeFromKRValue, r[2])
           << read<std::vector<Position3D>>(extractVectorPosition3DFromKRValue, r[3]) << groups
           << read<std::vector<Transform>>(extractVectorTransformFromKRValue, r[5]);
       }},
      {"writers", 0,
       [&](Text& t) {
         t << write(extractKRValueFromVectorPosition2D, in.positions2D)
           << write(extractKRValueFromPose2D, in.states[0].velocity)
           << write(extractKRValueFromVectorPose2DPosVelAcc, in.states)
           << write(createKRValueFromVectorVectorFloat, in.floatGroups)
           << write(createKRValueFromVectorPosition3D, in.positions3D);
       }},
      {"rest requests and support sequences", 0,
       [&](Text& t) {
         t << write(extractKRValueFromVectorRestRequest,
                    read(extractVectorRestRequestFromKRValue, in.requests));
         for (const auto& s : read(extractVectorSupportSequenceFromKRValue, in.sequences)) {
           t << s.name << s.values << s.flags;
         }
       }},
      {"status", 0,
       [&](Text& t) {
         const KRValue& s = in.status;
         KR::TemperatureStatus temperature;
         int level = 0;
         std::set<std::string> names;
         KRValue seconds, micros;
         extractTemperatureStatusFromKRValue(s[0], temperature, "r");
         extractDiagnosisFromKRValue(s[0], level, names, "r");
         convertDurationToKRValue(extractDuration(s[3][4][0], s[3][4][1], "r") * 3, seconds,
                                  micros);
         t << temperature.level << level;
         t.all(temperature.names).all(names)
             << read<std::map<std::string, bool>>(extractTouchFromKRValue, s[1])
             << read<std::map<std::string, std::pair<bool, int>>>(extractTouchFromKRValue, s[1])
             << read(extractNavigationFromKRValue, s[2])
             << write(extractKRValueFromMetricalData, read(extractMetricalDataFromKRValue, s[3]))
             << seconds << micros;
       }},
      {"keys", 2,
       [&](Text& t) {
         Keys full, bare;
         t << read(extractKeyFromKRValue, in.keys[0])
           << extractVectorOfGenericControlPoints({1, 2, 3}, in.keys[1], "r", 1.5f, full)
           << extractVectorOfGenericControlPoints({0.5f, 1, 1.5f}, in.keys[2], "r", 0, bare) << full
           << bare;
       }},
      {"motion config and clipping", 3,
       [&](Text& t) {
         KRValue decoded;
         for (int i = 0; i < static_cast<int>(in.config.getSize()); ++i) {
           decodeMotionConfig(in.config[i][1], in.config[i][0], decoded);
         }
         float clipped = 5;
         clipAndWarn(0, 1, clipped, "arm", "speed");
         t << decoded << clipped << extractFloatAndClip(in.scalars[0], -1, 1, "arm", "accel")
           << extractFloatAndClip(in.scalars[0], 0, 3, "arm", "accel");
       }},
      {"paths", 0,
       [&](Text& t) {
         NonHolonomicTrajectoryFactory factory(kLimits, kLimits, kPeriod, 1.0f);
         extractPath2DIntoTrajectoryFactory(in.path, "r", factory);
         const std::unique_ptr<KRPath2D> path(
             read(extractPath2DBuilderFromKRValue, in.path)(Pose2D(1, 2, 0.3f)));
         const std::unique_ptr<KRDirectPath2D> arc(
             read(extractDirectPath2DBuilderFromKRValue, in.path[2])(Pose2D()));
         const std::unique_ptr<KRTrajectoryPose2D> followed(
             factory.getTrajectoryBuilder(RationalSeconds(0))(Pose2DPosVelAcc()));
         t << path->length() << path->endPose() << path->poseAt(1.7f) << arc->endPose()
           << sample(*followed);
       }},
      {"trajectories", 0,
       [&](Text& t) {
         TrajectoryPose2DBuilder builder;
         extractTrajectoryPose2DBuilderFromKRValue(in.trajectory, "t", kPeriod, kLimits, kLimits,
                                                   1.0f, builder);
         const Pose2DPosVelAcc start({0.5f, -1, 0.2f}, {}, {});
         const std::unique_ptr<KRTrajectoryPose2D> own(builder(start));
         const std::unique_ptr<KRTrajectoryPose2D> shared(in.sharedBuilder(start));
         t << sample(*own) << sample(*shared);
       }},
      {"failures", 0,
       [&](Text& t) {
         for (const auto& f : failures(in)) t << messageOf(f.first);
       }},
  };
}

// Counts the library's warnings and keeps the set of their texts.
struct WarningCounter {
  std::atomic<long> warnings{0}, others{0};
  std::mutex mutex;
  std::set<std::string> texts;

  void operator()(const zu::log::Record& r) {
    if (r.category != "KRValueUtils" || r.level != zu::log::warning) {
      ++others;
      return;
    }
    ++warnings;
    const std::lock_guard<std::mutex> lock(mutex);
    texts.insert(r.function + ": " + r.message);
  }
};

TEST(Threads, EveryThreadGetsTheMainThreadsResultsAndEveryWarningArrives) {
  zu::log::setCategoryLevel(zu::log::addCategory("KRValueUtils"), zu::log::info);
  WarningCounter counter;
  const zu::log::HandlerId id =
      zu::log::subscribe([&counter](const zu::log::Record& r) { counter(r); });
  const Inputs in;
  for (const auto& f : failures(in)) EXPECT_EQ(messageOf(f.first), f.second);

  // Reference results and warning counts, one check at a time on this thread.
  const std::vector<Check> checks = makeChecks(in);
  const long beforeReference = counter.warnings;
  std::vector<std::string> expected;
  long perThread = 0;
  for (const Check& check : checks) {
    const long before = counter.warnings;
    expected.push_back(outcome(check));
    EXPECT_EQ(counter.warnings - before, check.warnings) << check.what;
    EXPECT_EQ(expected.back().find("unexpected exception"), std::string::npos) << expected.back();
    perThread += (check.rare ? (kRounds + kRareEvery - 1) / kRareEvery : kRounds) * check.warnings;
  }
  const long referenceWarnings = counter.warnings - beforeReference;
  EXPECT_EQ(counter.texts,
            (std::set<std::string>{
                "extractKeyFromKRValue: angleInterpolationBezier received an unexpected "
                "interpolation type. Forced to BEZIER_AUTO.",
                "decodeMotionConfig: Config: C invalid value.",
                "clipAndWarn: KRMotion arm: speed value +5.00000 is clipped to: +1.00000 "
                "because it must be in range [+0.00000 <-> +1.00000]",
                "clipAndWarn: KRMotion arm: accel value +2.50000 is clipped to: +1.00000 "
                "because it must be in range [-1.00000 <-> +1.00000]"}));

  std::atomic<long> mismatches{0};
  std::mutex firstMutex;
  std::string firstMismatch;
  std::vector<std::thread> workers;
  for (std::size_t w = 0; w < kThreads; ++w) {
    workers.emplace_back([&, w] {
      for (int round = 0; round < kRounds; ++round) {
        for (std::size_t i = 0; i < checks.size(); ++i) {
          // Each thread starts at another check, so that different calls overlap.
          const std::size_t k = (i + w) % checks.size();
          if (checks[k].rare && round % kRareEvery != 0) continue;
          const std::string got = outcome(checks[k]);
          if (got != expected[k] && mismatches++ == 0) {
            const std::lock_guard<std::mutex> lock(firstMutex);
            firstMismatch = checks[k].what + ": " + got + "\ninstead of " + expected[k];
          }
        }
      }
    });
  }
  // Meanwhile another handler comes and goes.
  std::atomic<bool> stop{false};
  std::atomic<long> extraCalls{0}, extraCycles{0};
  std::thread churn([&] {
    do {
      const zu::log::HandlerId extra =
          zu::log::subscribe([&extraCalls](const zu::log::Record&) { ++extraCalls; });
      std::this_thread::yield();
      zu::log::unsubscribe(extra);
      ++extraCycles;
    } while (!stop);
  });
  for (std::thread& t : workers) t.join();
  stop = true;
  churn.join();
  zu::log::unsubscribe(id);

  EXPECT_EQ(mismatches, 0) << firstMismatch;
  EXPECT_EQ(counter.warnings, beforeReference + referenceWarnings + kThreads * perThread);
  EXPECT_EQ(counter.others, 0);
  EXPECT_EQ(counter.texts.size(), 4u);
  EXPECT_GT(extraCycles, 0);
  // At most one extra handler is subscribed at a time and a record reaches
  // each subscription at most once.
  EXPECT_LE(extraCalls, kThreads * perThread);
}

}  // namespace
