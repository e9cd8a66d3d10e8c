#include <zu/log.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace zu::log;
using Lines = std::vector<std::string>;

// Subscribes a handler for the scope of a test.
struct Scoped {
  explicit Scoped(Handler handler) : id(subscribe(std::move(handler))) {}
  ~Scoped() { unsubscribe(id); }
  const HandlerId id;
};

// Collects every field of the records logged during a test, one line each.
struct Collector {
  Lines got;
  Scoped scoped{[this](const Record& r) {
    got.push_back(std::string(levelName(r.level)) + " " + r.category + ": " + r.message + " @" +
                  r.file + ":" + r.function + ":" + std::to_string(r.line));
  }};
};

// The registry lives for the whole process: a test that relies on a category's
// level takes one that no other test (or --gtest_repeat round) has touched.
std::string freshName(const std::string& base) {
  static int counter = 0;
  return base + "." + std::to_string(counter++);
}

TEST(ZuLog, CategoryLevelFiltersRecords) {
  const struct {
    Level category, record;
    bool delivered;
  } cases[] = {{error, warning, false}, {warning, warning, true}, {silent, fatal, false},
               {debug, silent, false}};
  CategoryType category = addCategory(freshName("test.filter").c_str());
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(levelName(c.category)) + " admits " + levelName(c.record));
    Collector collector;
    setCategoryLevel(category, c.category);
    EXPECT_EQ(isEnabled(category, c.record), c.delivered);
    log(c.record, category, "m", "f", "fn", 1);
    EXPECT_EQ(collector.got.size(), c.delivered ? 1u : 0u);
  }
}

TEST(ZuLog, CategoriesAreRegisteredOnceNullHandlesAreHarmless) {
  std::string name = freshName("test.cat");
  const std::string original = name;
  CategoryType a = addCategory(name.c_str());
  name[0] = 'x';  // the registry keeps its own copy of the name
  EXPECT_EQ(categoryName(a), original);
  setCategoryLevel(a, error);
  EXPECT_EQ(addCategory(original.c_str()), a);
  EXPECT_EQ(categoryLevel(a), error);  // re-adding does not reset the level
  EXPECT_EQ(addCategory(nullptr), nullptr);
  EXPECT_EQ(categoryName(nullptr) + levelName(categoryLevel(nullptr)), "silent");
  setCategoryLevel(nullptr, debug);
  EXPECT_EQ(categoryLevel(nullptr), silent);
  log(fatal, nullptr, "m", "f", "fn", 1);
}

// A level outside fatal to debug prints '?' and is named "unknown".
TEST(ZuLog, TheConsoleHandlerPrintsLevelLetterCategoryAndText) {
  for (int level = silent; level <= debug + 2; ++level) {
    testing::internal::CaptureStderr();
    consoleHandler(Record{static_cast<Level>(level), "cat", "a text", "f.cpp", "fn", 3});
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              std::string("[") + "?FEWIVD??"[level] + "] cat: a text\n");
  }
  EXPECT_STREQ(levelName(static_cast<Level>(debug + 1)), "unknown");
}

TEST(ZuLog, EveryFieldReachesHandlersPastAThrowingOrEmptyOne) {
  const Scoped thrower([](const Record&) { throw std::runtime_error("handler failed"); });
  const Scoped empty{Handler()};
  Collector c;
  CategoryType category = addCategory("test.fields");
  EXPECT_NO_THROW(log(warning, category, "clipped", "a.cpp", "clipAndWarn", 42));
  EXPECT_NO_THROW({ LogStream(error, category, nullptr, nullptr, 0) << "no origin"; });
  EXPECT_EQ(c.got, (Lines{"warning test.fields: clipped @a.cpp:clipAndWarn:42",
                          "error test.fields: no origin @::0"}));
}

// Would deadlock if a lock were held while handlers run.
TEST(ZuLog, HandlerMayLogSubscribeAndUnsubscribe) {
  Collector c;  // subscribed first, so it sees the outer record first
  const Scoped relay([](const Record& record) {
    if (record.category != "test.outer") return;
    const HandlerId id = subscribe([](const Record&) {});
    log(info, addCategory("test.inner"), "relayed " + record.message, "", "", 0);
    unsubscribe(id);
  });
  log(info, addCategory("test.outer"), "once", "", "", 0);
  EXPECT_EQ(c.got, (Lines{"info test.outer: once @::0", "info test.inner: relayed once @::0"}));
}

}  // namespace
