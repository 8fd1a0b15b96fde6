// Dates in local time. CTest runs these once for each zone of the list in CMakeLists.txt, which it
// sets as TZ; tests that depend on the zone look their expectations up by it.
#include <gtest/gtest.h>
#include <temvar/utility_sys.h>

#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <sstream>

#include "support/take.h"

namespace {

using namespace test;

TMVUtilitySys* const sys = TmvUtilitySys();

constexpr char kPlainForm[] = "%Y-%m-%d %H:%M:%S";
constexpr int64_t kEndOfYear3000 = 32535215999;  // 3000-12-31 23:59:59 UTC

std::string Zone() {
  const char* const zone = std::getenv("TZ");
  return zone == nullptr ? "" : zone;
}

std::string FormatTime(int64_t time) {
  char buffer[64] = "";
  sys->FormatTime(time, buffer, sizeof(buffer), kPlainForm);
  return buffer;
}

struct Moment {
  const char* zone;
  const char* utc;
  const char* local;
};

constexpr Moment kMoments[] = {
    {"UTC0", "3000-12-31 23:59:59", "3000-12-31 23:59:59"},
    {"NPT-5:45", "2025-10-15 09:30:05", "2025-10-15 15:15:05"},
    {"Asia/Kathmandu", "2025-12-31 18:15:00", "2026-01-01 00:00:00"},
    {"Europe/Athens", "2025-03-30 00:59:59", "2025-03-30 02:59:59"},
    {"Europe/Athens", "2025-03-30 01:00:00", "2025-03-30 04:00:00"},
    {"Europe/Athens", "2025-10-26 00:59:59", "2025-10-26 03:59:59"},
    {"Europe/Athens", "2025-10-26 01:00:00", "2025-10-26 03:00:00"},
    {"America/New_York", "2025-11-02 05:59:59", "2025-11-02 01:59:59"},
    {"America/New_York", "2025-11-02 06:00:00", "2025-11-02 01:00:00"},
    {"EST5EDT", "2025-01-01 00:00:00", "2024-12-31 19:00:00"},
    {"EST5EDT", "2025-07-04 12:00:00", "2025-07-04 08:00:00"},
};

// Standard time also in summer.
constexpr Moment kWayBack[] = {
    {"UTC0", "2025-03-01T00:00:00Z", "2025-02-29 00:00:00"},
    {"Asia/Kathmandu", "2025-10-15T03:45:05Z", "2025-10-15 09:30:05"},
    {"Europe/Athens", "2025-01-15T07:30:05Z", "2025-01-15 09:30:05"},
    {"Europe/Athens", "2025-10-15T07:30:05Z", "2025-10-15 09:30:05"},
    {"EST5EDT", "2025-07-04T13:00:00Z", "2025-07-04 08:00:00"},
    {"EST5EDT", "1970-01-01T05:00:00Z", "1970-01-01 00:00:00"},
};

// The text that a conversion returns is also what it stores.
template <typename Convert>
void ExpectText(Convert convert, const std::string& expected, const char* form) {
  EXPECT_EQ(Take(convert(nullptr)), expected);
  std::tm record = {};
  EXPECT_EQ(Take(convert(&record)), expected);
  std::ostringstream stored;
  stored << std::put_time(&record, form);
  EXPECT_EQ(stored.str(), expected);
}

TEST(SysDates, TextsGoFromUtcToTheZoneAndBack) {
  for (const Moment& moment : kMoments) {
    if (moment.zone != Zone()) continue;
    ExpectText([&](std::tm* out) { return sys->UtcTextToLocalText(out, moment.utc); }, moment.local,
               kPlainForm);
  }
  for (const Moment& moment : kWayBack) {
    if (moment.zone != Zone()) continue;
    ExpectText([&](std::tm* out) { return sys->LocalTextToUtcText(out, moment.local); }, moment.utc,
               "%Y-%m-%dT%H:%M:%SZ");
  }
}

TEST(SysDates, TextsAreReadByPlace) {
  const std::string expected = Take(sys->UtcTextToLocalText(nullptr, "2025-10-15 09:30:05"));
  for (const char* const same :
       {"2025/10/15_09.30.05", "2025-10-15T09:30:05Z", "2025x10x15x09x30x05",
        "2025-10-15 09:30:05.999", "2025 10 15  9:30: 5"}) {
    EXPECT_EQ(Take(sys->UtcTextToLocalText(nullptr, same)), expected) << same;
  }
  // Fields beyond their range run over into the next.
  EXPECT_EQ(Take(sys->UtcTextToLocalText(nullptr, "2025-13-45 25:61:61")),
            Take(sys->UtcTextToLocalText(nullptr, "2026-02-15 02:02:01")));
}

TEST(SysDates, WhatIsNoDateIsEmptyAndStoresNothing) {
  for (const char* const bad :
       {static_cast<const char*>(nullptr), "", "2025-10-15 09:30:0", "1960-01-01 00:00:00",
        "3002-01-01 00:00:00", "9999-12-31 23:59:59", "0000-00-00 00:00:00", "no date in this text",
        "99999999999999999999999", "-9999999999999999999999", "2025--9999999999-999999999",
        "2025-10-15 99999999999999999999"}) {
    std::tm record = {};
    record.tm_year = 77;
    EXPECT_EQ(Take(sys->UtcTextToLocalText(&record, bad)), "") << bad;
    EXPECT_EQ(Take(sys->LocalTextToUtcText(&record, bad)), "") << bad;
    EXPECT_EQ(record.tm_year, 77);
  }
}

TEST(SysDates, FormatTimeReplacesWhatIsOutOfRangeAndFormatLocalTimeRefusesIt) {
  const std::string epoch = FormatTime(0);
  EXPECT_EQ(epoch, Take(sys->FormatLocalTime(0)));
  for (const int64_t time : {int64_t{-1}, INT64_MIN, int64_t{32535194400}, INT64_MAX}) {
    EXPECT_EQ(FormatTime(time), epoch) << time;
  }
  EXPECT_NE(FormatTime(32535194399), epoch);
  char buffer[64] = "";
  sys->FormatTime(1760520605, buffer, sizeof(buffer), "%Y is %y%%");
  EXPECT_STREQ(buffer, "2025 is 25%");
  EXPECT_EQ(Take(sys->FormatLocalTime(kEndOfYear3000)),
            Take(sys->UtcTextToLocalText(nullptr, "3000-12-31 23:59:59")));
  for (const int64_t time : {int64_t{-1}, INT64_MIN, kEndOfYear3000 + 86400, INT64_MAX}) {
    EXPECT_EQ(Take(sys->FormatLocalTime(time)), "") << time;
  }
}

TEST(SysDates, FormatCurrentTime) {
  const std::time_t before = std::time(nullptr);
  char buffer[64] = "";
  sys->FormatCurrentTime(buffer, sizeof(buffer), kPlainForm);
  EXPECT_GE(std::string(buffer), FormatTime(before));
  EXPECT_LE(std::string(buffer), FormatTime(std::time(nullptr)));
}

int CurrentHourDifference() {
  const std::time_t now = std::time(nullptr);
  const int local = std::localtime(&now)->tm_hour;
  return local - std::gmtime(&now)->tm_hour;
}

// As local text. The year starts in winter, when these zones have standard time.
std::string StartOfYearText(int year, int hour) {
  std::tm start = {};
  start.tm_year = year - 1900;
  start.tm_mday = 1;
  start.tm_hour = hour;
  return FormatTime(std::mktime(&start));
}

TEST(SysDates, FormatSecondsSince) {
  int difference = 0;
  std::string start;
  do {  // The difference of the hours may change while we look.
    difference = CurrentHourDifference();
    start = Take(sys->FormatSecondsSince2001(0));
  } while (difference != CurrentHourDifference());
  EXPECT_EQ(start, StartOfYearText(2001, difference));
  EXPECT_EQ(Take(sys->FormatSecondsSince(0, 2001)), start);
  for (const int64_t nothing : {int64_t{-1}, INT64_MIN}) {
    EXPECT_EQ(Take(sys->FormatSecondsSince2001(nothing)), start);
    EXPECT_EQ(Take(sys->FormatSecondsSince1970(nothing)), Take(sys->FormatSecondsSince1970(0)));
  }
  EXPECT_EQ(Take(sys->FormatSecondsSince(0, 2024)), StartOfYearText(2024, difference));
  // In nanoseconds, when the calendar ends before.
  const int64_t day = 86400;
  EXPECT_EQ(Take(sys->FormatSecondsSince2001(day * 1000000000)),
            Take(sys->FormatSecondsSince2001(day)));
  EXPECT_EQ(Take(sys->FormatSecondsSince2001(INT64_MAX)),
            Take(sys->FormatSecondsSince2001(INT64_MAX / 1000000000)));
  // Years that the calendar doesn't have count from the second before 1970.
  EXPECT_EQ(Take(sys->FormatSecondsSince(1, 1900)), Take(sys->FormatLocalTime(0)));
  EXPECT_EQ(Take(sys->FormatSecondsSince(1, INT32_MIN)), Take(sys->FormatLocalTime(0)));
  EXPECT_EQ(Take(sys->FormatSecondsSince(0, INT32_MAX)), "");

  if (Zone() != "UTC0") return;  // Elsewhere the hour depends on the moment.
  EXPECT_EQ(Take(sys->FormatSecondsSince1970(0)), "1970-01-01 00:00:00");
  EXPECT_EQ(Take(sys->FormatSecondsSince1970(1760520605000000000)), "2025-10-15 09:30:05");
  EXPECT_EQ(Take(sys->FormatSecondsSince2001(86399)), "2001-01-01 23:59:59");
}

}  // namespace
