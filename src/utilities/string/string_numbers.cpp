#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "utilities/string/text.h"
#include "utilities/string/utility_string_impl.h"

namespace temvar {

int32_t ParseInt32(const char* text) {
  using Limits = std::numeric_limits<int32_t>;
  return static_cast<int32_t>(
      std::clamp<long long>(std::strtoll(text, nullptr, 10), Limits::min(), Limits::max()));
}

int32_t TMVUtilityStringImpl::CompareVersion(const char* left, const char* right) {
  // Numbers are compared, and then how many there are: "1.2" is smaller than "1.2.0", and a part
  // without digits counts as 0.
  // A loop over the numbers and not a recursion: a text of nothing but dots must not cost stack.
  while (left != nullptr && right != nullptr) {
    const int32_t leftNumber = ParseInt32(left);
    const int32_t rightNumber = ParseInt32(right);
    if (leftNumber != rightNumber) return leftNumber > rightNumber ? 1 : -1;
    left = std::strchr(left, '.');
    right = std::strchr(right, '.');
    if (left == nullptr || right == nullptr) break;
    ++left;
    ++right;
  }
  if (left == nullptr) return right == nullptr ? 0 : -1;
  return 1;
}

namespace {

// No byte is refused: bit 0x40 sets letters of both cases apart from digits, and any other byte
// reads as whatever its low bits make of it. Documented: the caller vouches for its text.
uint32_t HexDigit(unsigned char byte) { return (byte & 15u) + ((byte & 0x40u) != 0 ? 9u : 0u); }

// Cuts to an integer. A value beyond its range, or no number, returns the nearest there is, where
// the language leaves the plain conversion undefined.
uint64_t TruncateToUInt64(double value) {
  constexpr double kLimit = 18446744073709551616.0;  // 2^64
  if (!(value < kLimit)) return std::numeric_limits<uint64_t>::max();
  return static_cast<uint64_t>(value);
}

}  // namespace

uint64_t TMVUtilityStringImpl::HexToUInt64(const char* text, uint64_t length) {
  // In double precision, as documented: exact up to 2^53, beyond that low bits are lost.
  uint64_t total = 0;
  for (uint64_t i = 0; i < length; ++i) {
    const uint32_t digit = HexDigit(static_cast<unsigned char>(text[i]));
    // A zero adds nothing, also at a place whose value is infinite.
    if (digit == 0) continue;
    // volatile: x87 code would keep more bits than a double has.
    const volatile double addend = std::pow(16.0, static_cast<double>(length - i) - 1.0) * digit;
    const volatile double sum = static_cast<double>(total) + addend;
    total = TruncateToUInt64(sum);
  }
  return total;
}

}  // namespace temvar
