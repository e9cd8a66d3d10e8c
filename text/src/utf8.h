// Internal: the one check of UTF-8 that the parser and the printer share.
#pragma once

#include <cstddef>

namespace KR {
namespace text {

/// Length of the well-formed UTF-8 sequence of two to four bytes starting at
/// `p` (a byte >= 0x80, p < end): no overlong form, no encoded surrogate,
/// nothing above U+10FFFF. Returns 0 when none starts there; `bad` then
/// points at the first byte that breaks it (`end` when the text ends first).
inline std::size_t utf8SequenceLength(const char* p, const char* end, const char*& bad) {
  const unsigned char lead = static_cast<unsigned char>(*p);
  std::size_t length = 0;
  unsigned char low = 0x80;
  unsigned char high = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    low = lead == 0xE0 ? 0xA0 : 0x80;   // overlong below U+0800
    high = lead == 0xED ? 0x9F : 0xBF;  // surrogates U+D800..U+DFFF
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    low = lead == 0xF0 ? 0x90 : 0x80;   // overlong below U+10000
    high = lead == 0xF4 ? 0x8F : 0xBF;  // above U+10FFFF
  } else {
    bad = p;
    return 0;
  }
  for (std::size_t k = 1; k < length; ++k) {
    const char* const c = p + k;
    if (c == end || static_cast<unsigned char>(*c) < low || static_cast<unsigned char>(*c) > high) {
      bad = c;
      return 0;
    }
    low = 0x80;
    high = 0xBF;
  }
  return length;
}

}  // namespace text
}  // namespace KR
