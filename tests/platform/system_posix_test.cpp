// What the stand-in makes of the environment and of loaded modules. Built where it is used only.
#include <dlfcn.h>

#include <cstdlib>

#include "platform/win32.h"
#include "support/take.h"
#include "support/work_folder.h"
#include "temvar/utility_app.h"
#include "temvar/utility_sys.h"

namespace {

using namespace test;

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
