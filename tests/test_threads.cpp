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
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using KR::KRValue;
using namespace KR::Math;
using namespace KR::Math::Trajectory;
using namespace KR::ValueUtils;
using Floats = std::vector<float>;

constexpr int kThreads = 8;
constexpr int kRounds = 400;

const RationalSeconds kPeriod(boost::rational<int>(1, 100));
const Limits kLimits(2, 2);

KRValue parse(const std::string& text) { return KR::parseKRValue(text); }

// Results as text: anything with an operator<<, pairs and containers
// element by element, floats to nine digits so that a difference in any bit
// shows.
struct Text {
  std::ostringstream out;
  Text() { out.precision(9); }
  template <typename T>
  Text& operator<<(const T& x) {
    out << x << ' ';
    return *this;
  }
  Text& operator<<(const std::string& s) { return *this << s.c_str(); }  // whole, not by char
  template <typename A, typename B>
  Text& operator<<(const std::pair<A, B>& p) {
    return *this << p.first << p.second;
  }
  template <template <typename...> class Container, typename... A>
  Text& operator<<(const Container<A...>& c) {
    out << '{';
    for (const auto& x : c) *this << x;
    out << "} ";
    return *this;
  }
};

template <typename... T>
std::string str(const T&... x) {
  Text t;
  (t << ... << x);
  return t.out.str();
}

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

TrajectoryPose2DBuilder trajectoryBuilder(const KRValue& value) {
  TrajectoryPose2DBuilder builder;
  extractTrajectoryPose2DBuilderFromKRValue(value, "r", kPeriod, kLimits, kLimits, 1, builder);
  return builder;
}

// Takes ownership of a trajectory; its duration and a few states along it.
std::string sample(KRTrajectoryPose2D* made) {
  const std::unique_ptr<KRTrajectoryPose2D> t(made);
  const double end = toSeconds(t->duration());
  return str(end, t->stateAt(0), t->stateAt(0.3), t->stateAt(end / 2), t->stateAt(end - 0.01));
}

// Throws, so that the check's result shows it, unless `call` throws exactly
// `message`.
void throws(const std::string& message, const std::function<void()>& call) {
  std::string got = "<no exception>";
  try {
    call();
  } catch (const std::exception& e) {
    got = e.what();
  }
  if (got != message) throw std::runtime_error(got + "\ninstead of " + message);
}

// A group of calls on inputs made on the main thread, and the warnings one
// run of it logs. A group marked once runs once per thread only (it prints a
// line on standard error each time).
struct Check {
  std::string what;
  int warnings;
  std::function<std::string()> run;
  bool once = false;
};

std::string outcome(const Check& check) {
  try {
    return check.run();
  } catch (const std::exception& e) {
    return "unexpected exception: " + std::string(e.what());
  }
}

// Each group also makes calls of its family fail, each with its exact message.
std::vector<Check> makeChecks() {
  return {
      {"scalars, lists and maps", 0,
       [v = parse(
            R"([2.5, -2.9, 7, 2, [1, 63], [0, 2], [1, 2.5, -3, 4], [[1, 2], [3]], ["a", "", "c"],
           [true, 0, 2.5, "skip", false], [["a", 1], ["b", [2, 3]], ["a", 9]], null])")] {
         std::vector<Floats> groups;
         std::vector<bool> bools;
         std::map<std::string, KRValue> map;
         checkArrayFromKRValue(v, "r");
         extractVectorFloatsFromKRValue(v[7], "r", false, groups);
         extractVectorBoolsFromKRValue(v[9], 3, "r", bools);
         extractKeyValueMapFromKRValue(v[10], "r", false, map);
         throws("r x: Expected a float but found an invalid KRValue",
                [&] { extractFloat(v[11], "r", "x"); });
         throws("r KRValue: Expected a float",
                [&] { read<Floats>(extractVectorFloatsFromKRValue, v[9]); });
         throws("KRValue: expected a string value but found a bool value",
                [&] { read(extractVectorStringsFromKRValue, v[9]); });
         return str(extractFloat(v[0], "r", "f"), extractIntFromKRValue(v[1], "r", "i"),
                    read(extractAxisMaskFromKRValue, v[2]), read(extractFrameFromKRValue, v[3]),
                    read(extractVectorAxisMaskFromKRValue, v[4]),
                    read(extractVectorFrameFromKRValue, v[5]),
                    read<Floats>(extractVectorFloatsFromKRValue, v[6]),
                    write(createKRValueFromVectorVectorFloat, groups),
                    read(extractVectorStringsFromKRValue, v[8]), bools, map);
       }},
      // Most list readers' results are shown through the matching writer.
      {"geometry records, lists and writers", 0,
       [v = parse(R"([[1, 2, 0.5], [1, 2, 0.5, 3], [[4, 5]], [1, 2, 3], [1, 2, 3, 0.1, 0.2, 0.3],
           [[1, 2, 3], [4, 5, 6]], [[1, 2], [-3, 0.25]], [[1, 2, 3, 4], [5, 6, 7]],
           [[1, 2, 3], [-1, 0, 0.5]], [[1, 2, 3, 4, 5, 6], [[6, 5, 4, 3, 2, 1], [0, 0, 0, 0, 0, 0]]],
           [[1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0], [0, -1, 0, 1, 1, 0, 0, 2, 0, 0, 1, 3]]])"),
        states = std::vector<Pose2DPosVelAcc>{{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, {}}] {
         std::vector<std::vector<Position6D>> groups;
         extractVectorPosition6DFromKRValue(v[9], "r", false, groups);
         throws("KRMotion: r Pose2D is not valid. It has to be [x, y, theta].",
                [&] { read(extractPose2DFromKRValue, v[2][0]); });
         return str(
             write(extractKRValueFromPose2D, read(extractPose2DFromKRValue, v[0])),
             read(extractPose2DAndTimeFromKRValue, v[1]), read(extractPosition2DFromKRValue, v[2]),
             read(extractPosition3DFromKRValue, v[3]), read(extractPosition6DFromKRValue, v[4]),
             read(extractTransformFromKRValue, v[10][1]),
             read(extractVectorPose2DFromKRValue, v[5]),
             write(extractKRValueFromVectorPosition2D,
                   read(extractVectorPosition2DFromKRValue, v[6])),
             read(extractVectorPose2DAndTimeFromKRValue, v[7]),
             write(createKRValueFromVectorPosition3D,
                   read<std::vector<Position3D>>(extractVectorPosition3DFromKRValue, v[8])),
             groups, read<std::vector<Transform>>(extractVectorTransformFromKRValue, v[10]),
             write(extractKRValueFromVectorPose2DPosVelAcc, states));
       }},
      {"repaired and wrong transforms", 0,
       [v = parse(R"([[0, -1.003, 0, 1, 1.003, 0, 0, 2, 0, 0, 1.003, 3],
           [2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2]])")] {
         throws("KRMotion: r Wrong Transform given.",
                [&] { read(extractTransformFromKRValue, v[1]); });
         return str(read(extractTransformFromKRValue, v[0]));
       },
       true},
      {"rest requests, support sequences and status records", 0,
       [v = parse(R"([[[["A", "B"], "Safe"], [["C"], [0.5]], [["D", "E"], ["Immediate", "Custom"]]],
           [["a", [1, 2.5], [true, false]], ["b", [], []], ["c", 3, true]], [2, ["B", "A"]],
           [["A", true], ["B", false, [4]]], [[0, 0, [[1, 2], [3, 4]]], ["x", "y", [5, 6]]],
           ["cam", "base", [[1, 2, 3], [-0.5, 0, 4]],
            [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1], [1, 500]],
           [["a", [1], [true]], ["a", [2], [false]]]])")] {
         Text t;
         for (const auto& s : read(extractVectorSupportSequenceFromKRValue, v[1])) {
           t << s.name << s.values << s.flags;
         }
         KR::TemperatureStatus temperature;
         int level = 0;
         std::set<std::string> names;
         KRValue seconds, micros;
         extractTemperatureStatusFromKRValue(v[2], temperature, "r");
         extractDiagnosisFromKRValue(v[2], level, names, "r");
         convertDurationToKRValue(extractDuration(v[5][4][0], v[5][4][1], "r") * 3, seconds,
                                  micros);
         throws("KRMotion: r At least two support sequences containt the same name.",
                [&] { read(extractVectorSupportSequenceFromKRValue, v[6]); });
         throws("map::at", [] {  // a name without a mode
           write(extractKRValueFromVectorRestRequest,
                 std::vector<KR::RestRequest>{{{}, {"A"}, {}}});
         });
         t << write(extractKRValueFromVectorRestRequest,
                    read(extractVectorRestRequestFromKRValue, v[0]))
           << temperature.level << temperature.names << level << names
           << read<std::map<std::string, bool>>(extractTouchFromKRValue, v[3])
           << read<std::map<std::string, std::pair<bool, int>>>(extractTouchFromKRValue, v[3])
           << read(extractNavigationFromKRValue, v[4])
           << write(extractKRValueFromMetricalData, read(extractMetricalDataFromKRValue, v[5]))
           << seconds << micros;
         return t.out.str();
       }},
      // An unknown interpolation type in the key and in one kept control point,
      // an invalid config value, and two clipped values. A config entry whose
      // name is not a string cannot make its warning's text: it throws and
      // logs nothing.
      {"keys, motion config and clipping", 5,
       [v = parse(R"([[1.5, [7, -0.1, 0], [2, 0.2, 0.5]], [[0, [3, 0, 0], [3, 0, 0]],
           [1, [9, 0, 0], [1, 0, 0]], [2, [1, 0, 0], [3, 0, 0]]], [10, 20, 30], 2.5,
           [["A", "1"], ["B", 2], ["C", null], ["D", 0.5]]])")] {
         std::vector<std::pair<float, Interpolation::Key>> full, bare;
         KRValue decoded;
         for (int i = 0; i < 4; ++i) decodeMotionConfig(v[4][i][1], v[4][i][0], decoded);
         throws("KRValue: expected a string value but found an int value",
                [&] { decodeMotionConfig(v[4][2][1], v[2][0], decoded); });
         float clipped = 5;
         clipAndWarn(0, 1, clipped, "arm", "speed");
         return str(read(extractKeyFromKRValue, v[0]),
                    extractVectorOfGenericControlPoints({1, 2, 3}, v[1], "r", 1.5f, full),
                    extractVectorOfGenericControlPoints({0.5f, 1, 1.5f}, v[2], "r", 0, bare), full,
                    bare, decoded, clipped, extractFloatAndClip(v[3], -1, 1, "arm", "accel"),
                    extractFloatAndClip(v[3], 0, 3, "arm", "accel"));
       }},
      // `shared` is made here, on the main thread, and called by every thread.
      {"paths and trajectories", 0,
       [p = parse(R"([["Composed", ["Line", [1, 0]], ["Circle", [0, 1], 1.5],
           ["Flat", [0, 1], 0.5, [1, 0], [1, 1], 0.5]], ["Arc", [1, 2], 1]])"),
        t = parse(R"([["Composed", ["NonHolonomic", ["Line", [1, 0]], 2],
           ["Holonomic", ["Composed", ["Line", [1, 0]], ["Line", [0, 1]]], -0.5, 3]],
           ["NonHolonomic", ["Line", [1, 0]], 0.5, 2.0]])"),
        shared = trajectoryBuilder(parse(R"(["Holonomic", ["Line", [2, 1]], 1, 2])"))] {
         NonHolonomicTrajectoryFactory factory(kLimits, kLimits, kPeriod, 1.0f);
         extractPath2DIntoTrajectoryFactory(p[0], "r", factory);
         throws("r Unknown DirectPath2D type",
                [&] { read(extractPath2DBuilderFromKRValue, p[1]); });
         throws("rInvalid HolonomicTrajectoryPose2D KRValue", [&] { trajectoryBuilder(t[1]); });
         const std::unique_ptr<KRPath2D> path(
             read(extractPath2DBuilderFromKRValue, p[0])(Pose2D(1, 2, 0.3f)));
         const std::unique_ptr<KRDirectPath2D> arc(
             read(extractDirectPath2DBuilderFromKRValue, p[0][2])(Pose2D()));
         const Pose2DPosVelAcc start({0.5f, -1, 0.2f}, {}, {});
         return str(path->length(), path->endPose(), path->poseAt(1.7f), arc->endPose(),
                    sample(factory.getTrajectoryBuilder(RationalSeconds(0))(Pose2DPosVelAcc())),
                    sample(trajectoryBuilder(t[0])(start)), sample(shared(start)));
       }},
  };
}

TEST(Threads, EveryThreadGetsTheMainThreadsResultsAndEveryWarningArrives) {
  zu::log::setCategoryLevel(zu::log::addCategory("KRValueUtils"), zu::log::info);
  // Counts every record and keeps their texts.
  std::atomic<long> records{0};
  std::mutex mutex;
  std::set<std::string> texts;
  const zu::log::HandlerId id = zu::log::subscribe([&](const zu::log::Record& r) {
    ++records;
    const std::lock_guard<std::mutex> lock(mutex);
    texts.insert(r.category + " " + zu::log::levelName(r.level) + " " + r.function + ": " +
                 r.message);
  });

  // Reference results and warning counts, one check at a time on this thread.
  const std::vector<Check> checks = makeChecks();
  std::vector<std::string> expected;
  long total = 0;  // records of the whole test
  for (const Check& check : checks) {
    const long before = records;
    expected.push_back(outcome(check));
    EXPECT_EQ(records - before, check.warnings) << check.what;
    EXPECT_EQ(expected.back().find("unexpected exception"), std::string::npos) << expected.back();
    total += (1 + kThreads * (check.once ? 1 : kRounds)) * check.warnings;
  }

  std::vector<std::thread> workers;
  for (int w = 0; w < kThreads; ++w) {
    workers.emplace_back([&, w] {
      for (int round = 0; round < kRounds; ++round) {
        for (std::size_t i = 0; i < checks.size(); ++i) {
          // Each thread starts at another check, so that different calls overlap.
          const std::size_t k = (i + w) % checks.size();
          if (checks[k].once && round != kRounds / 2) continue;
          // Ends this thread at its first mismatch.
          ASSERT_EQ(outcome(checks[k]), expected[k]) << checks[k].what;
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

  EXPECT_EQ(records, total);
  EXPECT_EQ(texts,
            (std::set<std::string>{
                "KRValueUtils warning extractKeyFromKRValue: angleInterpolationBezier "
                "received an unexpected interpolation type. Forced to BEZIER_AUTO.",
                "KRValueUtils warning decodeMotionConfig: Config: C invalid value.",
                "KRValueUtils warning clipAndWarn: KRMotion arm: speed value +5.00000 is "
                "clipped to: +1.00000 because it must be in range [+0.00000 <-> +1.00000]",
                "KRValueUtils warning clipAndWarn: KRMotion arm: accel value +2.50000 is "
                "clipped to: +1.00000 because it must be in range [-1.00000 <-> +1.00000]"}));
  EXPECT_GT(extraCycles, 0);
  // At most one extra handler is subscribed at a time and a record reaches
  // each subscription at most once.
  EXPECT_LE(extraCalls, total);
}

}  // namespace
