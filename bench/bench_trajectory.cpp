// Building and sampling a trajectory along a path of 1,000 pieces: straight
// runs, tangent arcs and corners, the mix a planner hands over.
//
// Run: build/release/bench/trajectory_bench --benchmark_repetitions=5
//   --benchmark_report_aggregates_only=true
// The counter per_piece is the time per piece of the path; duration_s is
// how long the motion built lasts. The argument is the blend tolerance in
// millimetres (0: the exact path).
#include <kr/math/pose2dposvelacc.h>
#include <kr/math/rationalseconds.h>
#include <kr/math/trajectory/limits.h>
#include <kr/math/trajectory/trajectoryfactory.h>
#include <kr/math/trajectory/trajectorypose2d.h>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

using namespace KR::Math;
using namespace KR::Math::Trajectory;

constexpr int kPieces = 1000;

// Every fourth piece turns a corner; between them straight runs and arcs
// meet without one.
void addPieces(TrajectoryFactory& factory) {
  for (int i = 0; i < kPieces; ++i) {
    switch (i % 4) {
      case 0: factory.addLine({0.5f, 0.0f}); break;
      case 1: factory.addCircle({0.0f, 0.8f}, 0.6f); break;
      case 2: factory.addLine({0.3f, 0.0f}); break;
      default: factory.addLine({0.2f, 0.2f}); break;
    }
  }
}

NonHolonomicTrajectoryFactory makeFactory(const benchmark::State& state) {
  NonHolonomicTrajectoryFactory factory(Limits(0.5f, 0.5f), Limits(1.0f, 1.0f),
                                        RationalSeconds(boost::rational<int>(1, 100)), 1.0f);
  factory.setBlendTolerance(static_cast<float>(state.range(0)) / 1000.0f);
  return factory;
}

void perPiece(benchmark::State& state) {
  state.counters["per_piece"] = benchmark::Counter(
      static_cast<double>(state.iterations()) * kPieces,
      benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// The pieces added, the builder made and called: all a caller does before
// the robot moves.
void BM_BuildTrajectory(benchmark::State& state) {
  double seconds = 0.0;
  for (auto _ : state) {
    NonHolonomicTrajectoryFactory factory = makeFactory(state);
    addPieces(factory);
    const std::unique_ptr<KRDirectTrajectoryPose2D> trajectory(
        factory.getTrajectoryBuilder(RationalSeconds(0))(Pose2DPosVelAcc()));
    seconds = toSeconds(trajectory->duration());
  }
  perPiece(state);
  state.counters["duration_s"] = seconds;  // of the motion built
}
BENCHMARK(BM_BuildTrajectory)->Arg(0)->Arg(10)->Unit(benchmark::kMillisecond);

// One state per piece, evenly spaced over the duration.
void BM_SampleTrajectory(benchmark::State& state) {
  NonHolonomicTrajectoryFactory factory = makeFactory(state);
  addPieces(factory);
  const std::unique_ptr<KRDirectTrajectoryPose2D> trajectory(
      factory.getTrajectoryBuilder(RationalSeconds(0))(Pose2DPosVelAcc()));
  const double step = toSeconds(trajectory->duration()) / kPieces;
  for (auto _ : state) {
    for (int i = 0; i < kPieces; ++i) {
      benchmark::DoNotOptimize(trajectory->stateAt(i * step));
    }
  }
  perPiece(state);
}
BENCHMARK(BM_SampleTrajectory)->Arg(0)->Arg(10)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
