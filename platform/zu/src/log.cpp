// Logging of the middleware layer: category registry, handler list, delivery.
#include <zu/log.h>

#include <atomic>
#include <iostream>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zu {
namespace log {

struct Category {
  explicit Category(std::string categoryName) : name(std::move(categoryName)) {}

  const std::string name;
  // Read by isEnabled on every thread that logs; no ordering with other data
  // is needed, so relaxed accesses suffice.
  std::atomic<int> level{kDefaultCategoryLevel};
};

namespace {

struct Registry {
  std::mutex mutex;
  std::unordered_map<std::string, std::unique_ptr<Category>> categories;
};

// Other shared libraries register categories from their static initialisers
// and may log from their static destructors, so the registry is created on
// first use and deliberately never destroyed: handles stay valid until exit.
Registry& registry() {
  static Registry* const instance = new Registry;
  return *instance;
}

struct Subscription {
  HandlerId id;
  Handler handler;
};
typedef std::vector<Subscription> HandlerList;

// Copy on write: subscribe and unsubscribe replace the list under the mutex;
// log takes a reference to the current list and calls the handlers without
// holding any lock, so a handler may log, subscribe or unsubscribe itself.
struct Handlers {
  std::mutex mutex;
  std::shared_ptr<const HandlerList> list = std::make_shared<const HandlerList>();
  HandlerId nextId = 1;
};

Handlers& handlers() {
  static Handlers* const instance = new Handlers;
  return *instance;
}

std::shared_ptr<const HandlerList> currentHandlers() {
  Handlers& all = handlers();
  const std::lock_guard<std::mutex> lock(all.mutex);
  return all.list;
}

char levelLetter(Level level) {
  static const char kLetters[] = "?FEWIVD";
  if (level < fatal || level > debug) return '?';
  return kLetters[level];
}

}  // namespace

CategoryType addCategory(const char* name) {
  if (name == nullptr) return nullptr;
  Registry& reg = registry();
  const std::lock_guard<std::mutex> lock(reg.mutex);
  std::unique_ptr<Category>& slot = reg.categories[name];
  if (!slot) slot.reset(new Category(name));
  return slot.get();
}

const std::string& categoryName(CategoryType category) {
  static const std::string* const kEmpty = new std::string;
  if (category == nullptr) return *kEmpty;
  return category->name;
}

Level categoryLevel(CategoryType category) {
  if (category == nullptr) return silent;
  return static_cast<Level>(category->level.load(std::memory_order_relaxed));
}

void setCategoryLevel(CategoryType category, Level level) {
  if (category == nullptr) return;
  category->level.store(level, std::memory_order_relaxed);
}

bool isEnabled(CategoryType category, Level level) {
  if (category == nullptr || level <= silent) return false;
  return level <= category->level.load(std::memory_order_relaxed);
}

HandlerId subscribe(Handler handler) {
  Handlers& all = handlers();
  const std::lock_guard<std::mutex> lock(all.mutex);
  const HandlerId id = all.nextId++;
  auto list = std::make_shared<HandlerList>(*all.list);
  list->push_back(Subscription{id, std::move(handler)});
  all.list = std::move(list);
  return id;
}

void unsubscribe(HandlerId id) {
  Handlers& all = handlers();
  const std::lock_guard<std::mutex> lock(all.mutex);
  auto list = std::make_shared<HandlerList>();
  list->reserve(all.list->size());
  for (const Subscription& subscription : *all.list) {
    if (subscription.id != id) list->push_back(subscription);
  }
  if (list->size() == all.list->size()) return;
  all.list = std::move(list);
}

void log(Level level, CategoryType category, const std::string& message,
         const char* file, const char* function, int line) {
  if (!isEnabled(category, level)) return;
  const std::shared_ptr<const HandlerList> list = currentHandlers();
  if (list->empty()) return;
  const Record record{level,
                      category->name,
                      message,
                      file != nullptr ? file : "",
                      function != nullptr ? function : "",
                      line};
  for (const Subscription& subscription : *list) {
    if (!subscription.handler) continue;
    // log runs in destructors (LogStream), so a failing handler must neither
    // escape nor keep the record from the handlers after it.
    try {
      subscription.handler(record);
    } catch (...) {
    }
  }
}

void consoleHandler(const Record& record) {
  // One write per record, so that lines from several threads do not mix.
  std::string line;
  line.reserve(record.category.size() + record.message.size() + 8);
  line += '[';
  line += levelLetter(record.level);
  line += "] ";
  line += record.category;
  line += ": ";
  line += record.message;
  line += '\n';
  std::cerr.write(line.data(), static_cast<std::streamsize>(line.size()));
  std::cerr.flush();
}

const char* levelName(Level level) {
  switch (level) {
    case silent: return "silent";
    case fatal: return "fatal";
    case error: return "error";
    case warning: return "warning";
    case info: return "info";
    case verbose: return "verbose";
    case debug: return "debug";
  }
  return "unknown";
}

LogStream::LogStream(Level level, CategoryType category, const char* file,
                     const char* function, int line)
    : level_(level), category_(category), file_(file), function_(function), line_(line) {}

LogStream::~LogStream() {
  if (!isEnabled(category_, level_)) return;
  try {
    log(level_, category_, str(), file_, function_, line_);
  } catch (...) {
    // Out of memory while copying the text: the record is lost, the
    // destructor must not throw.
  }
}

}  // namespace log
}  // namespace zu
