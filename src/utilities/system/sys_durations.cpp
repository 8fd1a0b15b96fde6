#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>

#include "utilities/string/text.h"
#include "utilities/system/utility_sys_impl.h"

namespace temvar {

namespace {

constexpr int kSecondsPerMinute = 60;
constexpr int kSecondsPerHour = 3600;

// Room for the hours of any 64-bit number of seconds.
constexpr size_t kBlockSize = 32;

// Rounds to whole seconds. A negative value or NaN is 0, and a value beyond 64 bits is
// the longest they do.
uint64_t RoundToSeconds(double seconds) {
  constexpr double kLimit = 18446744073709551616.0;  // 2^64
  const double rounded = std::floor(seconds + 0.5);
  if (!(rounded > 0)) return 0;
  return rounded < kLimit ? static_cast<uint64_t>(rounded) : std::numeric_limits<uint64_t>::max();
}

}  // namespace

char* TMVUtilitySysImpl::FormatDuration(double seconds) {
  const uint64_t total = RoundToSeconds(seconds);
  const uint64_t hours = total / kSecondsPerHour;
  const uint64_t minutes = total % kSecondsPerHour / kSecondsPerMinute;
  const uint64_t rest = total % kSecondsPerMinute;
  char* const text = NewBlock<char>(kBlockSize);
  if (hours == 0) {
    std::snprintf(text, kBlockSize, "%.2" PRIu64 ":%.2" PRIu64, minutes, rest);
  } else {
    std::snprintf(text, kBlockSize, "%.2" PRIu64 ":%.2" PRIu64 ":%.2" PRIu64, hours, minutes, rest);
  }
  return text;
}

// The twin for whole seconds: signed and not rounded, so a negative count shows its signs.
char* TMVUtilitySysImpl::FormatSeconds(int64_t seconds) {
  const int64_t hours = seconds / kSecondsPerHour;
  const int64_t minutes = seconds % kSecondsPerHour / kSecondsPerMinute;
  const int64_t rest = seconds % kSecondsPerMinute;
  char* const text = NewBlock<char>(kBlockSize);
  if (hours == 0) {
    std::snprintf(text, kBlockSize, "%02" PRId64 ":%02" PRId64, minutes, rest);
  } else {
    std::snprintf(text, kBlockSize, "%02" PRId64 ":%02" PRId64 ":%02" PRId64, hours, minutes, rest);
  }
  return text;
}

}  // namespace temvar
