#include <temvar/utility_app.h>

#include <cstdint>

#include "support/take.h"
#include "support/work_folder.h"

namespace {

using namespace test;

TMVUtilityApp* const app = TmvUtilityApp();

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
