// What archives ask of the file system, counted by functions that take the place of the runtime's,
// and files whose reading never ends. POSIX systems alone.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "archives/archive_test.h"

namespace {

int calls = 0;

}  // namespace

extern "C" int fstatat(int folder, const char* path, struct stat* info, int flags) {
  ++calls;
  return static_cast<int>(syscall(SYS_newfstatat, folder, path, info, flags));
}

extern "C" int mkdir(const char* path, mode_t mode) {
  ++calls;
  return static_cast<int>(syscall(SYS_mkdirat, AT_FDCWD, path, mode));
}

extern "C" off_t lseek(int file, off_t offset, int origin) noexcept {
  ++calls;
  return syscall(SYS_lseek, file, offset, origin);
}

namespace {

using namespace test;

using FileCallsTest = ArchiveTest;
TEMVAR_IN_A_PLAIN_PLACE(FileCallsTest);

// In a destination that is new, one that was there, and one with all folders in it.
TEST_P(FileCallsTest, AWayIsLookedAtOnce) {
  std::vector<ZipEntry> entries = {{.name = "a"}};
  std::string blocked = "a/";
  std::string open = "b/";
  for (int i = 0; i < 100; ++i) blocked += "a/", open += "b/";
  for (int i = 0; i < 50; ++i) {
    entries.push_back({.name = blocked + std::to_string(i)});
    entries.push_back({.name = open + std::to_string(i)});
  }
  PutArchive(entries);
  for (const char* place : {"new", "there", "full"}) {
    if (place == std::string("there")) {
      std::filesystem::remove_all(FilePath("out"));
      MakeFolder("out");
    }
    calls = 0;
    Extract();
    EXPECT_GE(calls, 100) << place;
    EXPECT_LE(calls, 500) << place;
  }
}

TEST_P(FileCallsTest, ClaimsBeyondTheEndCostNoCalls) {
  std::string archive = ZipBytes({{.name = "a"}});
  archive.replace(archive.find("PK\1\2") + 30, 2, "\xFF\xFF");  // The size of an extra field.
  PutFile("a.zip", archive);
  calls = 0;
  OutputOf([&] { TmvUtilityUnzip()->ExtractArchive(Archive().c_str(), Destination().c_str()); });
  EXPECT_LE(calls, 50);
}

TEST_P(FileCallsTest, PipesAndDevicesAreNotRead) {
  MakeFolder("data");
  PutFile("data/file", "x");
  ASSERT_EQ(mkfifo(Path("data/pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink("pipe", FilePath("data/link"));
  const tmv::Zip zip = tmv::MakeZip();
  zip->AddDirectory(Path("data").c_str(), nullptr);
  EXPECT_TRUE(zip->WriteArchive(Archive().c_str(), nullptr));
  EXPECT_EQ(ReadZip(GetFile("a.zip")).size(), 1u);
  zip->AddFile(Path("data/pipe").c_str(), "");
  const Output output =
      OutputOf([&] { EXPECT_TRUE(zip->WriteArchive(Archive().c_str(), nullptr)); });
  EXPECT_EQ(output.out, "error in opening " + Path("data/pipe") + " for reading\n");
}

}  // namespace
