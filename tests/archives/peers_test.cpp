// Archives and buffers exchanged with other programs. They are found when a test runs, and a test
// without its program is skipped with the name of what it needs. Runs where there is a POSIX shell.
#include <cstdlib>
#include <functional>

#include "archives/archive_test.h"

namespace {

using namespace test;

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
