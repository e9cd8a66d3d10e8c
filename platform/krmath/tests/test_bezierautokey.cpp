// Automatic Bezier keys computed from bare values.
#include <kr/math/bezierautokey.h>

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

namespace {

using KR::Math::computeBezierAutoKey;
using KR::Math::Interpolation::BEZIER_AUTO;
using KR::Math::Interpolation::Key;
using TimedKeys = std::vector<std::pair<float, Key>>;

// Handles as (x, y) offsets: incoming then outgoing.
struct Handles {
  float inX, inY, outX, outY;
};

void expectKeys(const std::vector<float>& times, const std::vector<float>& values,
                const std::vector<Handles>& handles) {
  TimedKeys keys;
  computeBezierAutoKey(times, values, keys);
  ASSERT_EQ(keys.size(), handles.size());
  for (std::size_t i = 0; i < keys.size(); ++i) {
    SCOPED_TRACE(i);
    const Key& k = keys[i].second;
    EXPECT_EQ(keys[i].first, times[i]);
    EXPECT_EQ(k.value, values[i]);
    EXPECT_EQ(k.firstParam.type, BEZIER_AUTO);
    EXPECT_EQ(k.secondParam.type, BEZIER_AUTO);
    EXPECT_FLOAT_EQ(k.firstParam.offset.x, handles[i].inX);
    EXPECT_FLOAT_EQ(k.firstParam.offset.y, handles[i].inY);
    EXPECT_FLOAT_EQ(k.secondParam.offset.x, handles[i].outX);
    EXPECT_FLOAT_EQ(k.secondParam.offset.y, handles[i].outY);
  }
}

const float kThird = 1.0f / 3;

TEST(BezierAutoKey, HandCheckedSlopesAndHandles) {
  // Secants 1 and 2: harmonic mean 2 / (1/1 + 1/2) = 4/3, flat ends.
  expectKeys({0, 1, 2}, {0, 1, 3},
             {{0, 0, kThird, 0}, {-kThird, -4.0f / 9, kThird, 4.0f / 9}, {-kThird, 0, 0, 0}});
  // Secants 1 and 3 over intervals 2 and 1: slope 1.5, each handle a third of
  // its own interval.
  expectKeys({0, 2, 3}, {0, 2, 5},
             {{0, 0, 2 * kThird, 0}, {-2 * kThird, -1, kThird, 0.5f}, {-kThird, 0, 0, 0}});
  // A maximum gets a zero slope.
  expectKeys({0, 1, 2}, {0, 2, 1},
             {{0, 0, kThird, 0}, {-kThird, 0, kThird, 0}, {-kThird, 0, 0, 0}});
  expectKeys({5}, {1.5f}, {{0, 0, 0, 0}});
}

TEST(BezierAutoKey, AppendsOrThrowsLeavingKeysUnchanged) {
  const std::pair<float, Key> existing{-1.0f, Key(9, {}, {})};
  TimedKeys keys{existing};
  computeBezierAutoKey({}, {}, keys);
  computeBezierAutoKey({1, 2}, {3, 4}, keys);
  ASSERT_EQ(keys.size(), 3u);
  EXPECT_EQ(keys[0], existing);
  EXPECT_EQ(keys[2].first, 2.0f);

  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float inf = std::numeric_limits<float>::infinity();
  const std::string notAfter = " is not finite or not after the one before.";
  struct Bad {
    std::vector<float> times, values;
    std::string message;
  };
  const std::vector<Bad> bad{
      {{0, 1, 2}, {0, 1}, "3 times but 2 values."}, {{0}, {}, "1 times but 0 values."},
      {{0, 1, 1}, {0, 1, 2}, "time 2" + notAfter},  {{0, 2, 1}, {0, 1, 2}, "time 2" + notAfter},
      {{nan, 1}, {0, 1}, "time 0" + notAfter},      {{0, inf}, {0, 1}, "time 1" + notAfter},
  };
  for (const auto& b : bad) {
    SCOPED_TRACE(b.message);
    TimedKeys untouched{existing};
    try {
      computeBezierAutoKey(b.times, b.values, untouched);
      ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
      EXPECT_EQ(typeid(e), typeid(std::runtime_error));
      EXPECT_EQ(e.what(), "computeBezierAutoKey: " + b.message);
    }
    EXPECT_EQ(untouched, TimedKeys{existing});
  }
}

}  // namespace
