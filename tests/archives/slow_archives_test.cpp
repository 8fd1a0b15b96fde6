// What archives beyond the limits of the plain ZIP format do. Takes minutes and 15 GB of disk: only
// built with TEMVAR_SLOW_TESTS, and labelled `slow`.
//
// minizip 1.1 recognises 64-bit fields of an entry only where `long` has 32 bits, as on Windows:
// elsewhere it looks for such an entry at the position 4 GiB - 1.
#include <algorithm>
#include <fstream>

#include "archives/archive_test.h"

namespace {

using temvar_test::NoisyBytes;

constexpr bool kReads64BitFields = sizeof(long) == 4;
constexpr uint64_t kGigabyte = uint64_t{1} << 30;

class SlowArchivesTest : public temvar_test::ArchiveTest {
 protected:
  void SetUp() override { MakeFolder("data"); }

  bool Pack() const {
    const tmv::Zip zip = tmv::MakeZip();
    zip->AddDirectory(Path("data").c_str(), nullptr);
    return zip->WriteArchive(Archive().c_str(), nullptr);
  }
};
TEMVAR_IN_A_PLAIN_PLACE(SlowArchivesTest);

// Its sizes stand in the directory alone; readers that compare it with the header of the entry
// refuse it, and minizip is one of them.
TEST_P(SlowArchivesTest, AFileOf5GigabytesIsPackedWholeButNotUnpacked) {
  ASSERT_TRUE(TmvUtilityFile()->CreateFileOfSize(Path("data/large").c_str(), 5 * kGigabyte));
  EXPECT_TRUE(Pack());
  const Extraction run = Extract();
  EXPECT_FALSE(run.result);
  EXPECT_EQ(run.output.out, temvar_test::ErrorLine(-103, "unzOpenCurrentFilePassword"));
  EXPECT_FALSE(Exists("out/large"));
}

TEST_P(SlowArchivesTest, FilesBehindTheFirst4GigabytesOfAnArchive) {
  for (int i = 0; i < 6; ++i) {
    std::ofstream file(FilePath("data/part" + std::to_string(i)), std::ios::binary);
    const std::string noise = NoisyBytes(16 << 20, static_cast<uint32_t>(i));
    for (int written = 0; written < 50; ++written) file << noise;
  }
  PutFile("data/z_last", "behind 4 GB");
  EXPECT_TRUE(Pack());
  EXPECT_GT(std::filesystem::file_size(FilePath("a.zip")), 4 * kGigabyte);
  const Extraction run = Extract();
  EXPECT_EQ(run.result, kReads64BitFields) << run.output.out;
  EXPECT_TRUE(Exists("out/part0"));
  EXPECT_EQ(Exists("out/z_last"), kReads64BitFields);
}

// The end record counts 65,535 at most, and there is no 64-bit one beside it in an archive this
// small: readers that go by the count stop there, this library among them.
TEST_P(SlowArchivesTest, Of70000EntriesTheFirst65535AreUnpacked) {
  for (int i = 0; i < 70'000; ++i) {
    if (i % 1000 == 0) MakeFolder("data/" + std::to_string(100 + i / 1000));
    PutFile("data/" + std::to_string(100 + i / 1000) + "/" + std::to_string(i), "x");
  }
  EXPECT_TRUE(Pack());
  EXPECT_TRUE(Extract().result);
  const auto names = Tree("out");
  EXPECT_EQ(
      std::count_if(names.begin(), names.end(), [](auto& name) { return name.back() != '/'; }),
      65'535);
}

}  // namespace
