// Helpers shared by the test suites, and the headers every suite uses:
// GoogleTest, <stdexcept>, <string> and <vector>.
#pragma once

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace KRTest {

/// What messageOf returns when the call throws nothing.
inline constexpr const char* kNoThrow = "<no exception>";

/// Runs `f` and returns the message of the std::runtime_error it throws,
/// failing the test if the exception is a subclass rather than exactly that
/// type (any other exception escapes and fails the test), or kNoThrow.
template <typename F>
std::string messageOf(F&& f) {
  try {
    f();
  } catch (const std::runtime_error& e) {
    EXPECT_EQ(typeid(e), typeid(std::runtime_error)) << e.what();
    return e.what();
  }
  return kNoThrow;
}

/// A table row: the input text, the message expected (or kNoThrow) and the
/// whole output after the call, also after a failure.
template <typename Out>
struct Row {
  std::string text, message;
  Out after;
};

/// For every row, calls read(row.text, out) on a fresh copy of `before` and
/// checks the message and the output.
template <typename Out, typename Read>
void expectRows(const Read& read, const Out& before, const std::vector<Row<Out>>& rows) {
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    Out out = before;
    EXPECT_EQ(messageOf([&] { read(row.text, out); }), row.message);
    EXPECT_EQ(out, row.after);
  }
}

}  // namespace KRTest

// The two that nearly every suite uses, without the namespace.
using KRTest::kNoThrow;
using KRTest::messageOf;
