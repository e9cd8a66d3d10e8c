// Parsing the text form against nlohmann::json::parse on the same text.
//
// The text is a list of 1,600,000 poses, "[[x, y, theta], ...]", about 50 MB,
// with each number in its shortest float form (as the text form prints it).
// Each iteration parses it once with parseKRValue and once with
// nlohmann::json::parse, timing each alone in CPU time of the thread (user
// and system, page faults included), so that other work on the machine
// weighs on neither; the counters give both rates and their ratio.
//
// A second benchmark times the failure on 50 MB of malformed text, "[,,,,...":
// the check fails at the first comma, before anything is allocated, so the
// size of the text does not matter.
//
// Run: build/release/bench/krvaluetext_bench
#include <kr/krvalue.h>
#include <kr/krvaluetext.h>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <time.h>

#include <random>
#include <stdexcept>
#include <string>

namespace {

constexpr int kPoses = 1600000;

// Poses of a robot on a large floor: metres and radians with their full float
// precision, as a robot's odometry would report them.
const std::string& posesText() {
  static const std::string text = [] {
    std::mt19937 rng(1639);
    std::uniform_real_distribution<float> metres(-2000.0f, 2000.0f);
    std::uniform_real_distribution<float> radians(-3.1415927f, 3.1415927f);
    KR::KRValue poses;
    poses.arraySetSize(kPoses);
    for (int i = 0; i < kPoses; ++i) {
      poses[i] = KR::KRValue::array(metres(rng), metres(rng), radians(rng));
    }
    return KR::printKRValue(poses);
  }();
  return text;
}

double threadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

void ParsePoses_OursVsJson(benchmark::State& state) {
  const std::string& text = posesText();
  double ours = 0.0;
  double json = 0.0;
  for (auto _ : state) {
    double start = threadSeconds();
    double parsed = 0.0;
    {
      const KR::KRValue value = KR::parseKRValue(text);
      benchmark::DoNotOptimize(value.getSize());
      parsed = threadSeconds() - start;  // the tree's destruction is not parsing
    }
    ours += parsed;
    start = threadSeconds();
    {
      const nlohmann::json value = nlohmann::json::parse(text);
      benchmark::DoNotOptimize(value.size());
      json += threadSeconds() - start;
    }
    state.SetIterationTime(parsed);
  }
  const double megabytes = static_cast<double>(text.size()) * 1e-6 *
                           static_cast<double>(state.iterations());
  state.counters["MB"] = static_cast<double>(text.size()) * 1e-6;
  state.counters["ours_MB_per_s"] = megabytes / ours;
  state.counters["json_MB_per_s"] = megabytes / json;
  state.counters["speedup"] = json / ours;
}

void ParseMalformed_FiftyMegabytesOfCommas(benchmark::State& state) {
  const std::string text = "[" + std::string(50000000, ',');
  for (auto _ : state) {
    try {
      benchmark::DoNotOptimize(KR::parseKRValue(text));
    } catch (const std::runtime_error& e) {
      benchmark::DoNotOptimize(e.what());
    }
  }
}

}  // namespace

BENCHMARK(ParseMalformed_FiftyMegabytesOfCommas)->Unit(benchmark::kMicrosecond);
BENCHMARK(ParsePoses_OursVsJson)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);

BENCHMARK_MAIN();
