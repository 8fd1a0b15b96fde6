// File times from text.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <string>

#include "support/work_folder.h"
#include "temvar/temvar.h"

namespace {

namespace fs = std::filesystem;

class FileTimestampTest : public temvar_test::WorkFolderTest {
 protected:
  bool Set(const char* name, const char* time) {
    return TmvUtilityFile()->SetFileTimestamp(Path(name).c_str(), time);
  }

  // Seconds since 1970 of a file's last-write time.
  int64_t WriteTime(const char* name) {
    const auto time = std::chrono::file_clock::to_sys(fs::last_write_time(FilePath(name)));
    return std::chrono::floor<std::chrono::seconds>(time).time_since_epoch().count();
  }
};
TEMVAR_IN_EVERY_PLACE(FileTimestampTest);

// The runtime's own idea of a local time.
int64_t LocalTime(int year, int month, int day, int hour, int minute, int second) {
  std::tm fields{};
  fields.tm_year = year - 1900;
  fields.tm_mon = month - 1;
  fields.tm_mday = day;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  fields.tm_isdst = -1;
  return std::mktime(&fields);
}

TEST_P(FileTimestampTest, SetsALocalTime) {
  PutFile("f", "content");
  EXPECT_TRUE(Set("f", "2024-01-31 17:05:09"));
  EXPECT_EQ(WriteTime("f"), LocalTime(2024, 1, 31, 17, 5, 9));
  EXPECT_TRUE(Set("f", "2024-07-31 23:59:59")) << "summer";
  EXPECT_EQ(WriteTime("f"), LocalTime(2024, 7, 31, 23, 59, 59));
  EXPECT_TRUE(Set("f", "2024-02-29 24:05:09")) << "24 is hour 0 of the same day";
  EXPECT_EQ(WriteTime("f"), LocalTime(2024, 2, 29, 0, 5, 9));
  EXPECT_TRUE(Set("f", "1999-1-2 3:4:5")) << "digits are not counted";
  EXPECT_EQ(WriteTime("f"), LocalTime(1999, 1, 2, 3, 4, 5));
  EXPECT_EQ(GetFile("f"), "content");
}

TEST_P(FileTimestampTest, RefusesTextThatIsNoTime) {
  PutFile("f", "");
  ASSERT_TRUE(Set("f", "2024-01-31 17:05:09"));
  const int64_t before = WriteTime("f");
  const char* const cases[] = {nullptr,
                               "",
                               "now",
                               "2024-01-31",
                               "2024-01-31 17:05",
                               "2024-01-31T17:05:09",
                               "2024-00-31 17:05:09",
                               "2024-13-31 17:05:09",
                               "2024-02-30 17:05:09",
                               "2023-02-29 17:05:09",
                               "2024-01-32 17:05:09",
                               "2024-01-31 25:05:09",
                               "2024-01-31 17:60:09",
                               "2024-01-31 17:05:60",
                               "99999999999999-01-31 17:05:09",
                               "-- ::",
                               "2024-01-31 -1:05:09",
                               "\xFF-\xFF"};
  for (const char* text : cases) {
    EXPECT_FALSE(Set("f", text)) << (text == nullptr ? "null" : text);
  }
  EXPECT_EQ(WriteTime("f"), before);
}

TEST_P(FileTimestampTest, RefusesDirectoriesAndFilesThatAreOpen) {
  MakeFolder("folder");
  EXPECT_FALSE(Set("folder", "2024-01-31 17:05:09"));
  EXPECT_FALSE(Set("missing", "2024-01-31 17:05:09"));

  PutFile("f", "");
  for (const char* mode : {"rb", "ab"}) {
    FILE* const stream = TmvUtilityFile()->OpenFile(Path("f").c_str(), mode);
    ASSERT_NE(stream, nullptr);
    EXPECT_FALSE(Set("f", "2024-01-31 17:05:09")) << mode;
    std::fclose(stream);
    EXPECT_TRUE(Set("f", "2024-01-31 17:05:09")) << mode;
  }
}

}  // namespace
