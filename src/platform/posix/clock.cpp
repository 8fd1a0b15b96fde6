#include "platform/posix/clock.h"

#include <chrono>
#include <ctime>

#include "platform/posix/errors.h"

namespace {

namespace chrono = std::chrono;

// 3000-12-31 23:59:59 UTC, the last second that the calendar functions of the runtime know.
constexpr __time64_t kLastTime = 32535215999;

// The range of years in which _mktime64 begins to compute: one more on each side than it can
// return, because the zone may move the time into range.
constexpr int kFirstYear = 69;
constexpr int kLastYear = 1101;

bool IsInRange(__time64_t time) { return time >= 0 && time <= kLastTime; }

// The record that _localtime64 and _gmtime64 share.
std::tm* ThreadRecord() {
  thread_local std::tm record;
  return &record;
}

__time64_t MakeTime(std::tm* record, time_t (*make)(std::tm*)) {
  if (record == nullptr || record->tm_year < kFirstYear || record->tm_year > kLastYear) return -1;
  // On failure the caller's record stays as it was, which the C functions don't promise.
  std::tm copy = *record;
  const __time64_t time = make(&copy);
  if (!IsInRange(time)) return -1;
  *record = copy;
  return time;
}

constexpr int64_t kTicksPerSecond = 10'000'000;
constexpr int64_t kTicksPerDay = 86'400 * kTicksPerSecond;
constexpr chrono::sys_days kFileTimeEpoch{chrono::year{1601} / 1 / 1};
constexpr int kLastFileTimeYear = 30827;

constexpr uint64_t ToTicks(const FILETIME& time) {
  return (uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

constexpr FILETIME FromTicks(uint64_t ticks) {
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

// File times are valid up to the largest signed number.
constexpr bool IsValid(const FILETIME& time) { return (time.dwHighDateTime >> 31) == 0; }

BOOL Fail() {
  SetLastError(ERROR_INVALID_PARAMETER);
  return FALSE;
}

// How far local time is ahead of UTC at this moment.
int64_t CurrentOffsetTicks() {
  const time_t now = std::time(nullptr);
  // Of now and not of the time in question: Windows shifts every file time by the present offset,
  // so a summer's file shows an hour off in winter.
  std::tm local;
  localtime_r(&now, &local);
  return int64_t{local.tm_gmtoff} * kTicksPerSecond;
}

BOOL Shift(const FILETIME* from, int64_t ticks, FILETIME* to) {
  if (from == nullptr || to == nullptr || !IsValid(*from)) return Fail();
  int64_t shifted = 0;
  // A time near either end of the range has no shifted form.
  if (__builtin_add_overflow(static_cast<int64_t>(ToTicks(*from)), ticks, &shifted) ||
      shifted < 0) {
    return Fail();
  }
  *to = FromTicks(static_cast<uint64_t>(shifted));
  return TRUE;
}

// Whether the fields name a moment; the day of the week doesn't count.
bool IsValid(const SYSTEMTIME& time) {
  const chrono::year_month_day date{chrono::year{time.wYear}, chrono::month{time.wMonth},
                                    chrono::day{time.wDay}};
  return time.wYear >= 1601 && time.wYear <= kLastFileTimeYear && date.ok() && time.wHour < 24 &&
         time.wMinute < 60 && time.wSecond < 60 && time.wMilliseconds < 1000;
}

}  // namespace

__time64_t _time64(__time64_t* result) {
  const __time64_t now = std::time(nullptr);
  if (result != nullptr) *result = now;
  return now;
}

std::tm* _localtime64(const __time64_t* time) {
  if (time == nullptr || !IsInRange(*time)) return nullptr;
  const time_t value = *time;
  return localtime_r(&value, ThreadRecord());
}

std::tm* _gmtime64(const __time64_t* time) {
  if (time == nullptr || !IsInRange(*time)) return nullptr;
  const time_t value = *time;
  return gmtime_r(&value, ThreadRecord());
}

__time64_t _mktime64(std::tm* record) { return MakeTime(record, std::mktime); }

__time64_t _mkgmtime64(std::tm* record) { return MakeTime(record, timegm); }

BOOL FileTimeToLocalFileTime(const FILETIME* utc, FILETIME* local) {
  return Shift(utc, CurrentOffsetTicks(), local);
}

BOOL LocalFileTimeToFileTime(const FILETIME* local, FILETIME* utc) {
  return Shift(local, -CurrentOffsetTicks(), utc);
}

BOOL FileTimeToDosDateTime(const FILETIME* time, WORD* dosDate, WORD* dosTime) {
  if (time == nullptr || dosDate == nullptr || dosTime == nullptr) return Fail();
  // Windows rounds up to the next even second, so that a file never seems older than it is.
  FILETIME rounded;
  SYSTEMTIME fields;
  if (!Shift(time, 2 * kTicksPerSecond - 1, &rounded) || !FileTimeToSystemTime(&rounded, &fields) ||
      fields.wYear < 1980 || fields.wYear > 2107) {
    return Fail();
  }
  *dosDate = static_cast<WORD>(((fields.wYear - 1980) << 9) | (fields.wMonth << 5) | fields.wDay);
  *dosTime = static_cast<WORD>((fields.wHour << 11) | (fields.wMinute << 5) | (fields.wSecond / 2));
  return TRUE;
}

BOOL DosDateTimeToFileTime(WORD dosDate, WORD dosTime, FILETIME* time) {
  // Archives have dates that no calendar has, month 0 for one: SystemTimeToFileTime refuses them.
  SYSTEMTIME fields = {};
  fields.wYear = static_cast<WORD>(1980 + (dosDate >> 9));
  fields.wMonth = (dosDate >> 5) & 0x0F;
  fields.wDay = dosDate & 0x1F;
  fields.wHour = dosTime >> 11;
  fields.wMinute = (dosTime >> 5) & 0x3F;
  fields.wSecond = static_cast<WORD>((dosTime & 0x1F) * 2);
  return SystemTimeToFileTime(&fields, time);
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* systemTime, FILETIME* time) {
  if (systemTime == nullptr || time == nullptr || !IsValid(*systemTime)) return Fail();
  const chrono::sys_days date{chrono::year{systemTime->wYear} / systemTime->wMonth /
                              systemTime->wDay};
  const int64_t days = (date - kFileTimeEpoch).count();
  const int64_t seconds =
      (int64_t{systemTime->wHour} * 60 + systemTime->wMinute) * 60 + systemTime->wSecond;
  const int64_t milliseconds = seconds * 1000 + systemTime->wMilliseconds;
  *time = FromTicks(static_cast<uint64_t>(days * kTicksPerDay + milliseconds * 10'000));
  return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* time, SYSTEMTIME* systemTime) {
  if (time == nullptr || systemTime == nullptr || !IsValid(*time)) return Fail();
  const auto ticks = static_cast<int64_t>(ToTicks(*time));
  const chrono::sys_days day = kFileTimeEpoch + chrono::days{ticks / kTicksPerDay};
  const chrono::year_month_day date{day};
  const int64_t milliseconds = ticks % kTicksPerDay / 10'000;
  systemTime->wYear = static_cast<WORD>(static_cast<int>(date.year()));
  systemTime->wMonth = static_cast<WORD>(static_cast<unsigned>(date.month()));
  systemTime->wDayOfWeek = static_cast<WORD>(chrono::weekday{day}.c_encoding());
  systemTime->wDay = static_cast<WORD>(static_cast<unsigned>(date.day()));
  systemTime->wHour = static_cast<WORD>(milliseconds / 3'600'000);
  systemTime->wMinute = static_cast<WORD>(milliseconds / 60'000 % 60);
  systemTime->wSecond = static_cast<WORD>(milliseconds / 1000 % 60);
  systemTime->wMilliseconds = static_cast<WORD>(milliseconds % 1000);
  return TRUE;
}

BOOL TzSpecificLocalTimeToSystemTime(const TIME_ZONE_INFORMATION* zone, const SYSTEMTIME* local,
                                     SYSTEMTIME* utc) {
  if (zone != nullptr || local == nullptr || utc == nullptr || !IsValid(*local)) return Fail();
  std::tm record = {};
  record.tm_year = local->wYear - 1900;
  record.tm_mon = local->wMonth - 1;
  record.tm_mday = local->wDay;
  record.tm_hour = local->wHour;
  record.tm_min = local->wMinute;
  record.tm_sec = local->wSecond;
  // The zone's own rules decide, as the null zone of the call asks.
  record.tm_isdst = -1;
  const int64_t seconds = std::mktime(&record);
  FILETIME epochTime;
  // mktime's -1 is not looked at: it is a valid second of 1969, and fields that passed the check
  // above have a time.
  const int64_t sinceEpoch = seconds - chrono::seconds{kFileTimeEpoch.time_since_epoch()}.count();
  if (sinceEpoch < 0) return Fail();
  epochTime = FromTicks(
      static_cast<uint64_t>(sinceEpoch * kTicksPerSecond + int64_t{local->wMilliseconds} * 10'000));
  return FileTimeToSystemTime(&epochTime, utc);
}
