#include "output.h"

#include <kr/math/floattext.h>

#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>

namespace krvaluetool {

namespace {

// Buffered bytes are written out once they pass this size.
constexpr std::size_t kBlock = 1 << 16;

template <typename Number>
void appendInteger(std::string& out, Number number) {
  char text[24];
  const std::to_chars_result written = std::to_chars(text, text + sizeof text, number);
  out.append(text, written.ptr);
}

}  // namespace

void appendNumber(std::string& out, float number) { KR::Math::appendFloatText(out, number); }

Output::Output(int fd) : fd_(fd) { buffer_.reserve(kBlock + 256); }

Output& Output::operator<<(const char* text) { return write(text, std::strlen(text)); }

Output& Output::operator<<(char c) { return write(&c, 1); }

Output& Output::operator<<(float number) {
  appendNumber(buffer_, number);
  return spill();
}

Output& Output::operator<<(int number) {
  appendInteger(buffer_, number);
  return spill();
}

Output& Output::operator<<(long long number) {
  appendInteger(buffer_, number);
  return spill();
}

Output& Output::operator<<(std::size_t number) {
  appendInteger(buffer_, number);
  return spill();
}

Output& Output::write(const char* data, std::size_t size) {
  buffer_.append(data, size);
  return spill();
}

Output& Output::spill() {
  if (buffer_.size() >= kBlock) {
    flush();
  }
  return *this;
}

bool Output::flush() {
  writeOut(buffer_.data(), buffer_.size());
  buffer_.clear();
  return error_ == 0;
}

void Output::writeOut(const char* data, std::size_t size) {
  // After a failure the rest is dropped: the first error is what is reported.
  while (size != 0 && error_ == 0) {
    const ssize_t written = ::write(fd_, data, size);
    if (written < 0) {
      if (errno != EINTR) {
        error_ = errno;
      }
      continue;
    }
    data += written;
    size -= static_cast<std::size_t>(written);
  }
}

}  // namespace krvaluetool
