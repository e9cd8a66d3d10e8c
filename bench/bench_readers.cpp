// Benchmarks of the readers and writers of libkrvalueutils.
//
// Every case is measured four ways on the same data, in the same binary:
//   Ours      the library's reader or writer, on a KR::KRValue tree;
//   Json      the same data held in nlohmann::json, converted the idiomatic
//             way (from_json / to_json and get<std::vector<T>>());
//   Raw       a loop over the same KR::KRValue tree with no shape checks,
//             float(v[i][k]) through a const reference: the floor for any
//             checked reader on this value type;
//   Memcpy    memcpy of the same floats: the physical floor.
//
// Global operator new and delete are replaced below so that heap allocations
// (calls and bytes) can be reported as counters.
//
// Run (one line): build/release/bench/krvalueutils_bench
//   --benchmark_repetitions=5 --benchmark_report_aggregates_only=true
#include <kr/krvalue.h>
#include <kr/krvalueutils.h>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

// ---------------------------------------------------------------------------
// Counting allocator. Every block carries a 16-byte header holding its
// requested size, so that the live bytes can be tracked exactly; 16 bytes keep
// the default new alignment. The benchmarks run on one thread, so plain
// counters suffice.

namespace {

struct HeapCounters {
  std::uint64_t calls = 0;       // operator new calls so far
  std::uint64_t liveBlocks = 0;  // blocks allocated and not freed
  std::uint64_t liveBytes = 0;   // requested bytes of the live blocks
};

HeapCounters gHeap;

constexpr std::size_t kHeader = 16;

void* countedAlloc(std::size_t n) {
  void* raw = std::malloc(n + kHeader);
  if (raw == nullptr) {
    return nullptr;
  }
  *static_cast<std::size_t*>(raw) = n;
  ++gHeap.calls;
  ++gHeap.liveBlocks;
  gHeap.liveBytes += n;
  return static_cast<char*>(raw) + kHeader;
}

void countedFree(void* p) noexcept {
  if (p == nullptr) {
    return;
  }
  void* raw = static_cast<char*>(p) - kHeader;
  --gHeap.liveBlocks;
  gHeap.liveBytes -= *static_cast<std::size_t*>(raw);
  std::free(raw);
}

void* countedNew(std::size_t n) {
  void* p = countedAlloc(n == 0 ? 1 : n);
  if (p == nullptr) {
    throw std::bad_alloc();
  }
  return p;
}

}  // namespace

void* operator new(std::size_t n) { return countedNew(n); }
void* operator new[](std::size_t n) { return countedNew(n); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
  return countedAlloc(n == 0 ? 1 : n);
}
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept {
  return countedAlloc(n == 0 ? 1 : n);
}
void operator delete(void* p) noexcept { countedFree(p); }
void operator delete[](void* p) noexcept { countedFree(p); }
void operator delete(void* p, std::size_t) noexcept { countedFree(p); }
void operator delete[](void* p, std::size_t) noexcept { countedFree(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { countedFree(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { countedFree(p); }

// ---------------------------------------------------------------------------
// nlohmann::json conversions of the records, written the idiomatic way: at()
// checks that the value is an array and the index in range, get<float>()
// checks that the element is a number.

namespace KR {
namespace Math {

void from_json(const nlohmann::json& j, Pose2D& p) {
  p.x = j.at(0).get<float>();
  p.y = j.at(1).get<float>();
  p.theta = j.at(2).get<float>();
}

void from_json(const nlohmann::json& j, Transform& t) {
  float* f = &t.r1_c1;  // Transform is twelve floats, row by row
  for (std::size_t i = 0; i < 12; ++i) {
    f[i] = j.at(i).get<float>();
  }
  // The library's check: finite entries, max |R^T R - I| <= 0.001 computed in
  // double, and a positive determinant.
  double r[3][3];
  for (int row = 0; row < 3; ++row) {
    for (int col = 0; col < 3; ++col) {
      const float v = f[row * 4 + col];
      if (!std::isfinite(v)) {
        throw std::runtime_error("Wrong Transform given.");
      }
      r[row][col] = static_cast<double>(v);
    }
  }
  for (int row = 0; row < 3; ++row) {
    if (!std::isfinite(f[row * 4 + 3])) {
      throw std::runtime_error("Wrong Transform given.");
    }
  }
  double error = 0.0;
  for (int a = 0; a < 3; ++a) {
    for (int b = 0; b < 3; ++b) {
      double dot = r[0][a] * r[0][b] + r[1][a] * r[1][b] + r[2][a] * r[2][b];
      error = std::fmax(error, std::fabs(dot - (a == b ? 1.0 : 0.0)));
    }
  }
  const double det = r[0][0] * (r[1][1] * r[2][2] - r[1][2] * r[2][1]) -
                     r[0][1] * (r[1][0] * r[2][2] - r[1][2] * r[2][0]) +
                     r[0][2] * (r[1][0] * r[2][1] - r[1][1] * r[2][0]);
  if (!(error <= 0.001) || !(det > 0.0)) {
    throw std::runtime_error("Wrong Transform given.");
  }
}

void to_json(nlohmann::json& j, const Pose2D& p) { j = nlohmann::json::array({p.x, p.y, p.theta}); }
void to_json(nlohmann::json& j, const Position2D& p) { j = nlohmann::json::array({p.x, p.y}); }
void to_json(nlohmann::json& j, const Position3D& p) {
  j = nlohmann::json::array({p.x, p.y, p.z});
}

}  // namespace Math
}  // namespace KR

namespace {

using nlohmann::json;
namespace VU = KR::ValueUtils;

constexpr int kPoses = 100000;
constexpr int kFloats = 100000;
constexpr int kTransforms = 10000;
constexpr int kPositions = 100000;

const std::string kName = "bench";

// ---------------------------------------------------------------------------
// The data, made once and shared by every case.

struct Data {
  std::vector<KR::Math::Pose2D> poses;
  std::vector<float> poseFloats;  // the poses' floats, contiguous
  KR::KRValue posesValue;
  json posesJson;

  std::vector<float> floats;
  KR::KRValue floatsValue;
  json floatsJson;

  std::vector<float> transformFloats;  // twelve per transform
  KR::KRValue transformsValue;
  json transformsJson;

  std::vector<KR::Math::Position3D> positions3D;
  std::vector<KR::Math::Position2D> positions2D;

  KR::KRValue onePoseValue;
  json onePoseJson;
  KR::KRValue badPoseValue;
  json badPoseJson;

  Data() {
    poses.reserve(kPoses);
    for (int i = 0; i < kPoses; ++i) {
      poses.emplace_back(0.001f * float(i), -0.002f * float(i), std::sin(float(i)));
    }
    poseFloats.resize(std::size_t(kPoses) * 3);
    std::memcpy(poseFloats.data(), poses.data(), poseFloats.size() * sizeof(float));
    posesValue.arraySetSize(kPoses);
    for (int i = 0; i < kPoses; ++i) {
      const KR::Math::Pose2D& pose = poses[static_cast<std::size_t>(i)];
      posesValue[i] = KR::KRValue::array(pose.x, pose.y, pose.theta);
    }
    posesJson = poses;

    floats.reserve(kFloats);
    for (int i = 0; i < kFloats; ++i) {
      floats.push_back(0.5f * float(i) - 7.0f);
    }
    floatsValue = KR::KRValue(floats);
    floatsJson = floats;

    // Rotations about a varying axis: valid transforms.
    transformsValue.arraySetSize(kTransforms);
    transformsJson = json::array();
    for (int i = 0; i < kTransforms; ++i) {
      const double a = 0.001 * i, b = 0.37 + 0.002 * i, c = -0.5 + 0.003 * i;
      const double ca = std::cos(a), sa = std::sin(a), cb = std::cos(b), sb = std::sin(b),
                   cc = std::cos(c), sc = std::sin(c);
      // R = Rz(a) * Ry(b) * Rx(c)
      const double r[3][3] = {
          {ca * cb, ca * sb * sc - sa * cc, ca * sb * cc + sa * sc},
          {sa * cb, sa * sb * sc + ca * cc, sa * sb * cc - ca * sc},
          {-sb, cb * sc, cb * cc},
      };
      std::vector<float> t;
      for (int row = 0; row < 3; ++row) {
        for (int col = 0; col < 3; ++col) {
          t.push_back(float(r[row][col]));
        }
        t.push_back(float(0.1 * (row + 1) * i));
      }
      transformFloats.insert(transformFloats.end(), t.begin(), t.end());
      transformsValue[i] = KR::KRValue(t);
      transformsJson.push_back(t);
    }

    for (int i = 0; i < kPositions; ++i) {
      positions3D.emplace_back(0.25f * float(i), -1.0f * float(i), 3.5f);
      positions2D.emplace_back(0.25f * float(i), -1.0f * float(i));
    }

    onePoseValue = KR::KRValue::array(1.0f, 2.0f, 0.5f);
    onePoseJson = json::array({1.0f, 2.0f, 0.5f});
    badPoseValue = KR::KRValue::array(1.0f, "a", 0.5f);
    badPoseJson = json::array({1.0f, "a", 0.5f});
  }
};

const Data& data() {
  static const Data d;
  return d;
}

// Reports the operator new calls made per iteration.
void reportAllocs(benchmark::State& state, std::uint64_t callsBefore) {
  state.counters["allocs_per_iter"] =
      double(gHeap.calls - callsBefore) / double(state.iterations());
}

// ---------------------------------------------------------------------------
// Read 100,000 Pose2D.

void ReadPoses_Ours(benchmark::State& state) {
  const Data& d = data();
  const std::uint64_t before = gHeap.calls;
  for (auto _ : state) {
    std::vector<KR::Math::Pose2D> out;
    VU::extractVectorPose2DFromKRValue(d.posesValue, kName, out);
    benchmark::DoNotOptimize(out.data());
  }
  reportAllocs(state, before);
}

void ReadPoses_Json(benchmark::State& state) {
  const Data& d = data();
  const std::uint64_t before = gHeap.calls;
  for (auto _ : state) {
    auto out = d.posesJson.get<std::vector<KR::Math::Pose2D>>();
    benchmark::DoNotOptimize(out.data());
  }
  reportAllocs(state, before);
}

void ReadPoses_Raw(benchmark::State& state) {
  const Data& d = data();
  const KR::KRValue& v = d.posesValue;
  const std::uint64_t before = gHeap.calls;
  for (auto _ : state) {
    const int n = int(v.getSize());
    std::vector<KR::Math::Pose2D> out(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
      const KR::KRValue& p = v[i];
      KR::Math::Pose2D& pose = out[static_cast<std::size_t>(i)];
      pose.x = float(p[0]);
      pose.y = float(p[1]);
      pose.theta = float(p[2]);
    }
    benchmark::DoNotOptimize(out.data());
  }
  reportAllocs(state, before);
}

void ReadPoses_Memcpy(benchmark::State& state) {
  const Data& d = data();
  for (auto _ : state) {
    std::vector<KR::Math::Pose2D> out(kPoses);
    std::memcpy(static_cast<void*>(out.data()), d.poseFloats.data(), d.poseFloats.size() * sizeof(float));
    benchmark::DoNotOptimize(out.data());
  }
}

// ---------------------------------------------------------------------------
// Read 100,000 floats.

void ReadFloats_Ours(benchmark::State& state) {
  const Data& d = data();
  const std::uint64_t before = gHeap.calls;
  for (auto _ : state) {
    std::vector<float> out;
    VU::extractVectorFloatsFromKRValue(d.floatsValue, kName, out);
    benchmark::DoNotOptimize(out.data());
  }
  reportAllocs(state, before);
}

void ReadFloats_Json(benchmark::State& state) {
  const Data& d = data();
  for (auto _ : state) {
    auto out = d.floatsJson.get<std::vector<float>>();
    benchmark::DoNotOptimize(out.data());
  }
}

void ReadFloats_Raw(benchmark::State& state) {
  const Data& d = data();
  const KR::KRValue& v = d.floatsValue;
  for (auto _ : state) {
    const int n = int(v.getSize());
    std::vector<float> out(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
      out[static_cast<std::size_t>(i)] = float(v[i]);
    }
    benchmark::DoNotOptimize(out.data());
  }
}

void ReadFloats_Memcpy(benchmark::State& state) {
  const Data& d = data();
  for (auto _ : state) {
    std::vector<float> out(kFloats);
    std::memcpy(out.data(), d.floats.data(), d.floats.size() * sizeof(float));
    benchmark::DoNotOptimize(out.data());
  }
}

// ---------------------------------------------------------------------------
// Read 10,000 Transforms (valid rotations, so each passes the check).

void ReadTransforms_Ours(benchmark::State& state) {
  const Data& d = data();
  const std::uint64_t before = gHeap.calls;
  for (auto _ : state) {
    std::vector<KR::Math::Transform> out;
    VU::extractVectorTransformFromKRValue(d.transformsValue, kName, out);
    benchmark::DoNotOptimize(out.data());
  }
  reportAllocs(state, before);
}

void ReadTransforms_Json(benchmark::State& state) {
  const Data& d = data();
  for (auto _ : state) {
    auto out = d.transformsJson.get<std::vector<KR::Math::Transform>>();
    benchmark::DoNotOptimize(out.data());
  }
}

void ReadTransforms_Raw(benchmark::State& state) {
  const Data& d = data();
  const KR::KRValue& v = d.transformsValue;
  for (auto _ : state) {
    const int n = int(v.getSize());
    std::vector<KR::Math::Transform> out(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
      const KR::KRValue& t = v[i];
      float* f = &out[static_cast<std::size_t>(i)].r1_c1;
      for (int k = 0; k < 12; ++k) {
        f[k] = float(t[k]);
      }
    }
    benchmark::DoNotOptimize(out.data());
  }
}

void ReadTransforms_Memcpy(benchmark::State& state) {
  const Data& d = data();
  for (auto _ : state) {
    std::vector<KR::Math::Transform> out(kTransforms);
    std::memcpy(static_cast<void*>(out.data()), d.transformFloats.data(),
                d.transformFloats.size() * sizeof(float));
    benchmark::DoNotOptimize(out.data());
  }
}

// ---------------------------------------------------------------------------
// A single Pose2D: the per-call overhead.

void ReadOnePose_Ours(benchmark::State& state) {
  const Data& d = data();
  KR::Math::Pose2D out;
  const std::uint64_t before = gHeap.calls;
  for (auto _ : state) {
    VU::extractPose2DFromKRValue(d.onePoseValue, kName, out);
    benchmark::DoNotOptimize(out);
  }
  reportAllocs(state, before);
}

void ReadOnePose_Json(benchmark::State& state) {
  const Data& d = data();
  for (auto _ : state) {
    auto out = d.onePoseJson.get<KR::Math::Pose2D>();
    benchmark::DoNotOptimize(out);
  }
}

void ReadOnePose_Raw(benchmark::State& state) {
  const Data& d = data();
  const KR::KRValue& v = d.onePoseValue;
  KR::Math::Pose2D out;
  for (auto _ : state) {
    out.x = float(v[0]);
    out.y = float(v[1]);
    out.theta = float(v[2]);
    benchmark::DoNotOptimize(out);
  }
}

void ReadOnePose_Memcpy(benchmark::State& state) {
  const Data& d = data();
  const float* source = d.poseFloats.data();
  KR::Math::Pose2D out;
  for (auto _ : state) {
    benchmark::DoNotOptimize(source);
    std::memcpy(static_cast<void*>(&out), source, sizeof out);
    benchmark::DoNotOptimize(out);
  }
}

// ---------------------------------------------------------------------------
// A malformed pose, [1.0, "a", 0.5]: the cost of a failure, exception caught.

void ReadBadPose_Ours(benchmark::State& state) {
  const Data& d = data();
  KR::Math::Pose2D out;
  for (auto _ : state) {
    try {
      VU::extractPose2DFromKRValue(d.badPoseValue, kName, out);
      state.SkipWithError("a malformed pose was accepted");
      break;
    } catch (const std::runtime_error& e) {
      benchmark::DoNotOptimize(e.what());
    }
  }
}

void ReadBadPose_Json(benchmark::State& state) {
  const Data& d = data();
  for (auto _ : state) {
    try {
      auto out = d.badPoseJson.get<KR::Math::Pose2D>();
      benchmark::DoNotOptimize(out);
      state.SkipWithError("a malformed pose was accepted");
      break;
    } catch (const json::exception& e) {
      benchmark::DoNotOptimize(e.what());
    }
  }
}

// ---------------------------------------------------------------------------
// Write 100,000 Position3D and Position2D.

void WritePositions3D_Ours(benchmark::State& state) {
  const Data& d = data();
  for (auto _ : state) {
    KR::KRValue out;
    VU::createKRValueFromVectorPosition3D(d.positions3D, out);
    benchmark::DoNotOptimize(&out);
  }
}

void WritePositions3D_Json(benchmark::State& state) {
  const Data& d = data();
  for (auto _ : state) {
    json out = d.positions3D;
    benchmark::DoNotOptimize(&out);
  }
}

void WritePositions2D_Ours(benchmark::State& state) {
  const Data& d = data();
  for (auto _ : state) {
    KR::KRValue out;
    VU::extractKRValueFromVectorPosition2D(d.positions2D, out);
    benchmark::DoNotOptimize(&out);
  }
}

void WritePositions2D_Json(benchmark::State& state) {
  const Data& d = data();
  for (auto _ : state) {
    json out = d.positions2D;
    benchmark::DoNotOptimize(&out);
  }
}

// ---------------------------------------------------------------------------
// Memory to hold 100,000 poses: live heap blocks and requested bytes once the
// whole tree is built, as KR::KRValue and as nlohmann::json.

void HoldPoses_KRValue(benchmark::State& state) {
  const Data& d = data();
  double blocks = 0, bytes = 0;
  for (auto _ : state) {
    const HeapCounters start = gHeap;
    KR::KRValue value;
    value.arraySetSize(kPoses);
    for (int i = 0; i < kPoses; ++i) {
      VU::extractKRValueFromPose2D(d.poses[std::size_t(i)], value[i]);
    }
    blocks = double(gHeap.liveBlocks - start.liveBlocks);
    bytes = double(gHeap.liveBytes - start.liveBytes);
    benchmark::DoNotOptimize(&value);
  }
  state.counters["live_blocks"] = blocks;
  state.counters["live_bytes"] = bytes;
}

void HoldPoses_Json(benchmark::State& state) {
  const Data& d = data();
  double blocks = 0, bytes = 0;
  for (auto _ : state) {
    const HeapCounters start = gHeap;
    json value = d.poses;
    blocks = double(gHeap.liveBlocks - start.liveBlocks);
    bytes = double(gHeap.liveBytes - start.liveBytes);
    benchmark::DoNotOptimize(&value);
  }
  state.counters["live_blocks"] = blocks;
  state.counters["live_bytes"] = bytes;
}

}  // namespace

BENCHMARK(ReadPoses_Ours)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadPoses_Json)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadPoses_Raw)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadPoses_Memcpy)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadFloats_Ours)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadFloats_Json)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadFloats_Raw)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadFloats_Memcpy)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadTransforms_Ours)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadTransforms_Json)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadTransforms_Raw)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadTransforms_Memcpy)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadOnePose_Ours);
BENCHMARK(ReadOnePose_Json);
BENCHMARK(ReadOnePose_Raw);
BENCHMARK(ReadOnePose_Memcpy);
BENCHMARK(ReadBadPose_Ours);
BENCHMARK(ReadBadPose_Json);
BENCHMARK(WritePositions3D_Ours)->Unit(benchmark::kMicrosecond);
BENCHMARK(WritePositions3D_Json)->Unit(benchmark::kMicrosecond);
BENCHMARK(WritePositions2D_Ours)->Unit(benchmark::kMicrosecond);
BENCHMARK(WritePositions2D_Json)->Unit(benchmark::kMicrosecond);
BENCHMARK(HoldPoses_KRValue)->Unit(benchmark::kMicrosecond);
BENCHMARK(HoldPoses_Json)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
