// Times of entries, which are local. CTest runs this in several time zones.
//
// Like Windows, the library converts by the offset from UTC that holds now, not at the time given:
// summer entries read in winter are off by the hour, but a packed file comes back with its own
// time.
#include <chrono>
#include <ctime>

#include "archives/archive_test.h"

namespace {

using namespace test;
using namespace std::chrono_literals;
using std::chrono::sys_days;
using std::chrono::sys_seconds;

class EntryTimesTest : public ArchiveTest {
 protected:
  sys_seconds TimeOf(std::string_view file) const {
    const auto time = std::filesystem::last_write_time(FilePath(file));
    return std::chrono::round<std::chrono::seconds>(std::chrono::file_clock::to_sys(time));
  }

  void SetTime(std::string_view file, sys_seconds time) const {
    std::filesystem::last_write_time(FilePath(file), std::chrono::file_clock::from_sys(time));
  }

  // Local time minus UTC at this moment, by the library's conversion of a local text of today.
  std::chrono::seconds OffsetNow() const {
    const auto today = std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
    const std::time_t midnight = std::chrono::system_clock::to_time_t(today);
    char noon[32] = {};
    std::strftime(noon, sizeof(noon), "%Y-%m-%d 12:00:00", std::gmtime(&midnight));
    PutFile("now", "");
    EXPECT_TRUE(TmvUtilityFile()->SetFileTimestamp(Path("now").c_str(), noon));
    return today + 12h - TimeOf("now");
  }
};
TEMVAR_IN_A_PLAIN_PLACE(EntryTimesTest);

// Dates as entries have them, and the same in local time.
const std::pair<uint32_t, sys_seconds> kMoments[] = {
    {DosDate(1980, 1, 1, 0, 0, 0), sys_days{1980y / 1 / 1}},
    {DosDate(2024, 1, 15, 23, 59, 58), sys_days{2024y / 1 / 15} + 23h + 59min + 58s},
    {DosDate(2024, 7, 15, 12, 30, 2), sys_days{2024y / 7 / 15} + 12h + 30min + 2s},
    // Minutes around both changes of the summer time in Central Europe.
    {DosDate(2024, 3, 31, 2, 30, 0), sys_days{2024y / 3 / 31} + 2h + 30min},
    {DosDate(2024, 10, 27, 2, 30, 0), sys_days{2024y / 10 / 27} + 2h + 30min},
    // The test's own library counts file times in 32 bits on 32-bit Windows (mingw-w64 10).
    {DosDate(2037, 12, 31, 23, 59, 58), sys_days{2037y / 12 / 31} + 23h + 59min + 58s},
};

TEST_P(EntryTimesTest, TheOffsetIsThatOfTheZone) {
  // CTest says what the zone that it sets may add; no zone is further off than this.
  const std::chrono::seconds offset = OffsetNow();
  EXPECT_LE(std::chrono::abs(offset), 14h);
  if (const char* const expected = std::getenv("TEMVAR_TEST_OFFSETS")) {
    EXPECT_THAT(expected, testing::HasSubstr(";" + std::to_string(offset.count()) + ";"));
  }
}

TEST_P(EntryTimesTest, UnpackedFilesGetTheEntrysTime) {
  for (const auto& [dosDate, local] : kMoments) {
    PutArchive({{.name = "f", .data = "x", .dosDate = dosDate}});
    Extract();
    EXPECT_EQ(TimeOf("out/f"), local - OffsetNow());
  }
}

TEST_P(EntryTimesTest, ADateThatNoCalendarHasLeavesTheTimeOfUnpacking) {
  PutArchive({{.name = "f", .data = "x", .dosDate = 0},
              {.name = "g", .data = "x", .dosDate = 0xFFFFFFFF}});
  Extract();
  const auto now = std::chrono::system_clock::now();
  EXPECT_LT(now - TimeOf("out/f"), 1h);
  EXPECT_LT(now - TimeOf("out/g"), 1h);
}

TEST_P(EntryTimesTest, PackedFilesKeepTheirTime) {
  const tmv::Zip zip = tmv::MakeZip();
  zip->AddFile(Path("f").c_str(), "");
  for (const auto& [dosDate, local] : kMoments) {
    PutFile("f", "x");
    const sys_seconds time = local - OffsetNow();
    SetTime("f", time);
    ASSERT_TRUE(zip->WriteArchive(Archive().c_str(), nullptr));
    const auto entries = ReadZip(GetFile("a.zip"));
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].dosDate, dosDate);
    Extract();
    EXPECT_EQ(TimeOf("out/f"), time);
    // The format counts in twos; Windows rounds an odd second up and Wine 8 rounds it down.
    SetTime("f", time + 1s);
    ASSERT_TRUE(zip->WriteArchive(Archive().c_str(), nullptr));
    Extract();
    EXPECT_THAT(TimeOf("out/f"), testing::AnyOf(time, time + 2s));
  }
}

}  // namespace
