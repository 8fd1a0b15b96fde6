// The calendar of the platform layer: the system's own on Windows, the stand-in elsewhere. CTest
// runs these in several zones, set as TZ.
#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>

#include "platform/win32.h"

namespace {

constexpr int64_t kLastTime = 32535215999;  // 3000-12-31 23:59:59 UTC

constexpr uint64_t Ticks(const FILETIME& time) {
  return (uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

FILETIME FileTime(uint64_t ticks) {
  FILETIME time;
  time.dwLowDateTime = static_cast<DWORD>(ticks);
  time.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
  return time;
}

constexpr uint64_t kTicksPerSecond = 10'000'000;
constexpr uint64_t kUnixEpochTicks = 116444736000000000;

TEST(Clock, RangeOfTheCalendar) {
  for (const __time64_t good : {__time64_t{0}, __time64_t{1760520605}, __time64_t{kLastTime}}) {
    EXPECT_NE(_localtime64(&good), nullptr) << good;
    EXPECT_NE(_gmtime64(&good), nullptr) << good;
  }
  for (const __time64_t bad : {__time64_t{-1}, __time64_t{INT64_MIN}, __time64_t{kLastTime + 86400},
                               __time64_t{INT64_MAX}}) {
    EXPECT_EQ(_localtime64(&bad), nullptr) << bad;
    EXPECT_EQ(_gmtime64(&bad), nullptr) << bad;
  }
}

TEST(Clock, ThereAndBack) {
  for (__time64_t time = 86400; time < kLastTime - 86400; time += 86400 * 997 + 12345) {
    std::tm utc = *_gmtime64(&time);
    EXPECT_EQ(_mkgmtime64(&utc), time);
    std::tm local = *_localtime64(&time);
    EXPECT_EQ(_mktime64(&local), time);  // tm_isdst tells which of two equal hours it is.
  }
}

TEST(Clock, WhatIsNoTime) {
  std::tm record = {};
  record.tm_mday = 1;
  for (const int year : {INT32_MIN, -1, 0, 60, 1102, 8099, INT32_MAX}) {
    record.tm_year = year;
    EXPECT_EQ(_mktime64(&record), -1) << year;
    EXPECT_EQ(_mkgmtime64(&record), -1) << year;
    EXPECT_EQ(record.tm_year, year);
  }
}

TEST(Clock, FileTimesAndFields) {
  SYSTEMTIME fields = {};
  fields.wYear = 2024;
  fields.wMonth = 2;
  fields.wDay = 29;
  fields.wHour = 23;
  fields.wMinute = 59;
  fields.wSecond = 58;
  fields.wMilliseconds = 7;
  FILETIME time;
  ASSERT_TRUE(SystemTimeToFileTime(&fields, &time));
  EXPECT_EQ(Ticks(time), kUnixEpochTicks + 1709251198 * kTicksPerSecond + 70000);
  SYSTEMTIME back = {};
  ASSERT_TRUE(FileTimeToSystemTime(&time, &back));
  EXPECT_EQ(back.wYear, 2024);
  EXPECT_EQ(back.wMonth, 2);
  EXPECT_EQ(back.wDay, 29);
  EXPECT_EQ(back.wDayOfWeek, 4);
  EXPECT_EQ(back.wHour, 23);
  EXPECT_EQ(back.wMinute, 59);
  EXPECT_EQ(back.wSecond, 58);
  EXPECT_EQ(back.wMilliseconds, 7);

  for (uint64_t ticks :
       {uint64_t{0}, uint64_t{1}, kUnixEpochTicks, uint64_t{9223149887999999999}}) {
    const FILETIME any = FileTime(ticks);
    ASSERT_TRUE(FileTimeToSystemTime(&any, &back)) << ticks;
    ASSERT_TRUE(SystemTimeToFileTime(&back, &time)) << ticks;
    EXPECT_EQ(Ticks(time), ticks / 10000 * 10000);
  }
  const FILETIME negative = FileTime(uint64_t{1} << 63);
  EXPECT_FALSE(FileTimeToSystemTime(&negative, &back));
}

TEST(Clock, FieldsThatNoCalendarHas) {
  const SYSTEMTIME good = {2023, 1, 0, 1, 0, 0, 0, 0};
  const struct {
    WORD SYSTEMTIME::*field;
    WORD value;
  } cases[] = {
      {&SYSTEMTIME::wYear, 1600},         {&SYSTEMTIME::wYear, 0},    {&SYSTEMTIME::wMonth, 0},
      {&SYSTEMTIME::wMonth, 13},          {&SYSTEMTIME::wDay, 0},     {&SYSTEMTIME::wDay, 32},
      {&SYSTEMTIME::wHour, 24},           {&SYSTEMTIME::wMinute, 60}, {&SYSTEMTIME::wSecond, 60},
      {&SYSTEMTIME::wMilliseconds, 1000},
  };
  for (const auto& [field, value] : cases) {
    SYSTEMTIME bad = good;
    bad.*field = value;
    FILETIME time;
    EXPECT_FALSE(SystemTimeToFileTime(&bad, &time)) << value;
  }
}

TEST(Clock, DosDates) {
  const struct {
    int64_t unix_time;
    WORD date;
    WORD time;
  } cases[] = {
      {315532800, 0x0021, 0x0000},   // 1980-01-01 00:00:00
      {1709251198, 0x585D, 0xBF7D},  // 2024-02-29 23:59:58
      {4354819198, 0xFF9F, 0xBF7D},  // 2107-12-31 23:59:58
  };
  for (const auto& [unix_time, date, time] : cases) {
    const FILETIME file_time =
        FileTime(kUnixEpochTicks + static_cast<uint64_t>(unix_time) * kTicksPerSecond);
    WORD dos_date = 0;
    WORD dos_time = 0;
    ASSERT_TRUE(FileTimeToDosDateTime(&file_time, &dos_date, &dos_time));
    EXPECT_EQ(dos_date, date);
    EXPECT_EQ(dos_time, time);
    FILETIME back;
    ASSERT_TRUE(DosDateTimeToFileTime(date, time, &back));
    EXPECT_EQ(Ticks(back), Ticks(file_time));
  }
  FILETIME time;
  EXPECT_FALSE(DosDateTimeToFileTime(0, 0, &time));            // Month and day 0
  EXPECT_FALSE(DosDateTimeToFileTime(0x585E, 0, &time));       // 2024-02-30
  EXPECT_FALSE(DosDateTimeToFileTime(0x0021, 0xC000, &time));  // 24 hours
}

TEST(Clock, LocalFileTimes) {
  const FILETIME utc = FileTime(kUnixEpochTicks + uint64_t{1760520605} * kTicksPerSecond);
  FILETIME local;
  FILETIME back;
  ASSERT_TRUE(FileTimeToLocalFileTime(&utc, &local));
  ASSERT_TRUE(LocalFileTimeToFileTime(&local, &back));
  EXPECT_EQ(Ticks(back), Ticks(utc));
  // By the offset of this moment.
  const std::time_t now = std::time(nullptr);
  std::tm now_local = *std::localtime(&now);
  const auto offset = static_cast<int64_t>(Ticks(local) - Ticks(utc)) / int64_t{kTicksPerSecond};
  EXPECT_EQ(_mkgmtime64(&now_local), now + offset);
}

TEST(Clock, LocalFieldsToUtc) {
  for (const int64_t time : {int64_t{1736942400}, int64_t{1752580800}}) {  // Winter and summer
    const std::tm local = *_localtime64(&time);
    const SYSTEMTIME fields = {static_cast<WORD>(local.tm_year + 1900),
                               static_cast<WORD>(local.tm_mon + 1),
                               0,
                               static_cast<WORD>(local.tm_mday),
                               static_cast<WORD>(local.tm_hour),
                               static_cast<WORD>(local.tm_min),
                               static_cast<WORD>(local.tm_sec),
                               123};
    SYSTEMTIME utc = {};
    FILETIME file_time = {};
    ASSERT_TRUE(TzSpecificLocalTimeToSystemTime(nullptr, &fields, &utc));
    ASSERT_TRUE(SystemTimeToFileTime(&utc, &file_time));
    EXPECT_EQ(Ticks(file_time),
              kUnixEpochTicks + static_cast<uint64_t>(time) * kTicksPerSecond + 1'230'000);
  }
}

}  // namespace
