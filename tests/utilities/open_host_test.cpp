// ExploreFolder and OpenWithShell with an opener of the test's own on PATH. The opener is a script,
// and children are looked for with waitpid: this file is built for Linux only.
#include <sys/wait.h>
#include <temvar/utility_app.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include "support/work_folder.h"

namespace {

using namespace test;
namespace fs = std::filesystem;
using std::chrono::steady_clock;

TMVUtilityApp* const app = TmvUtilityApp();

class OpenTest : public WorkFolderTest {
 protected:
  void SetUp() override {
    MakeFolder("bin");
    // Writes its number of arguments and the first one; renamed when whole.
    PutScript(
        "bin/xdg-open",
        "#!/bin/sh\nprintf '%s|%s' \"$#\" \"$1\" > \"$OUT.part\"\nmv \"$OUT.part\" \"$OUT\"\n");
    setenv("OUT", Path("out").c_str(), 1);
    setenv("PATH", (Path("bin") + ":/usr/bin:/bin").c_str(), 1);
  }

  void TearDown() override {
    // No child is left, neither running nor as a zombie.
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
  }

  void PutScript(const std::string& name, const std::string& content) {
    PutFile(name, content);
    fs::permissions(FilePath(name), fs::perms::owner_all);
  }

  // What the opener was given; "" if it wasn't started in time.
  std::string Opened(std::chrono::milliseconds patience = std::chrono::seconds(20)) {
    const auto end = steady_clock::now() + patience;
    while (!Exists("out")) {
      if (steady_clock::now() > end) return "";
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    const std::string content = GetFile("out");
    fs::remove(FilePath("out"));
    return content;
  }
};
TEMVAR_IN_EVERY_PLACE(OpenTest);

TEST_P(OpenTest, Folders) {
  app->ExploreFolder(Path().c_str());
  EXPECT_EQ(Opened(), "1|" + Path());
  app->ExploreFolder("\\one\\\xCE\xB1 two\\");
  EXPECT_EQ(Opened(), "1|/one/\xCE\xB1 two/");
}

TEST_P(OpenTest, TargetsInAnsiReachTheOpenerAsTheyAre) {
  for (const std::string target :
       {"https://host.domain/a?b=c&d=$HOME;e", "mailto:name@host.domain", "/a b/'c'/\"d\"/`e`",
        "/$(touch no)/;rm x/|y/&z", "relative name.txt"}) {
    app->OpenWithShell(target.c_str());
    EXPECT_EQ(Opened(), "1|" + target);
  }
  EXPECT_FALSE(Exists("no"));
  app->OpenWithShell("--help");
  EXPECT_EQ(Opened(), "1|./--help");
  app->OpenWithShell("caf\xE9");
  EXPECT_EQ(Opened(), "1|caf\xC3\xA9");
  app->OpenWithShell("caf\xC3\xA9");  // UTF-8 becomes other text.
  EXPECT_EQ(Opened(), "1|caf\xC3\x83\xC2\xA9");
}

TEST_P(OpenTest, NothingToOpenAndNobodyToOpenIt) {
  for (const char* const nothing : {static_cast<const char*>(nullptr), "", "bad \xFF text"}) {
    app->ExploreFolder(nothing);
  }
  app->OpenWithShell(nullptr);
  app->OpenWithShell("");
  setenv("PATH", "", 1);
  app->OpenWithShell("/target");
  setenv("PATH", Path("missing").c_str(), 1);
  app->OpenWithShell("/target");
  // A file that can't be started.
  PutScript("bin/xdg-open", "#!/no/such/interpreter\n");
  setenv("PATH", Path("bin").c_str(), 1);
  app->OpenWithShell("/target");
  EXPECT_EQ(Opened(std::chrono::milliseconds(50)), "");
}

TEST_P(OpenTest, WaitsForNobody) {
  PutScript("bin/xdg-open", "#!/bin/sh\nsleep 3\n");
  const auto start = steady_clock::now();
  app->OpenWithShell("/target");
  EXPECT_LT(steady_clock::now() - start, std::chrono::milliseconds(2500));
}

TEST_P(OpenTest, HostThatIgnoresItsChildren) {
  std::signal(SIGCHLD, SIG_IGN);
  app->OpenWithShell("/target");
  EXPECT_EQ(Opened(), "1|/target");
  std::signal(SIGCHLD, SIG_DFL);
}

}  // namespace
