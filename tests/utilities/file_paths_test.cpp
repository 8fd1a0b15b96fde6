// Paths as text: parts, extensions, free names.
#include "support/take.h"
#include "support/work_folder.h"
#include "temvar/temvar.h"

namespace {

using namespace test;

TMVUtilityFile* const files = TmvUtilityFile();

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
