// File times from text.
#include <chrono>
#include <cstdio>
#include <ctime>
#include <iomanip>
#include <sstream>

#include "support/work_folder.h"
#include "temvar/temvar.h"

namespace {

using namespace test;
namespace fs = std::filesystem;

class FileTimestampTest : public WorkFolderTest {
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
int64_t LocalTime(const char* text) {
  std::tm fields{};
  std::istringstream(text) >> std::get_time(&fields, "%Y-%m-%d %H:%M:%S");
  fields.tm_isdst = -1;
  return std::mktime(&fields);
}

TEST_P(FileTimestampTest, SetsALocalTime) {
  PutFile("f", "content");
  const std::pair<const char*, const char*> cases[] = {
      {"2024-01-31 17:05:09", "2024-01-31 17:05:09"},
      {"2024-07-31 23:59:59", "2024-07-31 23:59:59"},  // Summer
      {"2024-02-29 24:05:09", "2024-02-29 00:05:09"},  // 24 is hour 0 of the same day.
      {"1999-1-2 3:4:5", "1999-01-02 03:04:05"},       // Digits are not counted.
  };
  for (const auto& [given, time] : cases) {
    EXPECT_TRUE(Set("f", given)) << given;
    EXPECT_EQ(WriteTime("f"), LocalTime(time)) << given;
  }
  EXPECT_EQ(GetFile("f"), "content");
}

TEST_P(FileTimestampTest, RefusesTextThatIsNoTime) {
  PutFile("f", "");
  ASSERT_TRUE(Set("f", "2024-01-31 17:05:09"));
  const int64_t before = WriteTime("f");
  for (const std::string text :
       {"", "now", "2024-01-31", "2024-01-31 17:05", "2024-01-31T17:05:09", "2024-00-31 17:05:09",
        "2024-13-31 17:05:09", "2024-02-30 17:05:09", "2023-02-29 17:05:09", "2024-01-32 17:05:09",
        "2024-01-31 25:05:09", "2024-01-31 17:60:09", "2024-01-31 17:05:60", "2024-01-31 -1:05:09",
        "99999999999999-01-31 17:05:09", "-- ::", "\xFF-\xFF"}) {
    EXPECT_FALSE(Set("f", text.c_str())) << text;
  }
  EXPECT_FALSE(Set("f", nullptr));
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
