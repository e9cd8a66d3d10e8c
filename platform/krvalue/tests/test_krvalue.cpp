#include <kr/krvalue.h>

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

namespace {

using KR::KRValue;

// The message of the std::runtime_error that `f` throws, failing the test if
// the exception is a subclass rather than exactly that type; "" when `f`
// throws nothing.
template <typename F>
std::string messageOf(F&& f) {
  try {
    f();
  } catch (const std::runtime_error& e) {
    EXPECT_EQ(typeid(e), typeid(std::runtime_error)) << e.what();
    return e.what();
  }
  return "";
}

static_assert(sizeof(KRValue) == 16 && std::is_nothrow_move_constructible_v<KRValue> &&
              std::is_nothrow_move_assignable_v<KRValue>, "16 bytes, noexcept moves");

// Heap-allocated text, so that ASan sees a dangling or leaked string.
std::string longText(int i) { return "element text beyond the small buffer #" + std::to_string(i); }

TEST(KRValueArraySetSize, ReplacesGrowsShrinksRefusesNegative) {
  for (KRValue v : {KRValue(), KRValue(7), KRValue(longText(0))}) {
    v.arraySetSize(2);
    EXPECT_EQ(v, KRValue::array(KRValue(), KRValue()));
  }
  KRValue v = KRValue::array(1, longText(1), 2.5f);
  v.arraySetSize(5);
  EXPECT_EQ(v, KRValue::array(1, longText(1), 2.5f, KRValue(), KRValue()));
  v.arraySetSize(1);
  EXPECT_EQ(v, KRValue::array(1));
  // Growing again inside the old room must not bring dropped elements back.
  v.arraySetSize(3);
  EXPECT_EQ(v, KRValue::array(1, KRValue(), KRValue()));
  EXPECT_NE(messageOf([&] { v.arraySetSize(-1); }).find("negative size -1"), std::string::npos);
  EXPECT_EQ(v, KRValue::array(1, KRValue(), KRValue()));
}

TEST(KRValuePush, InvalidBecomesArrayScalarsRefuseAndStayPut) {
  KRValue v = KRValue::array(1, 2, 3);
  v.clear();
  EXPECT_FALSE(v.isValid());
  v.arrayPush(KRValue(4));
  v.arrayPush(KRValue(longText(5)));
  EXPECT_EQ(v, KRValue::array(4, longText(5)));

  const std::pair<KRValue, std::string> scalars[] = {
      {KRValue(5), "an int"}, {KRValue(longText(0)), "a string"},
      {KRValue(false), "a bool"}, {KRValue(2.5f), "a float"}};
  for (const auto& [scalar, name] : scalars) {
    const std::string message = "KRValue: cannot append an element to " + name + " value";
    KRValue s = scalar;
    EXPECT_EQ(messageOf([&] { s.arrayPush(KRValue(1)); }), message);
    EXPECT_EQ(messageOf([&] { s.arrayReserve(4); }), message);
    EXPECT_EQ(s, scalar);
  }
}

TEST(KRValuePush, ElementOfTheSameArrayWhileGrowing) {
  // Whatever the growth policy, some n has each push below land on a full array.
  for (int n = 1; n <= 9; ++n) {
    SCOPED_TRACE(n);
    KRValue v;
    for (int i = 0; i < n; ++i) v.arrayPush(KRValue(longText(i)));
    v.arrayPush(v[n - 1]);
    v.arrayPush(std::move(v[0]));
    const KRValue whole = v;
    v.arrayPush(v);
    EXPECT_EQ(v[n], KRValue(longText(n - 1)));
    EXPECT_EQ(v[n + 1], KRValue(longText(0)));
    EXPECT_EQ(v[n + 2], whole);
  }
}

TEST(KRValueArray, MovedFromTakesEveryKindInOrderAndLeavesTheSourcesInvalid) {
  for (int n = 0; n <= 5; ++n) {
    SCOPED_TRACE(n);
    std::vector<KRValue> sources;
    std::vector<KRValue> copies;
    for (int i = 0; i < n; ++i) {
      const KRValue kinds[] = {KRValue(i), KRValue(0.5f * static_cast<float>(i)), KRValue(longText(i)),
                               KRValue::array(i, longText(i)), KRValue(i % 2 == 0)};
      sources.push_back(kinds[i % 5]);
      copies.push_back(kinds[i % 5]);
    }
    const KRValue array = KRValue::arrayMovedFrom(sources.data(), sources.data() + n);
    ASSERT_TRUE(array.isArray());
    ASSERT_EQ(array.getSize(), static_cast<unsigned>(n));
    for (int i = 0; i < n; ++i) {
      const std::size_t at = static_cast<std::size_t>(i);
      EXPECT_EQ(array[i], copies[at]);
      EXPECT_FALSE(sources[at].isValid());
    }
  }
}

TEST(KRValueSemantics, AssignmentReplacesAnyKind) {
  const KRValue samples[] = {KRValue(), KRValue(3), KRValue(longText(0)),
                             KRValue::array(1, longText(1))};
  for (const KRValue& to : samples) {
    for (const KRValue& from : samples) {
      KRValue target = to;
      target = from;
      EXPECT_EQ(target, from);
    }
    KRValue v = to, &self = v;
    v = self;
    EXPECT_EQ(v, to);
  }
  // A scalar taken from the array being replaced is read before the array goes.
  KRValue v = KRValue::array(KRValue::array(1.5f, 7, true));
  v[0] = static_cast<float&>(v[0][0]);
  EXPECT_EQ(v, KRValue::array(1.5f));
  v = KRValue::array(7);
  v = static_cast<int&>(v[0]);
  EXPECT_EQ(v, KRValue(7));
}

TEST(KRValueConversions, AcceptedKindsAndMisuse) {
  const KRValue i(-7), f(2.5f), s(longText(0));
  EXPECT_EQ(static_cast<int>(i), -7);
  EXPECT_EQ(static_cast<float>(f), 2.5f);
  EXPECT_EQ(static_cast<float>(i), -7.0f);  // a float reader takes an int
  EXPECT_EQ(static_cast<const std::string&>(s), longText(0));
  const std::pair<KRValue, bool> truths[] = {{KRValue(true), true}, {KRValue(false), false},
                                             {KRValue(-7), true},   {KRValue(0), false},
                                             {KRValue(0.25f), true}, {KRValue(0.0f), false}};
  for (const auto& [v, truth] : truths) {
    EXPECT_EQ(static_cast<bool>(v), truth) << KRValue::typeName(v.getType());
  }
  // The mutable references write through.
  KRValue v = KRValue::array(1, 2.0f);
  static_cast<int&>(v[0]) = 42;
  static_cast<float&>(v[1]) = -0.5f;
  EXPECT_EQ(v, KRValue::array(42, -0.5f));
  const KRValue& a = v;
  // Misuse names what was expected and what was found.
  const std::pair<std::function<void()>, std::string> cases[] = {
      {[&] { (void)int(s); }, "expected an int value but found a string value"},
      {[&] { (void)float(s); }, "expected a float or an int value but found a string value"},
      {[&] { (void)static_cast<const std::string&>(i); },
       "expected a string value but found an int value"},
      {[&] { (void)bool(a); }, "expected a bool, an int or a float value but found an array value"},
      {[&] { (void)static_cast<float&>(v[0]); }, "expected a float value but found an int value"},
      {[&] { (void)a[2]; }, "index 2 is out of range for an array of size 2"},
      {[&] { (void)i[0]; }, "cannot index an int value, expected an array"},
      {[&] { (void)KRValue()[0]; }, "cannot index an invalid value, expected an array"},
  };
  for (const auto& [use, message] : cases) EXPECT_EQ(messageOf(use), "KRValue: " + message);
}

TEST(KRValueEquality, SameKindAndContentDeeply) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  KRValue grownThenShrunk;
  grownThenShrunk.arraySetSize(3);
  grownThenShrunk.arraySetSize(0);
  const KRValue nested = KRValue::array(KRValue::array(1), 2);
  // Equal pairs of every kind appear throughout this file; these are the edges.
  const std::tuple<KRValue, KRValue, bool> cases[] = {
      {KRValue(0), KRValue(0.0f), false},  // same payload bits, other kind
      {KRValue(1.5f), KRValue(1.5), true},  // a double reads as its float
      {KRValue(0.0f), KRValue(-0.0f), true},
      {KRValue(nan), KRValue(nan), false},
      {KRValue::array(), KRValue(), false},
      {KRValue::array(0), KRValue::array(0.0f), false},
      {KRValue::array(1, 2), KRValue::array(1, 2, 3), false},
      {nested, KRValue::array(KRValue::array(2), 2), false},
      {nested, KRValue::array(KRValue::array(1, 2), 2), false},
      {grownThenShrunk, KRValue::array(), true},
  };
  int row = 0;
  for (const auto& [a, b, equal] : cases) {
    EXPECT_EQ(a == b, equal) << "row " << row;
    EXPECT_EQ(b == a, equal) << "row " << row++;
  }
}

}  // namespace
