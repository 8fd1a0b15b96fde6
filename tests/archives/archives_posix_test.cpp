// What archives ask of the file system, counted by functions that take the place of the runtime's;
// files whose reading never ends; and archives exchanged with other programs, which are found when
// a test runs: one without its program is skipped with the name of what it needs. POSIX systems
// alone.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>

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

class PeersTest : public ArchiveTest {
 protected:
  // Runs a shell command in the work folder; its exit status is 0.
  bool Shell(const std::string& command) const {
    const std::string line = "cd '" + Path() + "' && (" + command + ") > peer.log 2>&1 < /dev/null";
    const bool done = std::system(line.c_str()) == 0;
    log_ = GetFile("peer.log");
    return done;
  }

  static bool Has(const std::string& program) {
    return std::system(("command -v " + program + " > /dev/null 2>&1").c_str()) == 0;
  }

  // Files of several kinds, in "tree".
  void MakeTree() const {
    MakeFolder("tree/sub/\xC3\xA9t\xC3\xA9");
    MakeFolder("tree/empty");
    PutFile("tree/text.txt", std::string(5000, 'a') + "b");
    PutFile("tree/nothing", "");
    PutFile("tree/sub/noise.bin", NoisyBytes(300'000));
    PutFile("tree/sub/\xC3\xA9t\xC3\xA9/\xE6\xBC\xA2.txt", "names beyond ASCII");
  }

  // Runs the command of each program that is there, and what checks its result.
  void WithEach(const std::vector<std::pair<std::string, std::string>>& peers,
                const std::function<void()>& check) {
    std::set<std::string> missing;
    for (const auto& [program, command] : peers) {
      SCOPED_TRACE(command);
      if (!Has(program)) {
        missing.insert(program);
        continue;
      }
      std::filesystem::remove(FilePath("a.zip"));
      ASSERT_TRUE(Shell(command)) << log_;
      TakeFreshDestination();
      check();
    }
    if (!missing.empty()) GTEST_SKIP() << "not there: " << testing::PrintToString(missing);
  }

  void ExpectSameFiles(const std::string& folder) const {
    for (const std::string& name : Tree("tree")) {
      if (name.back() == '/') continue;
      SCOPED_TRACE(name);
      ASSERT_TRUE(Exists(folder + "/" + name));
      EXPECT_TRUE(GetFile(folder + "/" + name) == GetFile("tree/" + name));
    }
  }

  mutable std::string log_;
};
TEMVAR_IN_A_PLAIN_PLACE(PeersTest);

TEST_P(PeersTest, UnpacksWhatOthersPack) {
  MakeTree();
  WithEach({{"zip", "cd tree && zip -r ../a.zip ."},
            {"zip", "cd tree && zip -rD ../a.zip ."},           // No entries for directories.
            {"zip", "cd tree && zip -r0 ../a.zip ."},           // Stored.
            {"zip", "cd tree && zip -r - . | cat > ../a.zip"},  // Sizes after the data, 64 bits.
            {"7z", "cd tree && 7z a -tzip ../a.zip ."},
            {"7z", "cd tree && 7z a -tzip -mx0 -mcu ../a.zip ."},  // UTF-8 flag.
            {"bsdtar", "bsdtar --format zip -cf a.zip -C tree ."},
            {"bsdtar", "bsdtar --format zip --options zip:compression=store -cf a.zip -C tree ."}},
           [this] {
             Extract();
             ExpectSameFiles(Out(""));
           });
}

TEST_P(PeersTest, OthersReadWhatItPacks) {
  MakeTree();
  const tmv::Zip zip = tmv::MakeZip();
  std::filesystem::remove_all(FilePath("tree/sub/\xC3\xA9t\xC3\xA9"));
  zip->AddDirectory(Path("tree").c_str(), nullptr);
  zip->AddFile(Path("gone").c_str(), "an entry left open");
  ASSERT_TRUE(zip->WriteArchive(Path("ours.zip").c_str(), nullptr));
  WithEach({{"unzip", "unzip -t ours.zip && unzip -q ours.zip -d seen"},
            {"7z", "7z t ours.zip && 7z x -oseen ours.zip"},
            {"bsdtar", "mkdir seen && bsdtar -xf ours.zip -C seen"},
            {"python3", "python3 -m zipfile -e ours.zip seen"}},
           [this] {
             ExpectSameFiles("seen");
             std::filesystem::remove_all(FilePath("seen"));
           });
}

}  // namespace
