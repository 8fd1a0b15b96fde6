#include "platform/crash_clock.h"

#include <time.h>

#include <atomic>
#include <cstring>
#include <iterator>

#include "platform/crash_steps.h"
#include "platform/posix/crash/signal_report.h"

namespace temvar {
namespace {

constexpr int64_t kDay = 24 * 60 * 60;
constexpr int kYearsAhead = 5;
constexpr size_t kMaxOffsets = 32;

// From `since` on, local time is UTC plus `offset` seconds. In the order of time; an offset holds
// until the next one begins.
struct ZoneOffset {
  int64_t since;
  int64_t offset;
};

constinit ZoneOffset offsets[kMaxOffsets] = {};
constinit size_t offsetCount = 0;

// What the C library knows of the zone when the offsets are noted. It is read without its lock: a
// torn value only costs the slower way below.
struct ZoneFacts {
  long standardOffset;
  long hasSummer;
  char names[2][16];

  void Read() {
    standardOffset = timezone;
    hasSummer = daylight;
    for (size_t i = 0; i < std::size(names); ++i) {
      std::memset(names[i], 0, sizeof(names[i]));
      std::strncpy(names[i], tzname[i], sizeof(names[i]) - 1);
    }
  }
};
constinit ZoneFacts notedZone = {};

bool HasZoneChanged() {
  ZoneFacts now = {};
  now.Read();
  return std::memcmp(&now, &notedZone, sizeof(now)) != 0;
}

int64_t OffsetAt(int64_t moment) {
  const time_t value = moment;
  tm local = {};
  return localtime_r(&value, &local) != nullptr ? local.tm_gmtoff : 0;
}

// The first second in (`early`, `late`] at which the offset is no longer that of `early`.
int64_t FindChange(int64_t early, int64_t late) {
  const int64_t offset = OffsetAt(early);
  while (late - early > 1) {
    const int64_t middle = early + (late - early) / 2;
    (OffsetAt(middle) == offset ? early : late) = middle;
  }
  return late;
}

// Asked once more in vain, the C library would take the time of the steps that are left.
constinit std::atomic<bool> libraryHangs{false};

bool AskLibrary(int64_t moment, int64_t& offset) {
  if (libraryHangs.load()) return false;
  posix::SignalReport* const report = posix::SignalReport::Current();
  if (report != nullptr) report->Hurry();
  const bool done = RunCrashStep([&] { offset = OffsetAt(moment); });
  if (report != nullptr && done) report->RestoreTime();
  if (!done) libraryHangs.store(true);
  return done;
}

int64_t OffsetFor(int64_t moment) {
  int64_t offset = 0;
  // The host has changed its zone since. The C library's conversion may wait for the lock that the
  // crashed thread holds; it is left then, and the old zone has to do.
  if (HasZoneChanged() && AskLibrary(moment, offset)) return offset;
  offset = 0;
  for (size_t i = 0; i < offsetCount; ++i) {
    if (i == 0 || offsets[i].since <= moment) offset = offsets[i].offset;
  }
  return offset;
}

struct Date {
  int64_t year;
  int64_t month;
  int64_t day;
};

// Civil date of a day number, counted from 1970-01-01. Years are taken to begin in March, so that
// the leap day is the last of its year; 400 of them have 146,097 days.
Date DateOfDay(int64_t dayNumber) {
  const int64_t shifted = dayNumber + 719468;  // From 0000-03-01.
  const int64_t era = (shifted >= 0 ? shifted : shifted - 146096) / 146097;
  const int64_t dayOfEra = shifted - era * 146097;
  const int64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const int64_t marchMonth = (5 * dayOfYear + 2) / 153;
  Date date = {};
  date.day = dayOfYear - (153 * marchMonth + 2) / 5 + 1;
  date.month = marchMonth < 10 ? marchMonth + 3 : marchMonth - 9;
  date.year = yearOfEra + era * 400 + (date.month <= 2 ? 1 : 0);
  return date;
}

char* WriteDigits(char* at, int64_t value, int digits) {
  for (int i = digits - 1; i >= 0; --i) {
    at[i] = static_cast<char>('0' + value % 10);
    value /= 10;
  }
  return at + digits;
}

}  // namespace

void PrepareCrashTime() {
  tzset();
  int64_t day = time(nullptr);
  const int64_t end = day + kYearsAhead * 366 * kDay;
  notedZone.Read();
  offsetCount = 0;
  offsets[offsetCount++] = {day, OffsetAt(day)};
  for (; day < end && offsetCount < kMaxOffsets; day += kDay) {
    if (OffsetAt(day + kDay) == offsets[offsetCount - 1].offset) continue;
    const int64_t change = FindChange(day, day + kDay);
    offsets[offsetCount++] = {change, OffsetAt(change)};
  }
}

bool CrashTime(char (&text)[32]) {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  return CrashTimeOf(now.tv_sec, text);
}

bool CrashTimeOf(int64_t time, char (&text)[32]) {
  const int64_t local = time + OffsetFor(time);
  const int64_t second = (local % kDay + kDay) % kDay;
  const Date date = DateOfDay((local - second) / kDay);
  char* at = WriteDigits(text, date.year, 4);
  at = WriteDigits(at, date.month, 2);
  at = WriteDigits(at, date.day, 2);
  at = WriteDigits(at, second / 3600, 2);
  at = WriteDigits(at, second / 60 % 60, 2);
  at = WriteDigits(at, second % 60, 2);
  *at = '\0';
  return true;
}

}  // namespace temvar
