// Crashes 200 programs in a row in each way, and prints how long a report takes and how large it
// is.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "crash/crash_run.h"
#include "crash/ways.h"

namespace {

using namespace temvar_test;

constexpr int kCrashes = 200;

class InARow : public testing::TestWithParam<Way> {};

uintmax_t Size(const std::vector<std::filesystem::path>& files) {
  return files.empty() ? 0 : std::filesystem::file_size(files.back());
}

TEST_P(InARow, EachLeavesWhatItShould) {
  const Way& way = GetParam();
  std::vector<long long> durations;
  std::vector<uintmax_t> dumps;
  std::vector<uintmax_t> archives;
  for (int i = 0; i < kCrashes; ++i) {
    CrashRun run;
    run.Start(way.name);
    ASSERT_FALSE(run.End().timed_out) << run.Describe();
    ASSERT_EQ(run.End().signal, way.signal) << run.Describe();
    ASSERT_EQ(run.Lines("collect").size(), way.passes) << run.Describe();
    ASSERT_EQ(run.Lines("report").size(), way.code == 0 ? 0u : 1u) << run.Describe();
    ASSERT_EQ(run.Dumps().empty(), way.code == 0) << run.Describe();
    for (const std::filesystem::path& dump : run.Dumps()) {
      const Minidump content = ReadMinidump(dump);
      ASSERT_TRUE(content.errors.empty() && content.ranges_apart) << run.Describe();
    }
    for (const std::filesystem::path& archive : run.Archives()) {
      const std::vector<std::string> names = EntryNames(archive);
      ASSERT_TRUE(std::find(names.begin(), names.end(), "damaged") == names.end());
      ASSERT_FALSE(names.empty());
    }
    for (const std::string& text : run.Lines("elapsed")) durations.push_back(std::stoll(text));
    dumps.push_back(Size(run.Dumps()));
    archives.push_back(Size(run.Archives()));
  }
  if (durations.empty()) durations.push_back(0);
  std::sort(durations.begin(), durations.end());
  std::printf(
      "%s: %d of %d; from the fault to the archive %lld us (median), %lld us (longest); "
      "dump %llu bytes, archive %llu bytes (largest)\n",
      way.name, static_cast<int>(dumps.size()), kCrashes, durations[durations.size() / 2],
      durations.back(),
      static_cast<unsigned long long>(*std::max_element(dumps.begin(), dumps.end())),
      static_cast<unsigned long long>(*std::max_element(archives.begin(), archives.end())));
}

INSTANTIATE_TEST_SUITE_P(Crash, InARow, testing::ValuesIn(WaysToCrash()));

}  // namespace
