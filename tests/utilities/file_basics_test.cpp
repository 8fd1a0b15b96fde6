// Single files as a whole: copy, move, remove, look-ups, sizes for people, free space. Paths as
// text: parts, extensions, free names.
#include "support/take.h"
#include "support/work_folder.h"
#include "temvar/temvar.h"

namespace {

using namespace test;
namespace fs = std::filesystem;

TMVUtilityFile* const files = TmvUtilityFile();

using FileBasicsTest = WorkFolderTest;
TEMVAR_IN_EVERY_PLACE(FileBasicsTest);

TEST_P(FileBasicsTest, CopyReplacesAndKeepsBytesAndTime) {
  const std::string bytes = std::string("all\0bytes\r\n", 11) + std::string(200'000, 'x');
  PutFile("source.bin", bytes);
  PutFile("target.bin", std::string(300'000, 'y'));
  const auto old = fs::last_write_time(FilePath("source.bin")) - std::chrono::hours(100);
  fs::last_write_time(FilePath("source.bin"), old);

  EXPECT_TRUE(files->CopyFileTo(Path("source.bin").c_str(), Path("target.bin").c_str()));
  EXPECT_EQ(GetFile("target.bin"), bytes);
  EXPECT_EQ(fs::last_write_time(FilePath("target.bin")), old);
  EXPECT_TRUE(files->CopyFileTo(Path("source.bin").c_str(), Path("new.bin").c_str()));
  EXPECT_EQ(GetFile("new.bin"), bytes);
  EXPECT_FALSE(files->CopyFileTo(Path("new.bin").c_str(), Path("new.bin").c_str()));
  EXPECT_EQ(GetFile("new.bin"), bytes) << "onto itself";
}

TEST_P(FileBasicsTest, MoveNeverOverwrites) {
  PutFile("a.txt", "a");
  PutFile("b.txt", "b");
  EXPECT_FALSE(files->MoveFileTo(Path("a.txt").c_str(), Path("b.txt").c_str()));
  EXPECT_EQ(GetFile("a.txt"), "a");
  EXPECT_EQ(GetFile("b.txt"), "b");

  EXPECT_TRUE(files->MoveFileTo(Path("a.txt").c_str(), Path("c.txt").c_str()));
  EXPECT_EQ(GetFile("c.txt"), "a");
  EXPECT_FALSE(Exists("a.txt"));

  MakeFolder("folder");
  PutFile("folder/inner", "i");
  EXPECT_TRUE(files->MoveFileTo(Path("folder").c_str(), Path("renamed").c_str()));
  EXPECT_EQ(GetFile("renamed/inner"), "i");
}

TEST_P(FileBasicsTest, LooksAndRemovalTellFilesFromDirectories) {
  PutFile("empty", "");
  MakeFolder("φάκελος");
  EXPECT_FALSE(files->IsDirectory(Path("empty").c_str()));
  EXPECT_TRUE(files->PathExists(Path("φάκελος").c_str()));
  EXPECT_TRUE(files->IsDirectory(Path("φάκελος").c_str()));
  for (const char* separator : {"\\", "/"}) {
    EXPECT_TRUE(files->PathExists((Path() + separator + "empty").c_str())) << separator;
  }
  EXPECT_TRUE(files->RemoveFile(Path("empty").c_str()));
  EXPECT_FALSE(Exists("empty"));
  EXPECT_FALSE(files->RemoveFile(Path("empty").c_str()));
  EXPECT_FALSE(files->RemoveFile(Path("φάκελος").c_str()));
  EXPECT_TRUE(Exists("φάκελος"));
}

TEST_P(FileBasicsTest, WhatNamesNoFileFails) {
  PutFile("a.txt", "a");
  const std::string good = Path("a.txt");
  const std::string too_long = Path() + "/" + std::string(40'000, 'n');
  const std::string missing_folder = Path("no folder/a.txt");
  const char* const cases[] = {nullptr, "", "\xFF\xFE", too_long.c_str(), missing_folder.c_str()};
  for (const char* bad : cases) {
    SCOPED_TRACE(bad == nullptr ? "null" : std::string(bad).substr(0, 300));
    EXPECT_FALSE(files->CopyFileTo(bad, Path("b.txt").c_str()));
    EXPECT_FALSE(files->CopyFileTo(good.c_str(), bad));
    EXPECT_FALSE(files->MoveFileTo(bad, Path("b.txt").c_str()));
    EXPECT_FALSE(files->MoveFileTo(good.c_str(), bad));
    EXPECT_FALSE(files->RemoveFile(bad));
    EXPECT_FALSE(files->PathExists(bad));
    EXPECT_FALSE(files->IsDirectory(bad));
    EXPECT_EQ(files->FileSize(bad), 0);
    EXPECT_EQ(files->OpenFile(bad, "rb"), nullptr);
    EXPECT_FALSE(files->WriteWholeFile("x", 1, bad));
    EXPECT_FALSE(files->CreateFileOfSize(bad, 1));
    EXPECT_EQ(files->FileContainsText(bad, "a"), -1);
    EXPECT_FALSE(files->SetFileTimestamp(bad, "2024-01-31 17:05:09"));
    EXPECT_EQ(files->DirectorySize(bad, 7), 7u);
    EXPECT_FALSE(files->DeleteDirectoryTree(bad));
    EXPECT_FALSE(files->CopyDirectoryTree(bad, Path("copy").c_str()));
    BinaryDataResult result{&result, nullptr, 1, 2};
    EXPECT_FALSE(files->ReadWholeFile(&result, bad));
    EXPECT_EQ(result.Owner, &result);
    if (bad == missing_folder.c_str()) continue;  // These make missing parents.
    EXPECT_FALSE(files->CopyDirectoryTree(good.c_str(), bad));
    EXPECT_FALSE(files->CreateDirectoryPath(bad));
  }
  EXPECT_EQ(GetFile("a.txt"), "a");
}

TEST_P(FileBasicsTest, FreeSpaceIsThatOfTheDiskBeforeTheFirstBackslash) {
  uint64_t bytes = 12345;
  EXPECT_FALSE(files->GetFreeDiskSpace(&bytes, ""));
  EXPECT_FALSE(files->GetFreeDiskSpace(&bytes, nullptr));
  EXPECT_FALSE(files->GetFreeDiskSpace(&bytes, "C:/some/folder"));
  EXPECT_FALSE(files->GetFreeDiskSpace(&bytes, "no such folder here\\file"));
  EXPECT_EQ(bytes, 12345u);

  const std::string root = Folder().root_path().string();
  std::string path = root + "nowhere";
  for (char& c : path) c = c == '/' ? '\\' : c;
  const uintmax_t before = fs::space(root).available;
  ASSERT_TRUE(files->GetFreeDiskSpace(&bytes, path.c_str()));
  // Others write to the disk too.
  constexpr uint64_t kSlack = uint64_t{4} << 30;
  EXPECT_LT(bytes, before + kSlack);
  EXPECT_GT(bytes + kSlack, before);
}

TEST(FormatSize, TakesTheLargestUnitThatIsReached) {
  const std::pair<uint64_t, const char*> cases[] = {
      {0, "0.00 B"},
      {1023, "1023.00 B"},
      {1536, "1.50 KB"},
      {(1 << 20) - 1, "1024.00 KB"},
      {1 << 20, "1.00 MB"},
      {1 << 30, "1.00 GB"},
      {UINT64_MAX, "17179869184.00 GB"},
  };
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(Take(files->FormatSize(bytes)), text);
  }
}

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

TEST(SplitPath, CutsAtTheLastSeparatorAndTheLastDot) {
  const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
      {"name.txt", "", "name", ".txt"},
      {"name", "", "name", ""},
      {".hidden", "", "", ".hidden"},
      {"a.b.c", "", "a.b", ".c"},
      {"C:\\dir\\name.", "C:\\dir\\", "name", "."},
      {"a\\b/c.d", "a\\b/", "c", ".d"},
      {"a/b\\c.d", "a/b\\", "c", ".d"},
      {"dir/", "dir/", "", ""},
      {"\\", "\\", "", ""},
      {"Φάκελος/漢字😀.ΤΧΤ", "Φάκελος/", "漢字😀", ".ΤΧΤ"},
      // The last dot of the whole path is in a directory's name.
      {"a.b/c", "a.b/", "c", ".b/c"},
      {"a.b\\", "a.b\\", "", ".b\\"},
      {"./c", "./", "c", "./c"},
      {"\xFF", "", "", ""},
      {"", nullptr, nullptr, nullptr},
      {nullptr, nullptr, nullptr, nullptr},
  };
  for (const auto& [path, directory, name, extension] : cases) {
    SCOPED_TRACE(path == nullptr ? "null" : path);
    PathParts parts = files->SplitPath(path);
    EXPECT_STREQ(parts.Directory, directory);
    EXPECT_STREQ(parts.Name, name);
    EXPECT_STREQ(parts.Extension, extension);
    const PathParts before = parts;
    files->FreePathParts(&parts);
    EXPECT_EQ(parts.Name, before.Name) << "the record is left as it is";
  }
  files->FreePathParts(nullptr);
}

TEST(ExtensionInList, ComparesWholeExtensionsInLowerCase) {
  const std::tuple<const char*, const char*, bool> cases[] = {
      {"a.zip", ";.zip;.7z;", true}, {"DIR\\A.ZIP", ";.zip;.7z;", true},
      {"a.7z", ";.zip;.7z;", true},  {"a.tar.7Z", ";.zip;.7z;", true},
      {"a.zi", ";.zip;", false},     {"a.zipx", ";.zip;", false},
      {"a.zip", ";.ZIP;", false},    {"a.zip", ".zip", false},
      {"a.", ";.;", true},           {"a.ΤΧΤ", ";.ΤΧΤ;", true},
  };
  for (const auto& [path, list, expected] : cases) {
    EXPECT_EQ(files->ExtensionInList(path, list), expected) << path << " in " << list;
  }
  EXPECT_FALSE(files->ExtensionInList(nullptr, ";.zip;"));
}

class MakeUniquePathTest : public WorkFolderTest {
 protected:
  std::string Unique(const std::string& path) { return Take(files->MakeUniquePath(path.c_str())); }
};
TEMVAR_IN_EVERY_PLACE(MakeUniquePathTest);

TEST_P(MakeUniquePathTest, NumbersATakenName) {
  EXPECT_EQ(Unique(Path("name.txt")), Path("name.txt"));
  PutFile("name.txt", "");
  EXPECT_EQ(Unique(Path("name.txt")), Path("name(1).txt"));
  EXPECT_FALSE(Exists("name(1).txt")) << "nothing is made";
  PutFile("name(1).txt", "");
  EXPECT_EQ(Unique(Path("name.txt")), Path("name(2).txt"));
  EXPECT_EQ(Unique(Path("name(1).txt")), Path("name(1)(1).txt"));
  MakeFolder("φάκελος.d");
  EXPECT_EQ(Unique(Path("φάκελος.d")), Path("φάκελος(1).d"));
}

TEST_P(MakeUniquePathTest, GivesUpAfter999) {
  PutFile("n.x", "");
  for (int n = 1; n <= 998; ++n) PutFile("n(" + std::to_string(n) + ").x", "");
  EXPECT_EQ(Unique(Path("n.x")), Path("n(999).x"));
  PutFile("n(999).x", "");
  EXPECT_EQ(Unique(Path("n.x")), Path("n.x"));
}

TEST_P(MakeUniquePathTest, SplitsAtTheLastBackslashElseTheLastSlash) {
  MakeFolder("sub.dir");
  PutFile("sub.dir/f.txt", "");
  PutFile("sub.dir/nodot", "");
  const std::string base = Path();
  std::string slashes = base + "/sub.dir/f";
  for (char& c : slashes) c = c == '\\' ? '/' : c;
  EXPECT_EQ(Unique(slashes + ".txt"), slashes + "(1).txt");
  EXPECT_EQ(Unique(base + "\\sub.dir/f.txt"), base + "\\sub.dir/f(1).txt");
  // The last dot is that of the folder: it begins the extension, and the name is the rest.
  EXPECT_EQ(Unique(base + "\\sub.dir\\nodot"), base + "\\sub.dir\\nodot(1).dir\\nodot");
}

TEST_P(MakeUniquePathTest, IsNullForNullAndForWhatCannotBeNumbered) {
  EXPECT_EQ(files->MakeUniquePath(nullptr), nullptr);
  MakeFolder("sub");
  PutFile("sub/no dot", "");
  PutFile("no separator.txt", "");
  std::filesystem::current_path(Folder());
  EXPECT_EQ(Unique("sub/no dot"), "<null>");
  EXPECT_EQ(Unique("no separator.txt"), "<null>");
  EXPECT_EQ(Unique("free.txt"), "free.txt");
  EXPECT_EQ(Unique(""), "");
  std::filesystem::current_path(Folder().root_path());
}

}  // namespace
