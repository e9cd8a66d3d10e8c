// Logging of the middleware layer: named categories with a level each, and
// handlers that a program subscribes to receive the records.
//
// A record at level L is handed on when its category's level is at least L
// (so a warning, level 3, passes only while the category's level is above 2).
// Records go to every subscribed handler, synchronously, on the thread that
// logs. With no handler subscribed a record is dropped: the logging itself
// prints nothing. (Code that writes to a standard stream directly is not
// logging and is not silenced by it.)
#pragma once

#include <zu/zu_export.h>

#include <cstddef>
#include <functional>
#include <sstream>
#include <string>

namespace zu {
namespace log {

enum Level : int {
  silent = 0,
  fatal = 1,
  error = 2,
  warning = 3,
  info = 4,
  verbose = 5,
  debug = 6,
};

/// Opaque category; a handle stays valid until the process exits.
struct Category;
typedef Category* CategoryType;

/// Level a category starts with.
constexpr Level kDefaultCategoryLevel = info;

/// Registers the category `name`, or returns the existing one of that name.
/// New categories start at kDefaultCategoryLevel. Safe to call from static
/// initialisers of other libraries and from several threads; a null name
/// gives a null handle.
ZU_API CategoryType addCategory(const char* name);

/// Name of a category; empty for a null handle.
ZU_API const std::string& categoryName(CategoryType category);

/// Current level of a category; `silent` for a null handle.
ZU_API Level categoryLevel(CategoryType category);

/// Sets the level of a category; ignored for a null handle.
ZU_API void setCategoryLevel(CategoryType category, Level level);

/// True when a record at `level` in `category` would be handed on.
ZU_API bool isEnabled(CategoryType category, Level level);

/// One log record, as handlers receive it.
struct Record {
  Level level;
  std::string category;
  std::string message;
  std::string file;
  std::string function;
  int line;
};

typedef std::function<void(const Record&)> Handler;
typedef std::size_t HandlerId;

/// Subscribes a handler; the returned id unsubscribes it. Ids are never
/// reused. Handlers run in subscription order.
ZU_API HandlerId subscribe(Handler handler);

/// Unsubscribes a handler; an unknown id is ignored. A record being delivered
/// on another thread at the same moment may still reach it once.
ZU_API void unsubscribe(HandlerId id);

/// Hands a record to every subscribed handler if the category admits its
/// level; does nothing for a null category. A null file or function becomes
/// "". No lock is held while handlers run, so a handler may itself log,
/// subscribe or unsubscribe. An exception thrown by a handler is caught and
/// dropped, and the remaining handlers still receive the record: log is
/// called from destructors (LogStream) and must not throw because of a
/// handler.
ZU_API void log(Level level, CategoryType category, const std::string& message,
                const char* file, const char* function, int line);

/// Ready handler for command-line tools: writes "[W] category: message" (the
/// letter standing for the level: F, E, W, I, V, D from fatal to debug) and a
/// line feed to standard error, in one write so that concurrent lines do not
/// interleave.
ZU_API void consoleHandler(const Record& record);

/// Name of a level: "silent", "fatal", "error", "warning", "info", "verbose",
/// "debug"; "unknown" otherwise.
ZU_API const char* levelName(Level level);

/// A string stream whose text is logged when the stream is destroyed, only if
/// the category admits the level at that moment. The destructor never throws.
class ZU_API LogStream : public std::ostringstream {
 public:
  LogStream(Level level, CategoryType category, const char* file,
            const char* function, int line);
  ~LogStream() override;

  LogStream(const LogStream&) = delete;
  LogStream& operator=(const LogStream&) = delete;

 private:
  Level level_;
  CategoryType category_;
  const char* file_;
  const char* function_;
  int line_;
};

}  // namespace log
}  // namespace zu
