// Readers, writers and warning-producing calls run from several threads at
// once on shared const inputs while a second log handler comes and goes.
// Every thread must get what the main thread got alone, every warning must
// reach the handler once, and the suite must run clean under ThreadSanitizer.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include <zu/log.h>

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using KR::KRValue;
using namespace KR::Math;
using namespace KR::Math::Trajectory;
using namespace KR::ValueUtils;

constexpr int kThreads = 4;
constexpr int kRounds = 100;
constexpr int kWarningsPerRound = 3;

const RationalSeconds kPeriod(boost::rational<int>(1, 100));
const Limits kLimits(2, 2);

const KRValue kInput = KR::parseKRValue(R"([[[1, 2], [3]], [["a", 1], ["b", [2, 3]], ["a", 9]],
    [0, -1.003, 0, 1, 1.003, 0, 0, 2, 0, 0, 1.003, 3],
    [[["A", "B"], "Safe"], [["C"], [0.5]]], [["a", [1, 2.5], [true, false]], ["b", [], []]],
    [["A", true], ["B", false, [4]]], [1.5, [7, -0.1, 0], [2, 0.2, 0.5]], null,
    ["Composed", ["Line", [1, 0]], ["Circle", [0, 1], 1.5]], [["x", "y"], "Fast"]])");

TrajectoryPose2DBuilder sharedBuilder() {
  TrajectoryPose2DBuilder builder;
  extractTrajectoryPose2DBuilderFromKRValue(KR::parseKRValue(R"(["Holonomic", ["Line", [2, 1]], 1, 2])"),
                                            "r", kPeriod, kLimits, kLimits, 1, builder);
  return builder;
}

// One call of every family on kInput, its results as text; logs
// kWarningsPerRound warnings. `shared` was made on the main thread.
std::string oneRound(const TrajectoryPose2DBuilder& shared) {
  const KRValue& v = kInput;
  std::ostringstream out;
  out.precision(9);
  std::vector<std::vector<float>> groups;
  extractVectorFloatsFromKRValue(v[0], "r", false, groups);
  KRValue written;
  createKRValueFromVectorVectorFloat(groups, written);
  std::map<std::string, KRValue> map;
  extractKeyValueMapFromKRValue(v[1], "r", false, map);
  Transform t;
  extractTransformFromKRValue(v[2], "r", t);
  std::vector<KR::RestRequest> requests;
  extractVectorRestRequestFromKRValue(v[3], "r", requests);
  KRValue rest;
  extractKRValueFromVectorRestRequest(requests, rest);
  std::vector<SupportSequence> sequences;
  extractVectorSupportSequenceFromKRValue(v[4], "r", sequences);
  std::map<std::string, std::pair<bool, int>> touch;
  extractTouchFromKRValue(v[5], "r", touch);
  Interpolation::Key key;
  extractKeyFromKRValue(v[6], "r", key);  // warns: unknown type 7
  KRValue decoded;
  decodeMotionConfig(v[7], KRValue("C"), decoded);  // warns: invalid value
  float clipped = 5;
  clipAndWarn(0, 1, clipped, "arm", "speed");  // warns
  Path2DBuilder pathBuilder;
  extractPath2DBuilderFromKRValue(v[8], "r", pathBuilder);
  const std::unique_ptr<KRPath2D> path(pathBuilder(Pose2D(1, 2, 0.3f)));
  const std::unique_ptr<KRTrajectoryPose2D> trajectory(shared(Pose2DPosVelAcc()));
  try {
    extractVectorRestRequestFromKRValue(v[9], "r", requests);
  } catch (const std::runtime_error& e) {
    out << e.what() << '\n';
  }
  out << KR::printKRValue(written) << map.size() << t.r1_c2 << KR::printKRValue(rest)
      << sequences[0].values.size() << touch["B"].second << key.firstParam.type << clipped
      << path->endPose() << trajectory->stateAt(0.5).position;
  return out.str();
}

TEST(Threads, EveryThreadGetsTheMainThreadsResultsAndEveryWarningArrives) {
  zu::log::setCategoryLevel(zu::log::addCategory("KRValueUtils"), zu::log::info);
  std::atomic<long> records{0};
  std::mutex mutex;
  std::set<std::string> texts;
  const zu::log::HandlerId id = zu::log::subscribe([&](const zu::log::Record& r) {
    ++records;
    const std::lock_guard<std::mutex> lock(mutex);
    texts.insert(r.function + ": " + r.message);
  });
  const TrajectoryPose2DBuilder shared = sharedBuilder();
  const std::string expected = oneRound(shared);
  ASSERT_EQ(records, kWarningsPerRound);

  std::vector<std::thread> workers;
  for (int w = 0; w < kThreads; ++w) {
    workers.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) {
        ASSERT_EQ(oneRound(shared), expected);  // ends this thread at its first mismatch
      }
    });
  }
  std::atomic<bool> stop{false};
  std::atomic<long> extraCalls{0};
  std::thread churn([&] {
    do {
      const zu::log::HandlerId extra =
          zu::log::subscribe([&extraCalls](const zu::log::Record&) { ++extraCalls; });
      std::this_thread::yield();
      zu::log::unsubscribe(extra);
    } while (!stop);
  });
  for (std::thread& t : workers) t.join();
  stop = true;
  churn.join();
  zu::log::unsubscribe(id);

  const long total = kWarningsPerRound * (1 + kThreads * kRounds);
  EXPECT_EQ(records, total);
  EXPECT_EQ(texts.size(), 3u);
  // A record reaches each subscription at most once.
  EXPECT_LE(extraCalls, total);
}

}  // namespace
