// Standard output of the krvalue tool: one large buffer written out in big
// blocks, so that a long list costs no flush per line, and the first write
// error kept to be reported at the end.
#pragma once

#include <cstddef>
#include <string>

namespace krvaluetool {

/// Numbers as the tool prints them in its human-readable results: the
/// shortest text that reads back to the same float ("1", "0.1", "1e+20",
/// "-0", "nan", "inf").
void appendNumber(std::string& out, float number);

class Output {
 public:
  /// Writes to the file descriptor `fd` (1: standard output).
  explicit Output(int fd = 1);
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  Output& operator<<(const std::string& text) { return write(text.data(), text.size()); }
  Output& operator<<(const char* text);
  Output& operator<<(char c);
  /// A float as appendNumber prints it.
  Output& operator<<(float number);
  Output& operator<<(int number);
  Output& operator<<(long long number);
  Output& operator<<(std::size_t number);

  Output& write(const char* data, std::size_t size);

  /// Writes out what is buffered. Returns false once any write has failed.
  bool flush();

  /// errno of the first failed write, 0 while none has failed.
  int error() const { return error_; }

 private:
  // Writes the buffer out once it has grown past a block.
  Output& spill();
  void writeOut(const char* data, std::size_t size);

  int fd_;
  int error_ = 0;
  std::string buffer_;
};

}  // namespace krvaluetool
