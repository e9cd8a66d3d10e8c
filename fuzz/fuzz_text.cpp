// The text form: any bytes parse to a value or fail with std::runtime_error,
// and whatever parses prints to text that parses back to the same value, bit
// for bit (the one NaN it reads, -0.0 and denormals included), printed the
// same way.
#include <kr/krvalue.h>
#include <kr/krvaluetext.h>

#include "fuzz_value.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  KR::KRValue value;
  if (!krfuzz::succeeds([&] { value = KR::parseKRValue(text); })) {
    return 0;
  }
  const std::string printed = KR::printKRValue(value);
  const KR::KRValue again = KR::parseKRValue(printed);
  KRFUZZ_CHECK(krfuzz::sameTree(again, value));
  KRFUZZ_CHECK(KR::printKRValue(again) == printed);
  // A copy is equal and independent of the original's lifetime.
  KR::KRValue copy(value);
  value = KR::KRValue();
  KRFUZZ_CHECK(krfuzz::sameTree(copy, again));
  return 0;
}
