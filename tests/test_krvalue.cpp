#include <kr/krvalue.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// Heap accounting: the replaced global operator new/delete count calls while a
// HeapCount is alive, and only then.
namespace {
std::atomic<bool> gCounting{false};
std::atomic<long> gNews{0};
std::atomic<long> gDeletes{0};
}  // namespace

void* operator new(std::size_t size) {
  if (gCounting) ++gNews;
  if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept {
  if (gCounting && p != nullptr) ++gDeletes;
  std::free(p);
}
void operator delete(void* p, std::size_t) noexcept { operator delete(p); }

namespace KR {
// Readable failure output; arrays are shown to a few levels only.
void PrintTo(const KRValue& v, std::ostream* os, int depth = 0) {
  const KRValue& c = v;
  switch (c.getType()) {
    case KRValue::TypeInvalid: *os << "<invalid>"; return;
    case KRValue::TypeBool: *os << (static_cast<bool>(c) ? "true" : "false"); return;
    case KRValue::TypeInt: *os << static_cast<int>(c); return;
    case KRValue::TypeFloat: *os << static_cast<float>(c) << 'f'; return;
    case KRValue::TypeString: *os << '"' << static_cast<const std::string&>(c) << '"'; return;
    case KRValue::TypeArray: break;
  }
  *os << '[';
  for (unsigned i = 0; i < c.getSize(); ++i) {
    if (i != 0) *os << ", ";
    if (depth < 4) PrintTo(c[static_cast<int>(i)], os, depth + 1); else *os << "...";
  }
  *os << ']';
}
}  // namespace KR

namespace {

using KR::KRValue;
using ::testing::HasSubstr;

static_assert(sizeof(KRValue) == 16, "a KRValue is 16 bytes");
static_assert(std::is_nothrow_move_constructible<KRValue>::value, "noexcept move");
static_assert(std::is_nothrow_move_assignable<KRValue>::value, "noexcept move assignment");

struct HeapCount {
  HeapCount() { gNews = 0; gDeletes = 0; gCounting = true; }
  ~HeapCount() { gCounting = false; }
  long news() const { return gNews; }
  long deletes() const { return gDeletes; }
};

// Long enough to live on the heap, so a dangling or leaked string shows up
// under AddressSanitizer.
std::string longText(int i) { return "element text beyond the small buffer #" + std::to_string(i); }

// The message of the std::runtime_error that f throws.
std::string thrownMessage(const std::function<void()>& f) {
  try {
    f();
  } catch (const std::runtime_error& e) {
    return e.what();
  }
  return "<nothing thrown>";
}

KRValue emptyArray() {
  KRValue v;
  v.arraySetSize(0);
  return v;
}

// [[[1]]] with the innermost number given.
KRValue depth3(const KRValue& inner) { return KRValue::array(KRValue::array(KRValue::array(inner))); }

TEST(KRValueKinds, EachKindAnswersExactlyOneQuery) {
  struct Case {
    const char* what;
    KRValue value;
    KRValue::Type type;
  };
  const Case cases[] = {
      {"default", KRValue(), KRValue::TypeInvalid},
      {"true", KRValue(true), KRValue::TypeBool},
      {"false", KRValue(false), KRValue::TypeBool},
      {"int 1", KRValue(1), KRValue::TypeInt},
      {"int 0", KRValue(0), KRValue::TypeInt},
      {"float 1.0f", KRValue(1.0f), KRValue::TypeFloat},
      {"double 0.5", KRValue(0.5), KRValue::TypeFloat},
      {"literal", KRValue("x"), KRValue::TypeString},
      {"empty literal", KRValue(""), KRValue::TypeString},
      {"std::string", KRValue(std::string("s")), KRValue::TypeString},
      {"floats", KRValue(std::vector<float>{1.0f}), KRValue::TypeArray},
      {"no strings", KRValue(std::vector<std::string>{}), KRValue::TypeArray},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const KRValue& v = c.value;
    EXPECT_EQ(v.getType(), c.type);
    EXPECT_EQ(v.isValid(), c.type != KRValue::TypeInvalid);
    EXPECT_EQ(v.isBool(), c.type == KRValue::TypeBool);
    EXPECT_EQ(v.isInt(), c.type == KRValue::TypeInt);
    EXPECT_EQ(v.isFloat(), c.type == KRValue::TypeFloat);
    EXPECT_EQ(v.isString(), c.type == KRValue::TypeString);
    EXPECT_EQ(v.isArray(), c.type == KRValue::TypeArray);
    if (!v.isArray()) {
      EXPECT_EQ(v.getSize(), 0u);
    }
  }
  EXPECT_EQ(static_cast<float>(static_cast<const KRValue&>(KRValue(0.5))), 0.5f);
}

TEST(KRValueConstruct, FromVectors) {
  const KRValue floats(std::vector<float>{1.5f, -2.0f, 0.25f});
  ASSERT_EQ(floats.getSize(), 3u);
  EXPECT_EQ(floats[0], KRValue(1.5f));
  EXPECT_EQ(floats[1], KRValue(-2.0f));
  EXPECT_EQ(floats[2], KRValue(0.25f));
  const KRValue strings(std::vector<std::string>{"a", "", longText(2)});
  ASSERT_EQ(strings.getSize(), 3u);
  EXPECT_EQ(strings[0], KRValue("a"));
  EXPECT_EQ(strings[1], KRValue(""));
  EXPECT_EQ(strings[2], KRValue(longText(2)));

  const KRValue none(std::vector<float>{});
  EXPECT_TRUE(none.isValid());
  EXPECT_TRUE(none.isArray());
  EXPECT_EQ(none.getSize(), 0u);
  EXPECT_EQ(none, emptyArray());
}

TEST(KRValueArraySetSize, ReplacesNonArraysWithInvalidElements) {
  for (KRValue v : {KRValue(), KRValue(7), KRValue(longText(0)), KRValue(true)}) {
    SCOPED_TRACE(::testing::PrintToString(v));
    v.arraySetSize(3);
    ASSERT_TRUE(v.isArray());
    ASSERT_EQ(v.getSize(), 3u);
    for (int i = 0; i < 3; ++i) EXPECT_FALSE(v[i].isValid());
  }
  KRValue empty;
  empty.arraySetSize(0);
  EXPECT_TRUE(empty.isArray());
  EXPECT_EQ(empty.getSize(), 0u);
  EXPECT_NE(empty, KRValue());
}

TEST(KRValueArraySetSize, GrowKeepsShrinkDrops) {
  KRValue v = KRValue::array(1, longText(1), KRValue::array(3));
  v.arraySetSize(5);
  EXPECT_EQ(v, KRValue::array(1, longText(1), KRValue::array(3), KRValue(), KRValue()));
  v.arraySetSize(1);
  EXPECT_EQ(v, KRValue::array(1));
  v.arraySetSize(0);
  EXPECT_EQ(v, emptyArray());

  // Growing again inside the old room must not bring dropped elements back.
  KRValue scalars = KRValue::array(1, 2.5f, true);
  scalars.arraySetSize(1);
  scalars.arraySetSize(3);
  EXPECT_EQ(scalars, KRValue::array(1, KRValue(), KRValue()));

  KRValue n = KRValue::array(1, 2);
  EXPECT_THAT(thrownMessage([&] { n.arraySetSize(-1); }), HasSubstr("negative size -1"));
  EXPECT_EQ(n, KRValue::array(1, 2));
}

TEST(KRValuePush, ClearThenPushAndStartFromInvalid) {
  KRValue v = KRValue::array(1, 2, 3);
  v.clear();
  EXPECT_FALSE(v.isValid());
  v.arrayPush(KRValue(4));
  v.arrayPush(KRValue(longText(5)));
  EXPECT_EQ(v, KRValue::array(4, longText(5)));

  KRValue fresh;
  fresh.arrayPush(KRValue(true));
  EXPECT_EQ(fresh, KRValue::array(true));
}

TEST(KRValuePush, RefusedOnScalarsAndLeavesThemAlone) {
  const KRValue scalars[] = {KRValue(5), KRValue(longText(0)), KRValue(false), KRValue(2.5f)};
  const char* names[] = {"an int", "a string", "a bool", "a float"};
  for (int i = 0; i < 4; ++i) {
    KRValue v = scalars[i];
    EXPECT_EQ(thrownMessage([&] { v.arrayPush(KRValue(1)); }),
              std::string("KRValue: cannot append an element to ") + names[i] + " value");
    EXPECT_EQ(v, scalars[i]);
  }
}

TEST(KRValuePush, ElementOfTheSameArrayWhileGrowing) {
  // Four pushes fill the array exactly, so the next push moves the elements.
  KRValue v;
  for (int i = 0; i < 4; ++i) v.arrayPush(KRValue(longText(i)));
  v.arrayPush(v[2]);
  ASSERT_EQ(v.getSize(), 5u);
  EXPECT_EQ(v[4], KRValue(longText(2)));
  EXPECT_EQ(v[2], KRValue(longText(2)));

  KRValue w;
  for (int i = 0; i < 8; ++i) w.arrayPush(KRValue(longText(i)));
  const KRValue before = w;
  w.arrayPush(w);
  ASSERT_EQ(w.getSize(), 9u);
  EXPECT_EQ(w[8], before);
  for (int i = 0; i < 8; ++i) EXPECT_EQ(w[i], before[i]);

  KRValue m;
  for (int i = 0; i < 4; ++i) m.arrayPush(KRValue(longText(i)));
  m.arrayPush(std::move(m[1]));
  ASSERT_EQ(m.getSize(), 5u);
  EXPECT_EQ(m[4], KRValue(longText(1)));
}

TEST(KRValuePush, ManyPushesKeepEveryElement) {
  KRValue v;
  const int n = 5000;
  for (int i = 0; i < n; ++i) {
    if (i % 2 == 0) v.arrayPush(KRValue(i)); else v.arrayPush(KRValue(longText(i)));
  }
  ASSERT_EQ(v.getSize(), static_cast<unsigned>(n));
  for (int i = 0; i < n; ++i) {
    ASSERT_EQ(v[i], i % 2 == 0 ? KRValue(i) : KRValue(longText(i))) << "element " << i;
  }
}

TEST(KRValueArrayFactory, ArgumentsBecomeElements) {
  KRValue source = KRValue::array(1, 2);
  const KRValue five = KRValue::array(std::string("name"), std::string(""), source,
                                      std::vector<float>{0.5f, 2.0f}, KRValue(9));
  ASSERT_EQ(five.getSize(), 5u);
  EXPECT_EQ(five[0], KRValue("name"));
  EXPECT_EQ(five[1], KRValue(""));
  EXPECT_EQ(five[2], KRValue::array(1, 2));
  EXPECT_EQ(five[3], KRValue(std::vector<float>{0.5f, 2.0f}));
  EXPECT_EQ(five[4], KRValue(9));
  // The KRValue argument was copied: the two are independent afterwards.
  source[0] = 100;
  EXPECT_EQ(five[2], KRValue::array(1, 2));

  const KRValue two = KRValue::array(KRValue(1.5f), true);
  ASSERT_EQ(two.getSize(), 2u);
  EXPECT_EQ(two[0], KRValue(1.5f));
  EXPECT_EQ(two[1], KRValue(true));

  const KRValue none = KRValue::array();
  EXPECT_TRUE(none.isArray());
  EXPECT_EQ(none.getSize(), 0u);
}

TEST(KRValueSemantics, CopyIsDeepAndIndependent) {
  KRValue source = KRValue::array(1, KRValue::array(longText(0), KRValue::array(2.0f)));
  const KRValue copy = source;
  source[1][1][0] = 3;
  source[1][0] = "changed";
  source.arrayPush(KRValue(4));
  EXPECT_EQ(copy, KRValue::array(1, KRValue::array(longText(0), KRValue::array(2.0f))));
  EXPECT_NE(copy, source);
}

TEST(KRValueSemantics, CopyAssignmentReplacesWhateverKinds) {
  const std::vector<KRValue> samples = {
      KRValue(), KRValue(true), KRValue(3), KRValue(1.5f), KRValue(longText(0)),
      KRValue::array(1, longText(1)), emptyArray()};
  for (const KRValue& from : samples) {
    for (const KRValue& to : samples) {
      KRValue target = to;
      target = from;
      EXPECT_EQ(target, from) << "assigning " << ::testing::PrintToString(from) << " over "
                              << ::testing::PrintToString(to);
    }
    KRValue self = from;
    KRValue& alias = self;
    self = alias;
    EXPECT_EQ(self, from);
  }
}

TEST(KRValueSemantics, MoveLeavesSourceInvalid) {
  KRValue source = KRValue::array(longText(0), 2);
  KRValue moved(std::move(source));
  EXPECT_FALSE(source.isValid());  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(moved, KRValue::array(longText(0), 2));

  KRValue target(longText(1));
  target = std::move(moved);
  EXPECT_FALSE(moved.isValid());  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(target, KRValue::array(longText(0), 2));
}

TEST(KRValueSemantics, ScalarAssignmentReplacesAnyKind) {
  const std::vector<KRValue> starts = {KRValue(), KRValue(false), KRValue(1), KRValue(1.0f),
                                       KRValue(longText(0)), KRValue::array(1, longText(1))};
  for (const KRValue& start : starts) {
    SCOPED_TRACE(::testing::PrintToString(start));
    KRValue v = start;
    v = 5;
    EXPECT_EQ(v, KRValue(5));
    v = start;
    v = 2.5f;
    EXPECT_EQ(v, KRValue(2.5f));
    v = start;
    v = true;
    EXPECT_EQ(v, KRValue(true));
    v = start;
    v = longText(2);
    EXPECT_EQ(v, KRValue(longText(2)));
    v = start;
    v = "literal";
    EXPECT_TRUE(v.isString());
    EXPECT_EQ(v, KRValue(std::string("literal")));
  }
}

TEST(KRValueConversions, AcceptedKinds) {
  const KRValue i(-7), f(2.5f), t(true), no(false), zeroI(0), zeroF(0.0f), quarter(0.25f);
  const KRValue s(longText(0));
  EXPECT_EQ(static_cast<int>(i), -7);
  EXPECT_EQ(static_cast<float>(f), 2.5f);
  EXPECT_EQ(static_cast<float>(i), -7.0f);
  EXPECT_TRUE(static_cast<bool>(t));
  EXPECT_FALSE(static_cast<bool>(no));
  EXPECT_TRUE(static_cast<bool>(i));
  EXPECT_FALSE(static_cast<bool>(zeroI));
  EXPECT_TRUE(static_cast<bool>(quarter));
  EXPECT_FALSE(static_cast<bool>(zeroF));
  EXPECT_EQ(static_cast<const std::string&>(s), longText(0));
}

TEST(KRValueConversions, MutableReferencesWriteThrough) {
  KRValue v = KRValue::array(1, 2.0f);
  int& n = v[0];
  n = 42;
  float& x = v[1];
  x = -0.5f;
  EXPECT_EQ(v, KRValue::array(42, -0.5f));
}

TEST(KRValueConversions, MisuseNamesExpectedAndFound) {
  const KRValue i(3), f(1.5f), s("text"), a = KRValue::array(1, 2, 3);
  KRValue mi(3), mf(1.5f);
  struct Case {
    std::function<void()> use;
    const char* message;
  };
  const Case cases[] = {
      {[&] { (void)static_cast<int>(s); }, "KRValue: expected an int value but found a string value"},
      {[&] { (void)static_cast<int>(f); }, "KRValue: expected an int value but found a float value"},
      {[&] { (void)static_cast<float>(s); },
       "KRValue: expected a float or an int value but found a string value"},
      {[&] { (void)static_cast<const std::string&>(i); },
       "KRValue: expected a string value but found an int value"},
      {[&] { (void)static_cast<bool>(s); },
       "KRValue: expected a bool, an int or a float value but found a string value"},
      {[&] { (void)static_cast<bool>(a); },
       "KRValue: expected a bool, an int or a float value but found an array value"},
      {[&] { (void)static_cast<int&>(mf); }, "KRValue: expected an int value but found a float value"},
      {[&] { (void)static_cast<float&>(mi); }, "KRValue: expected a float value but found an int value"},
      {[&] { (void)a[3]; }, "KRValue: index 3 is out of range for an array of size 3"},
      {[&] { (void)a[-1]; }, "KRValue: index -1 is out of range for an array of size 3"},
      {[&] { (void)emptyArray()[0]; }, "KRValue: index 0 is out of range for an array of size 0"},
      {[&] { (void)i[0]; }, "KRValue: cannot index an int value, expected an array"},
      {[&] { (void)KRValue()[0]; }, "KRValue: cannot index an invalid value, expected an array"},
      {[&] { (void)s[0]; }, "KRValue: cannot index a string value, expected an array"},
  };
  for (const Case& c : cases) EXPECT_EQ(thrownMessage(c.use), c.message);
}

TEST(KRValueEquality, SameKindAndContentDeeply) {
  KRValue grownThenShrunk;
  grownThenShrunk.arraySetSize(3);
  grownThenShrunk.arraySetSize(0);
  KRValue nestedEmpty;
  nestedEmpty.arraySetSize(1);
  nestedEmpty[0].arraySetSize(0);
  struct Case {
    KRValue a, b;
    bool equal;
  };
  const Case cases[] = {
      {KRValue(), KRValue(), true},
      {KRValue(1), KRValue(1.0f), false},
      {KRValue(1), KRValue(true), false},
      {KRValue(0), KRValue(), false},
      {KRValue(0), KRValue(0.0f), false},
      {KRValue::array(0), KRValue::array(0.0f), false},
      {KRValue::array(0), KRValue::array(false), false},
      {KRValue::array(0), KRValue::array(KRValue()), false},
      {KRValue(1.5f), KRValue(1.5), true},
      {KRValue("a"), KRValue("b"), false},
      {KRValue("a"), KRValue(std::string("a")), true},
      {emptyArray(), KRValue(), false},
      {depth3(KRValue(1)), depth3(KRValue(1)), true},
      {depth3(KRValue(1)), depth3(KRValue(2)), false},
      {depth3(KRValue(1)), depth3(KRValue(1.0f)), false},
      {KRValue::array(1, 2), KRValue::array(1, 2, 3), false},
      {KRValue::array(KRValue::array(1), 2), KRValue::array(KRValue::array(1, 2)), false},
      {emptyArray(), KRValue(std::vector<float>{}), true},
      {KRValue(std::vector<std::string>{}), KRValue::array(), true},
      {grownThenShrunk, emptyArray(), true},
      {nestedEmpty, KRValue::array(KRValue(std::vector<float>{})), true},
      {KRValue(std::vector<float>{1, 2}), KRValue::array(1.0f, 2.0f), true},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.a == c.b, c.equal) << ::testing::PrintToString(c.a) << " vs "
                                   << ::testing::PrintToString(c.b);
    EXPECT_EQ(c.b == c.a, c.equal);
    EXPECT_EQ(c.a != c.b, !c.equal);
  }
}

// A value nested `depth` levels deep. With `leaves`, every level is
// [text, level, child] (or [child, level, text] when `childFirst`).
KRValue nest(int depth, bool leaves, bool childFirst) {
  KRValue v(-1);
  for (int level = 0; level < depth; ++level) {
    KRValue outer;
    if (!leaves) {
      outer.arrayPush(std::move(v));
    } else {
      outer.arraySetSize(3);
      outer[childFirst ? 0 : 2] = std::move(v);
      outer[1] = level;
      outer[childFirst ? 2 : 0] = longText(level);
    }
    v = std::move(outer);
  }
  return v;
}

// The innermost non-array value, reached through the child at `slot`.
KRValue& innermost(KRValue& v, int slot, int* levels) {
  KRValue* p = &v;
  *levels = 0;
  while (p->isArray()) {
    p = &(*p)[slot];
    ++*levels;
  }
  return *p;
}

constexpr int kDeep = 1000000;

TEST(KRValueDeep, MillionLevelsCopyCompareDestroy) {
  KRValue original = nest(kDeep, false, false);
  KRValue copy = original;
  EXPECT_TRUE(copy == original);
  int levels = 0;
  KRValue& bottom = innermost(copy, 0, &levels);
  EXPECT_EQ(levels, kDeep);
  EXPECT_EQ(bottom, KRValue(-1));
  bottom = 5;
  EXPECT_TRUE(copy != original);
}

void checkDeepWithLeaves(bool childFirst) {
  KRValue original = nest(kDeep, true, childFirst);
  KRValue copy = original;
  EXPECT_TRUE(copy == original);
  int levels = 0;
  innermost(copy, childFirst ? 0 : 2, &levels) = 0;
  EXPECT_EQ(levels, kDeep);
  EXPECT_TRUE(copy != original);
  copy = 1;  // Releasing through assignment takes the same walk.
}

TEST(KRValueDeep, EveryLevelHoldsTextAndNumberChildLast) { checkDeepWithLeaves(false); }
TEST(KRValueDeep, EveryLevelHoldsTextAndNumberChildFirst) { checkDeepWithLeaves(true); }

TEST(KRValueHeap, ScalarsNeverAllocate) {
  HeapCount heap;
  {
    const KRValue b(true), i(12), f(0.5f);
    KRValue copies[] = {b, i, f};
    KRValue assigned;
    assigned = copies[1];
    assigned = 3;
    assigned = false;
  }
  EXPECT_EQ(heap.news(), 0);
  EXPECT_EQ(heap.deletes(), 0);
}

TEST(KRValueHeap, CopyOfFlatArrayIsOneBlock) {
  KRValue source;
  for (int i = 0; i < 20; ++i) source.arrayPush(i % 3 == 0 ? KRValue(i) : KRValue(i * 0.5f));
  source.arrayPush(KRValue(true));
  source.arrayPush(KRValue());
  long news = 0, deletes = 0;
  {
    HeapCount heap;
    {
      const KRValue copy = source;
      news = heap.news();
    }
    deletes = heap.deletes();
  }
  EXPECT_EQ(news, 1);
  EXPECT_EQ(deletes, 1);
}

TEST(KRValueHeap, EmptyArraysAllocateNothing) {
  HeapCount heap;
  {
    KRValue set;
    set.arraySetSize(0);
    const std::vector<float> none;
    const KRValue fromFloats(none);
    const KRValue made = KRValue::array();
    const KRValue copy = set;
  }
  EXPECT_EQ(heap.news(), 0);
}

}  // namespace
