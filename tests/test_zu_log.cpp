#include <zu/log.h>

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace zu::log;

// Subscribes a handler for the scope of a test, so tests do not leak
// handlers into each other.
class ScopedHandler {
 public:
  explicit ScopedHandler(Handler handler) : id_(subscribe(std::move(handler))) {}
  ~ScopedHandler() { unsubscribe(id_); }
  ScopedHandler(const ScopedHandler&) = delete;
  ScopedHandler& operator=(const ScopedHandler&) = delete;

 private:
  HandlerId id_;
};

// Collects records; safe to call from several threads.
class Collector {
 public:
  Handler handler() {
    return [this](const Record& record) {
      const std::lock_guard<std::mutex> lock(mutex_);
      records_.push_back(record);
    };
  }
  std::vector<Record> records() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return records_;
  }

 private:
  std::mutex mutex_;
  std::vector<Record> records_;
};

// The registry lives for the whole process, so a test that changes levels or
// expects the starting level takes a category no other test (or repetition
// under --gtest_repeat) has touched.
std::string freshName(const std::string& base) {
  static std::atomic<int> counter{0};
  return base + "." + std::to_string(counter.fetch_add(1));
}

CategoryType freshCategory(const std::string& base) { return addCategory(freshName(base).c_str()); }

TEST(ZuLog, WarningPassesOnlyWhileCategoryLevelIsAboveError) {
  const struct {
    Level categoryLevel;
    Level recordLevel;
    bool delivered;
  } cases[] = {
      {error, warning, false}, {warning, warning, true}, {info, warning, true},
      {debug, debug, true},    {verbose, debug, false},  {silent, fatal, false},
      {silent, silent, false}, {debug, silent, false},
  };
  CategoryType category = freshCategory("test.filter");
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(levelName(c.categoryLevel)) + " admits " + levelName(c.recordLevel));
    Collector collector;
    ScopedHandler scoped(collector.handler());
    setCategoryLevel(category, c.categoryLevel);
    EXPECT_EQ(isEnabled(category, c.recordLevel), c.delivered);
    log(c.recordLevel, category, "m", "f", "fn", 1);
    EXPECT_EQ(collector.records().size(), c.delivered ? 1u : 0u);
  }
}

TEST(ZuLog, CategoriesStartAtInfoAndKeepTheirOwnLevels) {
  CategoryType a = freshCategory("test.levels.a");
  CategoryType b = freshCategory("test.levels.b");
  EXPECT_EQ(categoryLevel(a), kDefaultCategoryLevel);
  EXPECT_EQ(kDefaultCategoryLevel, info);
  setCategoryLevel(a, error);
  EXPECT_EQ(categoryLevel(a), error);
  EXPECT_EQ(categoryLevel(b), info);
  EXPECT_FALSE(isEnabled(a, warning));
  EXPECT_TRUE(isEnabled(b, warning));
}

TEST(ZuLog, AddCategoryReturnsTheRegisteredHandle) {
  const std::string expected = freshName("test.same");
  std::string name = expected;
  CategoryType first = addCategory(name.c_str());
  setCategoryLevel(first, debug);
  name[0] = 'x';  // the registry keeps its own copy of the name
  EXPECT_EQ(categoryName(first), expected);
  EXPECT_EQ(addCategory(expected.c_str()), first);
  EXPECT_EQ(categoryLevel(first), debug);  // re-adding does not reset the level
  EXPECT_NE(addCategory("test.other"), first);
}

TEST(ZuLog, NullCategoryDoesNothing) {
  Collector collector;
  ScopedHandler scoped(collector.handler());
  EXPECT_EQ(categoryName(nullptr), "");
  EXPECT_EQ(categoryLevel(nullptr), silent);
  setCategoryLevel(nullptr, debug);
  EXPECT_FALSE(isEnabled(nullptr, fatal));
  log(fatal, nullptr, "m", "f", "fn", 1);
  { LogStream(fatal, nullptr, "f", "fn", 1) << "m"; }
  EXPECT_TRUE(collector.records().empty());
}

TEST(ZuLog, HandlerReceivesEveryField) {
  Collector collector;
  ScopedHandler scoped(collector.handler());
  CategoryType category = addCategory("test.fields");
  log(warning, category, "clipped", "a.cpp", "clipAndWarn", 42);
  log(error, category, "no origin", nullptr, nullptr, 0);
  const std::vector<Record> records = collector.records();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].level, warning);
  EXPECT_EQ(records[0].category, "test.fields");
  EXPECT_EQ(records[0].message, "clipped");
  EXPECT_EQ(records[0].file, "a.cpp");
  EXPECT_EQ(records[0].function, "clipAndWarn");
  EXPECT_EQ(records[0].line, 42);
  EXPECT_EQ(records[1].level, error);
  EXPECT_EQ(records[1].file, "");
  EXPECT_EQ(records[1].function, "");
  EXPECT_EQ(records[1].line, 0);
}

TEST(ZuLog, HandlersRunInSubscriptionOrderUntilUnsubscribed) {
  CategoryType category = addCategory("test.order");
  std::vector<int> calls;
  const HandlerId one = subscribe([&](const Record&) { calls.push_back(1); });
  const HandlerId two = subscribe([&](const Record&) { calls.push_back(2); });
  const HandlerId three = subscribe([&](const Record&) { calls.push_back(3); });
  EXPECT_NE(one, two);
  EXPECT_NE(two, three);
  log(info, category, "m", "", "", 0);
  EXPECT_EQ(calls, (std::vector<int>{1, 2, 3}));

  unsubscribe(two);
  unsubscribe(two);
  unsubscribe(three + 1000);  // unknown ids are ignored
  calls.clear();
  log(info, category, "m", "", "", 0);
  EXPECT_EQ(calls, (std::vector<int>{1, 3}));

  const HandlerId four = subscribe([&](const Record&) { calls.push_back(4); });
  EXPECT_NE(four, two);  // ids are not reused
  unsubscribe(one);
  unsubscribe(three);
  calls.clear();
  log(info, category, "m", "", "", 0);
  EXPECT_EQ(calls, (std::vector<int>{4}));
  unsubscribe(four);
}

TEST(ZuLog, NothingIsPrintedWithoutHandlers) {
  CategoryType category = addCategory("test.quiet");
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  log(fatal, category, "lost", "f", "fn", 1);
  { LogStream(error, category, "f", "fn", 2) << "lost"; }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(ZuLog, ConsoleHandlerWritesOneLetterLine) {
  const struct {
    Level level;
    const char* line;
  } cases[] = {
      {fatal, "[F] cat: text\n"}, {error, "[E] cat: text\n"},   {warning, "[W] cat: text\n"},
      {info, "[I] cat: text\n"},  {verbose, "[V] cat: text\n"}, {debug, "[D] cat: text\n"},
  };
  for (const auto& c : cases) {
    testing::internal::CaptureStderr();
    consoleHandler(Record{c.level, "cat", "text", "f.cpp", "fn", 3});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), c.line);
  }

  CategoryType category = addCategory("test.console");
  ScopedHandler scoped(consoleHandler);
  testing::internal::CaptureStderr();
  log(warning, category, "Config: x invalid value.", "", "decodeMotionConfig", 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "[W] test.console: Config: x invalid value.\n");
}

TEST(ZuLog, LevelNames) {
  EXPECT_STREQ(levelName(silent), "silent");
  EXPECT_STREQ(levelName(fatal), "fatal");
  EXPECT_STREQ(levelName(error), "error");
  EXPECT_STREQ(levelName(warning), "warning");
  EXPECT_STREQ(levelName(info), "info");
  EXPECT_STREQ(levelName(verbose), "verbose");
  EXPECT_STREQ(levelName(debug), "debug");
  EXPECT_STREQ(levelName(static_cast<Level>(7)), "unknown");
  EXPECT_STREQ(levelName(static_cast<Level>(-1)), "unknown");
}

TEST(ZuLog, LogStreamDeliversItsTextWhenDestroyed) {
  Collector collector;
  ScopedHandler scoped(collector.handler());
  CategoryType category = freshCategory("test.stream");
  {
    LogStream stream(warning, category, "", "clipAndWarn", 0);
    stream << "value " << 1.5 << " clipped";
    EXPECT_TRUE(collector.records().empty());
  }
  const std::vector<Record> records = collector.records();
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].message, "value 1.5 clipped");
  EXPECT_EQ(records[0].level, warning);
  EXPECT_EQ(records[0].category, categoryName(category));
  EXPECT_EQ(records[0].function, "clipAndWarn");

  setCategoryLevel(category, error);
  { LogStream(warning, category, "", "", 0) << "dropped"; }
  EXPECT_EQ(collector.records().size(), 1u);
}

TEST(ZuLog, ThrowingHandlerDoesNotStopTheOthers) {
  CategoryType category = addCategory("test.throw");
  ScopedHandler thrower([](const Record&) { throw std::runtime_error("handler failed"); });
  Collector collector;
  ScopedHandler scoped(collector.handler());
  ScopedHandler empty{Handler()};
  EXPECT_NO_THROW(log(error, category, "first", "", "", 0));
  EXPECT_NO_THROW({ LogStream(error, category, "", "", 0) << "second"; });
  const std::vector<Record> records = collector.records();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].message, "first");
  EXPECT_EQ(records[1].message, "second");
}

TEST(ZuLog, HandlerMayLogAndSubscribe) {
  CategoryType outer = addCategory("test.outer");
  CategoryType inner = addCategory("test.inner");
  Collector collector;
  ScopedHandler scoped(collector.handler());
  ScopedHandler relay([&](const Record& record) {
    if (record.category != "test.outer") return;
    const HandlerId id = subscribe([](const Record&) {});
    log(info, inner, "relayed " + record.message, "", "", 0);
    unsubscribe(id);
  });
  log(info, outer, "once", "", "", 0);
  const std::vector<Record> records = collector.records();
  ASSERT_EQ(records.size(), 2u);
  // The relay runs after the collector, so the outer record arrives first.
  EXPECT_EQ(records[0].message, "once");
  EXPECT_EQ(records[1].message, "relayed once");
}

TEST(ZuLog, ConcurrentLoggingWhileHandlersComeAndGo) {
  constexpr int kThreads = 4;
  constexpr int kRecords = 2000;
  std::atomic<int> steady{0};
  std::atomic<int> churned{0};
  std::atomic<bool> done{false};
  const HandlerId steadyId = subscribe([&](const Record&) { steady.fetch_add(1, std::memory_order_relaxed); });

  std::thread churn([&] {
    while (!done.load()) {
      const HandlerId id = subscribe([&](const Record&) { churned.fetch_add(1, std::memory_order_relaxed); });
      std::this_thread::yield();
      unsubscribe(id);
    }
  });
  std::vector<std::thread> loggers;
  for (int t = 0; t < kThreads; ++t) {
    loggers.emplace_back([t] {
      // Every thread registers the same name; all must get one handle.
      CategoryType category = addCategory("test.threads");
      for (int i = 0; i < kRecords; ++i) {
        setCategoryLevel(category, info);
        LogStream(info, category, "", "", i) << "thread " << t << " record " << i;
      }
    });
  }
  for (std::thread& logger : loggers) logger.join();
  done.store(true);
  churn.join();
  unsubscribe(steadyId);

  EXPECT_EQ(steady.load(), kThreads * kRecords);
  EXPECT_LE(churned.load(), kThreads * kRecords);
}

}  // namespace
