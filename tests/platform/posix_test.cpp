// What the stand-in makes of paths, files, the environment and loaded modules: paths become those
// of the kernel, and nothing is inherited. Built where it is used only.
#include <dlfcn.h>
#include <fcntl.h>

#include <climits>
#include <cstdlib>

#include "platform/posix/files/file_handle.h"
#include "platform/posix/files/narrow_path.h"
#include "platform/win32.h"
#include "support/take.h"
#include "support/work_folder.h"
#include "temvar/temvar.h"

namespace {

using namespace test;
using temvar::posix::NarrowPath;

TEST(NarrowPath, DropsTheDriveAndRefusesWhatItCannotSayWhole) {
  const std::u16string longest(PATH_MAX - 1, u'a');
  const std::string narrow(PATH_MAX - 1, 'a');
  const std::tuple<std::u16string, const char*, DWORD> cases[] = {
      {u"C:\\dir\\ä漢😀", "/dir/ä漢😀", 0},
      {u"C:file", "file", 0},
      {u"1:x", "1:x", 0},
      {longest, narrow.c_str(), 0},
      {u"C:", nullptr, ERROR_PATH_NOT_FOUND},
      {longest + u'a', nullptr, ERROR_FILENAME_EXCED_RANGE},
      {std::u16string(PATH_MAX / 2, u'ä'), nullptr, ERROR_FILENAME_EXCED_RANGE},
      {u"half \xD83D pair", nullptr, ERROR_INVALID_NAME},
  };
  for (const auto& [wide, expected, error] : cases) {
    const NarrowPath path(wide.c_str());
    ASSERT_EQ(path.ok(), expected != nullptr);
    if (path.ok()) {
      EXPECT_STREQ(path.c_str(), expected);
    } else {
      EXPECT_EQ(GetLastError(), error);
    }
  }
}

class FilesPosixTest : public WorkFolderTest {
 protected:
  std::u16string Wide(std::string_view name) const { return FilePath(name).u16string(); }
};
TEMVAR_IN_EVERY_PLACE(FilesPosixTest);

TEST_P(FilesPosixTest, ChildrenInheritNothing) {
  FILE* const stream = _wfopen(Wide("f").c_str(), u"wb");
  ASSERT_NE(stream, nullptr);
  EXPECT_NE(fcntl(fileno(stream), F_GETFD) & FD_CLOEXEC, 0);
  std::fclose(stream);
  const HANDLE file =
      CreateFileW(Wide("f").c_str(), GENERIC_READ, 1, nullptr, OPEN_EXISTING, 0, nullptr);
  const int descriptor = temvar::posix::DescriptorOfHandle(file);
  EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
  CloseHandle(file);
  WIN32_FIND_DATAW data;
  const HANDLE find = FindFirstFileW(Wide("*").c_str(), &data);
  EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0) << "the lowest number is taken again";
  FindClose(find);
  EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
}

TEST_P(FilesPosixTest, FilesThatHaveNoSizeAreReadWhole) {
  ASSERT_TRUE(CopyFileW(u"/proc/version", Wide("version").c_str(), FALSE));
  BinaryDataResult result;
  ASSERT_TRUE(TmvUtilityFile()->ReadWholeFile(&result, "/proc/version"));
  EXPECT_EQ(std::string(result.Data, result.Size), GetFile("version"));
  EXPECT_GT(result.Size, 10u);
  FreeBinayDataResult(&result);
}

std::string WithBackslashes(std::string path) {
  for (char& c : path) {
    if (c == '/') c = '\\';
  }
  return path;
}

class FoldersTest : public WorkFolderTest {
 protected:
  void SetUp() override {
    setenv("HOME", Path().c_str(), 1);
    unsetenv("XDG_CONFIG_HOME");
  }

  // A folder below the home, as the library reports it.
  std::string Reported(const std::string& name) {
    return WithBackslashes(Path() + "/" + name + (name.empty() ? "" : "/"));
  }
};

// The system calls have room for 260 units: a longer path is a failure, which falls back.
INSTANTIATE_TEST_SUITE_P(InEveryPlace, FoldersTest,
                         testing::Values(FolderKind::kPlain, FolderKind::kInternational),
                         NameOfFolderKind);

TEST_P(FoldersTest, BelowTheHome) {
  EXPECT_EQ(Take(TmvUtilitySys()->GetAppDataPath()), Reported(".config"));
  EXPECT_TRUE(Exists(".config"));
  EXPECT_EQ(Take(TmvUtilitySys()->GetDownloadsPath()), Reported("Downloads"));
  EXPECT_TRUE(Exists("Downloads"));
  EXPECT_EQ(Take(TmvUtilitySys()->GetDownloadsPath()), Reported("Downloads"));

  const std::string temporary = Take(TmvUtilitySys()->GetTempDirectory());
  EXPECT_EQ(Take(TmvUtilitySys()->GetDocumentsPath()), temporary);
  EXPECT_FALSE(Exists("Documents"));
  MakeFolder("Documents");
  EXPECT_EQ(Take(TmvUtilitySys()->GetDocumentsPath()), Reported("Documents"));
}

TEST_P(FoldersTest, AsTheDesktopHasThem) {
  MakeFolder(".config");
  MakeFolder("Dokumente \xCE\xB1");
  PutFile(
      ".config/user-dirs.dirs",
      "# comment\nXDG_MUSIC_DIR=\"$HOME/Musik\"\nXDG_DOCUMENTS_DIR=\"$HOME/Dokumente \xCE\xB1\"\n");
  EXPECT_EQ(Take(TmvUtilitySys()->GetDocumentsPath()), Reported("Dokumente \xCE\xB1"));
  setenv("XDG_CONFIG_HOME", Path("elsewhere").c_str(), 1);
  EXPECT_EQ(Take(TmvUtilitySys()->GetAppDataPath()), Reported("elsewhere"));
}

TEST_P(FoldersTest, FallBackToTheTemporaryFolder) {
  setenv("TMPDIR", Path().c_str(), 1);
  PutFile("file", "");
  setenv("HOME", Path("file").c_str(), 1);
  const std::string temporary = WithBackslashes(Path()) + "\\";
  EXPECT_EQ(Take(TmvUtilitySys()->GetAppDataPath()), temporary);
  EXPECT_EQ(Take(TmvUtilitySys()->GetDocumentsPath()), temporary);
  EXPECT_EQ(Take(TmvUtilitySys()->GetDownloadsPath()), temporary);
  unsetenv("TMPDIR");
  EXPECT_EQ(Take(TmvUtilitySys()->GetTempDirectory()), "\\tmp\\");
  setenv("HOME", ("/" + std::string(300, 'x')).c_str(), 1);
  EXPECT_EQ(Take(TmvUtilitySys()->GetAppDataPath()), "\\tmp\\");
}

TEST(Modules, FolderOfAModule) {
  EXPECT_TRUE(TmvUtilitySys()->IsWindows8OrLater());
  EXPECT_FALSE(TmvUtilitySys()->Is64BitSystem()) << "without the modules of Windows";
  void* const module = dlopen("libz.so.1", RTLD_LAZY);
  ASSERT_NE(module, nullptr) << dlerror();
  Dl_info info;
  ASSERT_NE(dladdr(dlsym(module, "zlibVersion"), &info), 0);
  const std::string folder =
      std::filesystem::canonical(info.dli_fname).parent_path().string() + "/";
  EXPECT_EQ(Take(TmvUtilityApp()->GetModuleDirectory(module)), WithBackslashes(folder));
  dlclose(module);
  int nothing = 0;
  EXPECT_EQ(Take(TmvUtilityApp()->GetModuleDirectory(&nothing)), "\\");
}

}  // namespace
