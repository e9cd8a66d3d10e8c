// Captures the log records that reach the middleware's handlers.
#pragma once

#include <zu/log.h>

#include <string>
#include <vector>

namespace KRTest {

/// Every log record while alive, as "category level 'file' function:line
/// text"; on destruction, unsubscribes and puts the library's category back
/// at its starting level.
struct Warnings {
  ~Warnings() {
    zu::log::unsubscribe(id);
    zu::log::setCategoryLevel(zu::log::addCategory("KRValueUtils"), zu::log::info);
  }
  std::vector<std::string> got;
  const zu::log::HandlerId id = zu::log::subscribe([this](const zu::log::Record& r) {
    got.push_back(r.category + " " + zu::log::levelName(r.level) + " '" + r.file + "' " +
                  r.function + ":" + std::to_string(r.line) + " " + r.message);
  });
};

}  // namespace KRTest
