// Trees with links, without rights and copied into themselves. Not built for Windows: Wine (seen in
// 8.0) makes no symbolic links and copies a tree into itself, which Windows refuses, and rights
// there are no permission bits.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>

#include "support/work_folder.h"
#include "temvar/temvar.h"

namespace {

using namespace test;
namespace fs = std::filesystem;

TMVUtilityFile* const files = TmvUtilityFile();

class FileLinksTest : public WorkFolderTest {
 protected:
  void LinkTo(const std::string& target, const std::string& name) {
    fs::create_symlink(target, FilePath(name));
  }

  uint64_t SizeOf(const std::string& name) { return files->DirectorySize(Path(name).c_str(), 0); }
};
TEMVAR_IN_EVERY_PLACE(FileLinksTest);

constexpr uid_t kNobody = 65534;

// Runs `work` as a user without rights, in a child; false if it says so or dies.
bool RunWithoutRights(const std::function<bool()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    const bool dropped = setgid(kNobody) == 0 && setuid(kNobody) == 0;
    _exit(dropped && work() ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST_P(FileLinksTest, SizeFollowsLinks) {
  MakeFolder("tree");
  MakeFolder("outside");
  PutFile("outside/file", "12345");
  LinkTo("../outside", "tree/folder link");
  LinkTo("../outside", "tree/second link");
  LinkTo("../outside/file", "tree/file link");
  LinkTo("nowhere", "tree/dangling");
  LinkTo("tree", "link to tree");
  EXPECT_EQ(SizeOf("tree"), 15u) << "each way counts";
  EXPECT_EQ(SizeOf("link to tree"), 15u);
}

TEST_P(FileLinksTest, SizeComesToAnEndWhereLinksLeadBack) {
  MakeFolder("tree/a");
  MakeFolder("tree/b");
  PutFile("tree/a/file", "12345");
  // Several ways back from each folder: a walk that only the length of paths ends would take
  // longer than the world.
  for (const char* folder : {"tree", "tree/a", "tree/b"}) {
    LinkTo(".", std::string(folder) + "/self");
    LinkTo(Folder() / "tree", std::string(folder) + "/top");
    LinkTo("..", std::string(folder) + "/up");
  }
  fs::remove(FilePath("tree/up"));
  LinkTo("../b", "tree/a/to b");
  LinkTo("../a", "tree/b/to a");
  // As tree/a, and as tree/b/to a.
  EXPECT_EQ(SizeOf("tree"), 10u);

  // Folders that all link to one another have 20! ways through them.
  for (int from = 0; from < 20; ++from) {
    MakeFolder("net/" + std::to_string(from));
    for (int to = 0; to < 20; ++to) {
      if (to == from) continue;
      LinkTo("../" + std::to_string(to), "net/" + std::to_string(from) + "/" + std::to_string(to));
    }
  }
  PutFile("net/0/file", "1");
  EXPECT_EQ(SizeOf("net"), 21u) << "itself, 19 links in the tree, once below links";
}

// More levels than a process may have files open.
TEST(DeepTrees, AreMadeSummedUpCopiedAndDeleted) {
  const std::string top = fs::temp_directory_path().string() + "/temvar-deep";
  files->DeleteDirectoryTree(top.c_str());
  std::string deep = top + "/tree";
  for (int level = 0; level < 1200; ++level) deep += "/d";
  ASSERT_TRUE(files->CreateDirectoryPath(deep.c_str()));
  ASSERT_TRUE(files->WriteWholeFile("12345", 5, (deep + "/file").c_str()));
  EXPECT_EQ(files->DirectorySize(top.c_str(), 0), 5u);
  EXPECT_TRUE(files->CopyDirectoryTree((top + "/tree").c_str(), (top + "/copy").c_str()));
  EXPECT_EQ(files->DirectorySize(top.c_str(), 0), 10u);
  EXPECT_TRUE(files->DeleteDirectoryTree(top.c_str()));
  EXPECT_FALSE(files->PathExists(top.c_str()));
}

TEST_P(FileLinksTest, DeletingATreeLeavesWhatItsLinksLeadTo) {
  MakeFolder("outside");
  PutFile("outside/file", "kept");
  MakeFolder("tree");
  LinkTo("../outside", "tree/folder link");
  LinkTo("../outside/file", "tree/file link");
  LinkTo(".", "tree/self");
  EXPECT_TRUE(files->DeleteDirectoryTree(Path("tree").c_str()));
  EXPECT_FALSE(Exists("tree"));
  EXPECT_EQ(GetFile("outside/file"), "kept");

  for (const char* ending : {"", "\\", "/", "//", "/.", "/sub/..", "\\.\\"}) {
    LinkTo("outside", "link");
    EXPECT_TRUE(files->DeleteDirectoryTree((Path("link") + ending).c_str()));
    EXPECT_FALSE(Exists("link"));
    EXPECT_EQ(GetFile("outside/file"), "kept") << ending;
  }
}

TEST_P(FileLinksTest, CopyingATreeTwiceCopiesLinksTimesAndRights) {
  MakeFolder("tree/closed");
  PutFile("tree/file", "content");
  PutFile("tree/closed/file", "inner");
  LinkTo("file", "tree/link");
  LinkTo(".", "tree/self");
  ASSERT_EQ(mkfifo(FilePath("tree/pipe").c_str(), 0600), 0);
  const auto old = fs::last_write_time(FilePath("tree/closed")) - std::chrono::hours(100);
  for (const char* name : {"tree/closed/file", "tree/closed"}) {
    fs::permissions(FilePath(name), fs::perms::owner_read | fs::perms::owner_exec);
    fs::last_write_time(FilePath(name), old);
  }
  fs::permissions(Folder(), fs::perms::all);
  const std::string from = Path("tree"), to = Path("copies");
  const auto copy = [&] { return files->CopyDirectoryTree(from.c_str(), to.c_str()); };
  MakeFolder("copies");
  if (geteuid() == 0) {
    ASSERT_EQ(system(("chown -R -h 65534 '" + Folder().string() + "'").c_str()), 0);
    EXPECT_TRUE(RunWithoutRights([&] { return copy() && copy(); }));
  } else {
    EXPECT_TRUE(copy() && copy());
  }
  EXPECT_EQ(fs::read_symlink(FilePath("copies/tree/link")), "file");
  EXPECT_EQ(fs::read_symlink(FilePath("copies/tree/self")), ".");
  EXPECT_EQ(GetFile("copies/tree/closed/file"), "inner");
  EXPECT_FALSE(Exists("copies/tree/pipe"));
  EXPECT_EQ(fs::last_write_time(FilePath("copies/tree/closed")), old);
  EXPECT_EQ(fs::last_write_time(FilePath("copies/tree/closed/file")), old);
  EXPECT_EQ(fs::status(FilePath("copies/tree/closed")).permissions(),
            fs::perms::owner_read | fs::perms::owner_exec);
  for (const char* name : {"tree/closed", "copies/tree/closed"}) {
    fs::permissions(FilePath(name), fs::perms::owner_all);
  }
}

TEST_P(FileLinksTest, ForeignLocksAndIdlePipesStopNobody) {
  PutFile("file", "content");
  const int foreign = open(FilePath("file").c_str(), O_RDWR);
  ASSERT_EQ(flock(foreign, LOCK_EX), 0);
  EXPECT_EQ(files->FileContainsText(Path("file").c_str(), "content"), 1);
  EXPECT_TRUE(files->SetFileTimestamp(Path("file").c_str(), "2024-01-31 17:05:09"));
  close(foreign);
  ASSERT_EQ(mkfifo(FilePath("pipe").c_str(), 0600), 0);
  EXPECT_EQ(files->FileContainsText(Path("pipe").c_str(), ""), 0);
  EXPECT_FALSE(files->WriteWholeFile("x", 1, Path("pipe").c_str()));
}

TEST_P(FileLinksTest, NoTreeIsCopiedIntoItself) {
  MakeFolder("tree/sub");
  PutFile("tree/sub/file", "content");
  LinkTo("tree/sub", "way in");
  for (const char* destination : {"tree", "tree/sub", "tree/new", "tree/sub/new/deep", "way in"}) {
    EXPECT_FALSE(files->CopyDirectoryTree(Path("tree").c_str(), Path(destination).c_str()))
        << destination;
  }
  EXPECT_EQ(SizeOf("tree"), 7u);
  EXPECT_FALSE(Exists("tree/sub/new"));
}

TEST_P(FileLinksTest, NamesThatWideTextCannotSayAreCounted) {
  MakeFolder("tree");
  PutFile("tree/ok", "1");
  std::ofstream(FilePath("tree").string() + "/bad\xFFname") << "22";
  // A backslash in a name must not turn into a separator: this one would lead out of the tree.
  const std::string trap = FilePath("tree").string() + "/..\\..\\";
  ASSERT_EQ(mkdir(trap.c_str(), 0777), 0);
  std::ofstream(FilePath("tree").string() + "/back\\slash") << "333";
  EXPECT_EQ(SizeOf("tree"), 6u);
}

}  // namespace
