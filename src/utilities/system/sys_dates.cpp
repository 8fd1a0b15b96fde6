// Dates as text. The runtime's own calendar functions know the years 1970 to 3000; a time beyond
// that has no record and no text.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>
#include <optional>

#include "platform/win32.h"
#include "utilities/string/text.h"
#include "utilities/system/utility_sys_impl.h"

namespace temvar {

namespace {

// The end of the last day whose local time every zone can show; FormatTime takes no time from here.
constexpr int64_t kFormatTimeLimit = 32535194400;

constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;

// The length of "2025-10-15 09:30:05".
constexpr size_t kDateTextLength = 19;

// Room for a date text of any six numbers.
constexpr size_t kMaxDateText = 80;

// Copies of the runtime's record: the next call on the thread, a host's or the library's,
// overwrites it.
std::optional<std::tm> LocalTime(int64_t time) {
  const __time64_t value = time;
  const std::tm* const record = _localtime64(&value);
  return record == nullptr ? std::nullopt : std::optional(*record);
}

std::optional<std::tm> UtcTime(int64_t time) {
  const __time64_t value = time;
  const std::tm* const record = _gmtime64(&value);
  return record == nullptr ? std::nullopt : std::optional(*record);
}

char* NewEmptyText() { return NewBlock<char>(1); }

char* NewPlainText(const std::tm& time) {
  char text[kMaxDateText];
  std::snprintf(text, sizeof(text), "%.4d-%.2d-%.2d %.2d:%.2d:%.2d", time.tm_year + 1900,
                time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec);
  return NewNarrowText(text);
}

char* NewPlainText(const std::optional<std::tm>& time) {
  return time ? NewPlainText(*time) : NewEmptyText();
}

char* NewIsoText(const std::tm& time) {
  char text[kMaxDateText];
  std::snprintf(text, sizeof(text), "%.4d-%.2d-%.2dT%.2d:%.2d:%.2dZ", time.tm_year + 1900,
                time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec);
  return NewNarrowText(text);
}

// `left` - `right` in the range of int: a text can hold any number.
int Difference(int32_t left, int32_t right) {
  using Limits = std::numeric_limits<int>;
  return static_cast<int>(std::clamp<int64_t>(int64_t{left} - right, Limits::min(), Limits::max()));
}

// Reads the numbers of a plain date text at their places; nothing if the text is too short. The
// separators are not looked at, so "2025/10/15_09.30.05" reads the same. The rest of the record is
// 0, tm_isdst too.
std::optional<std::tm> ParseDateText(const char* text) {
  if (text == nullptr || std::strlen(text) < kDateTextLength) return std::nullopt;
  std::tm time = {};
  time.tm_year = Difference(ParseInt32(text), 1900);
  time.tm_mon = Difference(ParseInt32(text + 5), 1);
  time.tm_mday = ParseInt32(text + 8);
  time.tm_hour = ParseInt32(text + 11);
  time.tm_min = ParseInt32(text + 14);
  time.tm_sec = ParseInt32(text + 17);
  return time;
}

// The start of a year in UTC, made as local time: the difference of the hours now serves as the
// offset of the zone.
int64_t StartOfYear(int32_t year) {
  const int64_t now = _time64(nullptr);
  std::tm start = {};
  start.tm_year = Difference(year, 1900);
  start.tm_mday = 1;
  const std::optional<std::tm> local = LocalTime(now);
  const std::optional<std::tm> utc = UtcTime(now);
  // Of the hour fields alone, which is a known limit: wrong by a day while the dates differ, and by
  // the minutes in zones that have some.
  if (local && utc) start.tm_hour = local->tm_hour - utc->tm_hour;
  return _mktime64(&start);
}

}  // namespace

// The format is the host's, which the compiler can't check here.
void TMVUtilitySysImpl::FormatTime(int64_t time, char* buffer, size_t size, const char* format) {
  // The start of 1970 and no failure: the operation has no result.
  if (time < 0 || time >= kFormatTimeLimit) time = 0;
  const std::optional<std::tm> local = LocalTime(time);
  if (!local) return;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::strftime(buffer, size, format, &*local);
#pragma GCC diagnostic pop
}

void TMVUtilitySysImpl::FormatCurrentTime(char* buffer, size_t size, const char* format) {
  FormatTime(_time64(nullptr), buffer, size, format);
}

char* TMVUtilitySysImpl::FormatSecondsSince(int64_t seconds, int32_t baseYear) {
  const int64_t base = StartOfYear(baseYear);
  const int64_t count = std::max<int64_t>(seconds, 0);
  // No base is beyond 3000, so that a sum beyond the range of int64_t is beyond the calendar too.
  const int64_t most = std::numeric_limits<int64_t>::max() - std::max<int64_t>(base, 0);
  std::optional<std::tm> local;
  if (count <= most) local = LocalTime(base + count);
  // A count beyond the calendar is read as nanoseconds.
  if (!local) local = LocalTime(base + count / kNanosecondsPerSecond);
  return NewPlainText(local);
}

char* TMVUtilitySysImpl::FormatSecondsSince1970(int64_t seconds) {
  return FormatSecondsSince(seconds, 1970);
}

char* TMVUtilitySysImpl::FormatSecondsSince2001(int64_t seconds) {
  return FormatSecondsSince(seconds, 2001);
}

char* TMVUtilitySysImpl::FormatLocalTime(int64_t time) { return NewPlainText(LocalTime(time)); }

char* TMVUtilitySysImpl::UtcTextToLocalText(std::tm* out, const char* text) {
  std::optional<std::tm> utc = ParseDateText(text);
  if (!utc) return NewEmptyText();
  const int64_t time = _mkgmtime64(&*utc);
  const std::optional<std::tm> local = time == -1 ? std::nullopt : LocalTime(time);
  if (!local) return NewEmptyText();
  if (out != nullptr) *out = *local;
  return NewPlainText(*local);
}

char* TMVUtilitySysImpl::LocalTextToUtcText(std::tm* out, const char* text) {
  std::optional<std::tm> local = ParseDateText(text);
  if (!local) return NewEmptyText();
  // tm_isdst is 0, so a text is read as standard time also in summer; the result is an hour off
  // then.
  const int64_t time = _mktime64(&*local);
  const std::optional<std::tm> utc = time == -1 ? std::nullopt : UtcTime(time);
  if (!utc) return NewEmptyText();
  if (out != nullptr) *out = *utc;
  return NewIsoText(*utc);
}

}  // namespace temvar
