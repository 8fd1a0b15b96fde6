// Directory trees: make, copy, delete, sum up.
#include "support/work_folder.h"
#include "temvar/temvar.h"

namespace {

using namespace test;
namespace fs = std::filesystem;

TMVUtilityFile* const files = TmvUtilityFile();

constexpr char kShellLimit[] = "the shell knows no long paths: see RefusesWhatTheShellCannotTake";

class FileTreesTest : public WorkFolderTest {
 protected:
  // A tree of three levels with 9 bytes in 4 files and an empty folder.
  void MakeTree() {
    MakeFolder("tree/sub/δέντρο");
    MakeFolder("tree/empty");
    PutFile("tree/a.txt", "a");
    PutFile("tree/.hidden", "hh");
    PutFile("tree/sub/b.txt", "bbb");
    PutFile("tree/sub/δέντρο/木😀.txt", "ccc");
  }

  void ExpectTreeAt(const std::string& top) {
    EXPECT_EQ(GetFile(top + "/a.txt"), "a");
    EXPECT_EQ(GetFile(top + "/.hidden"), "hh");
    EXPECT_EQ(GetFile(top + "/sub/b.txt"), "bbb");
    EXPECT_EQ(GetFile(top + "/sub/δέντρο/木😀.txt"), "ccc");
    EXPECT_TRUE(fs::is_directory(FilePath(top + "/empty")));
  }

  bool Delete(const std::string& path) { return files->DeleteDirectoryTree(path.c_str()); }
  bool Copy(const char* from, const char* to) {
    return files->CopyDirectoryTree(Path(from).c_str(), Path(to).c_str());
  }
};
TEMVAR_IN_EVERY_PLACE(FileTreesTest);

TEST_P(FileTreesTest, CreatesMissingParents) {
  EXPECT_TRUE(files->CreateDirectoryPath(Path("one/δύο/三").c_str()));
  EXPECT_TRUE(fs::is_directory(FilePath("one/δύο/三")));
  EXPECT_FALSE(files->CreateDirectoryPath(Path("one/δύο/三").c_str())) << "exists";
  EXPECT_TRUE(files->CreateDirectoryPath((Path("one") + "/four\\five\\").c_str()));
  EXPECT_TRUE(fs::is_directory(FilePath("one/four/five")));
  PutFile("file", "");
  EXPECT_FALSE(files->CreateDirectoryPath(Path("file").c_str()));
  EXPECT_FALSE(files->CreateDirectoryPath(Path("file/inner").c_str()));
}

TEST_P(FileTreesTest, DeletesTreesAndSingleFiles) {
  if (IsBeyondTheShell()) GTEST_SKIP() << kShellLimit;
  for (const char* ending : {"", "\\", "/"}) {
    MakeTree();
    EXPECT_TRUE(Delete(Path("tree") + ending)) << ending;
    EXPECT_FALSE(Exists("tree"));
  }
  PutFile("single", "x");
  EXPECT_TRUE(Delete(Path("single")));
  EXPECT_FALSE(Exists("single"));
  EXPECT_FALSE(Delete(Path("single"))) << "missing";
}

TEST_P(FileTreesTest, GoesByTheCurrentFolderAndDeletesItForNoPath) {
  if (IsBeyondTheShell()) GTEST_SKIP() << kShellLimit;
  PutFile("keep", "x");
  fs::current_path(Folder());
  EXPECT_TRUE(files->CreateDirectoryPath("relative/inner"));
  EXPECT_TRUE(fs::is_directory(FilePath("relative/inner")));
  for (const char* path : {"", "\\", "C:", "C:\\", "\xFF"}) {
    EXPECT_FALSE(Delete(path)) << path;
    EXPECT_TRUE(Exists("keep")) << path;
  }
  fs::current_path(Folder().root_path());
}

TEST_P(FileTreesTest, CopyBecomesTheDestinationOrGoesIntoItOrOverWhatIsThere) {
  if (IsBeyondTheShell()) GTEST_SKIP() << kShellLimit;
  MakeTree();
  EXPECT_TRUE(Copy("tree", "copy"));
  ExpectTreeAt("copy");
  EXPECT_TRUE(Copy("tree", "copy")) << "into the directory that exists now";
  ExpectTreeAt("copy/tree");
  PutFile("copy/tree/sub/b.txt", "something older and longer");
  PutFile("copy/tree/sub/stays.txt", "stays");
  EXPECT_TRUE(Copy("tree", "copy")) << "over files, and together with what else is there";
  ExpectTreeAt("copy/tree");
  EXPECT_EQ(GetFile("copy/tree/sub/stays.txt"), "stays");
  ExpectTreeAt("tree");
  EXPECT_FALSE(Copy("missing", "copy"));
}

TEST_P(FileTreesTest, CopiesSingleFiles) {
  if (IsBeyondTheShell()) GTEST_SKIP() << kShellLimit;
  PutFile("file", "content");
  MakeFolder("folder");
  EXPECT_TRUE(Copy("file", "other"));
  EXPECT_EQ(GetFile("other"), "content");
  EXPECT_TRUE(Copy("file", "folder"));
  EXPECT_EQ(GetFile("folder/file"), "content");
  EXPECT_TRUE(Copy("file", "new folder/deep/file"));
  EXPECT_EQ(GetFile("new folder/deep/file"), "content");
}

TEST_P(FileTreesTest, RefusesWhatTheShellCannotTake) {
  if (!IsBeyondTheShell()) GTEST_SKIP() << "the shell takes this path";
  MakeTree();
  EXPECT_FALSE(Copy("tree", "copy"));
  EXPECT_FALSE(Delete(Path("tree")));
  ExpectTreeAt("tree");
  EXPECT_FALSE(Exists("copy"));
}

TEST_P(FileTreesTest, SizeIsThatOfTheFilesBelow) {
  MakeTree();
  EXPECT_EQ(files->DirectorySize(Path("tree").c_str(), 0), 9u);
  EXPECT_EQ(files->DirectorySize(Path("tree").c_str(), 100), 109u);
  EXPECT_EQ(files->DirectorySize(Path("tree/empty").c_str(), 100), 100u);
  EXPECT_EQ(files->DirectorySize(Path("tree/a.txt").c_str(), 100), 100u) << "no directory";
  EXPECT_EQ(files->DirectorySize((Path("tree") + "/").c_str(), 0), 9u);
  std::string deep = "tree";
  for (int level = 0; level < 60; ++level) deep += "/folder of level " + std::to_string(level);
  MakeFolder(deep);
  PutFile(deep + "/file", "12345");
  EXPECT_EQ(files->DirectorySize(Path().c_str(), 0), 14u);
}

}  // namespace
