#include <gmock/gmock.h>
#include <temvar/utility_app.h>
#include <temvar/utility_sys.h>

#include <algorithm>
#include <chrono>
#include <cmath>

#include "support/take.h"
#include "support/work_folder.h"

namespace {

using namespace test;
using namespace testing;

TMVUtilitySys* const sys = TmvUtilitySys();
TMVUtilityApp* const app = TmvUtilityApp();

TEST(Sys, Folders) {
  // CTest runs this with a home folder of its own.
  for (std::string path : {Take(sys->GetAppDataPath()), Take(sys->GetTempDirectory()),
                           Take(sys->GetDownloadsPath()), Take(sys->GetDocumentsPath())}) {
    SCOPED_TRACE(path);
    EXPECT_THAT(path, AllOf(EndsWith("\\"), Not(EndsWith("\\\\"))));
    std::replace(path.begin(), path.end(), '\\', '/');  // They are separators everywhere.
    EXPECT_TRUE(std::filesystem::is_directory(FromUtf8(path)));
  }
  EXPECT_THAT(Take(sys->GetDownloadsPath()), EndsWith("\\Downloads\\"));
}

TEST(Sys, FormatDuration) {
  const char* const kLongest = "5124095576030431:00:15";
  const std::pair<double, const char*> cases[] = {
      {0.49, "00:00"},      {0.49999999999999994, "00:01"},
      {0.5, "00:01"},       {59.5, "01:00"},
      {3599.4, "59:59"},    {3599.5, "01:00:00"},
      {3723, "01:02:03"},   {360000, "100:00:00"},
      {-5, "00:00"},        {-HUGE_VAL, "00:00"},
      {NAN, "00:00"},       {1e300, kLongest},
      {HUGE_VAL, kLongest},
  };
  for (const auto& [seconds, text] : cases) {
    EXPECT_EQ(Take(sys->FormatDuration(seconds)), text) << seconds;
  }
}

TEST(Sys, FormatSeconds) {
  const std::pair<int64_t, const char*> cases[] = {
      {0, "00:00"},
      {3599, "59:59"},
      {3600, "01:00:00"},
      {-61, "-1:-1"},
      {-3723, "-1:-2:-3"},
      {INT64_MAX, "2562047788015215:30:07"},
      {INT64_MIN, "-2562047788015215:-30:-8"},
  };
  for (const auto& [seconds, text] : cases) {
    EXPECT_EQ(Take(sys->FormatSeconds(seconds)), text) << seconds;
  }
}

TEST(Sys, SleepMilliseconds) {
  using Clock = std::chrono::steady_clock;
  const auto start = Clock::now();
  for (const int32_t none : {0, -5, INT32_MIN}) sys->SleepMilliseconds(none);
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
  const auto before = Clock::now();
  sys->SleepMilliseconds(50);
  EXPECT_GE(Clock::now() - before, std::chrono::milliseconds(50));
}

TEST(Sys, Facts) {
  EXPECT_EQ(Take(sys->GetBuildYear()), "2025");
  EXPECT_TRUE(sys->AlwaysTrue());
  EXPECT_TRUE(sys->IsVistaOrLater());
  EXPECT_TRUE(sys->IsWindows7OrLater());
  EXPECT_FALSE(sys->Is64BitProcess());
  EXPECT_NE(sys->GetProcessId(), 0u);
  const std::string name = Take(sys->GetExecutableFileName());
  EXPECT_THAT(Take(app->GetExecutablePath()), EndsWith("\\" + name));
  EXPECT_EQ(name.substr(0, name.find('.')), "sys_host_test");
}

TEST(App, Paths) {
  // The program as it was started, in the library's way to write.
  std::filesystem::path program = testing::internal::GetArgvs()[0];
  if (program.extension().empty() && std::filesystem::exists(program.string() + ".exe")) {
    program += ".exe";
  }
  std::string executable = Utf8(std::filesystem::canonical(program));
  for (char& c : executable) {
    if (c == '/') c = '\\';
  }
  const std::string folder = executable.substr(0, executable.rfind('\\') + 1);
  const std::string root = folder.substr(0, folder.rfind('\\', folder.size() - 2) + 1);
  EXPECT_EQ(Take(app->GetExecutablePath()), executable);
  EXPECT_EQ(Take(app->GetApplicationDirectory()), folder);
  EXPECT_EQ(Take(app->GetModuleDirectory(nullptr)), folder);
  EXPECT_EQ(Take(app->GetInstallRoot()), root);
  EXPECT_EQ(Take(app->GetThemesDirectory()), root + "Themes\\");
  EXPECT_EQ(Take(app->GetPluginsDirectory()), root + "Plugins\\");
}

TEST(App, ProgressPerMille) {
  const std::tuple<int64_t, int64_t, int32_t, int32_t, int32_t> cases[] = {
      {5, 10, 1, 4, 375}, {0, 10, 4, 4, 1000},  {0, 10, 0, 4, 0},     {15, 10, 4, 4, 1375},
      {2, 3, 0, 1, 666},  {-1, 1000, 0, 1, -1}, {-1, 3000, 0, 1, -1}, {7, 0, 1, 4, 0},
      {7, 10, 1, 0, 0},   {0, -10, 1, 4, 250},  {1, 125, 0, 1, 8},    {1000, 1000000, 0, 1, 1},
  };
  for (const auto& [done, stepSize, stepIndex, stepCount, result] : cases) {
    EXPECT_EQ(app->ProgressPerMille(done, stepSize, stepIndex, stepCount), result)
        << done << " " << stepSize << " " << stepIndex << " " << stepCount;
  }
  EXPECT_EQ(app->ProgressPerMille(1, int64_t{1} << 40, 999, 1000), 999);
  // Beyond 32 and 64 bits: some number, no harm.
  EXPECT_EQ(app->ProgressPerMille(INT64_MAX, 1, 0, 1), INT32_MAX);
  EXPECT_EQ(app->ProgressPerMille(INT64_MIN, 1, 0, 1), INT32_MIN);
  EXPECT_EQ(app->ProgressPerMille(0, int64_t{1} << 62, 1, 4), 0);
  app->ProgressPerMille(INT64_MIN, -1, 0, 1);
}

}  // namespace
