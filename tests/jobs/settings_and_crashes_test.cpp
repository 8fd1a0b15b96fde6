// tmv::Settings and tmv::WatchForCrashes.
#include <temvar/crash_watch.h>
#include <temvar/settings.h>

#include <fstream>
#include <stdexcept>
#include <vector>

#include "support/work_folder.h"

namespace {

namespace fs = std::filesystem;

void PutFile(const fs::path& path, const std::string& text) { std::ofstream(path) << text; }

TEST(Settings, ReadsByTypeAndReturnsTheDefaultForAnother) {
  const test::WorkFolder folder;
  const std::string path = tmv::Utf8(folder.path() / "s.json");
  PutFile(
      folder.path() / "s.json",
      R"({"t":"x","q":"1\"2","i":-7,"big":3000000000,"d":1.5e2,"yes":true,"one":1,"list":[1,"b"],)"
      R"("o":{"in":"ner","n":null}})");
  const tmv::Settings settings = tmv::Settings::Open("typed", path.c_str());
  EXPECT_EQ(settings.String("t") + settings.String("q") + settings.String("i", "-"), "x1\"2-");
  EXPECT_EQ(settings.Int("i", 1), -7);
  for (const char* key : {"big", "d", "t", "yes", "no"}) EXPECT_EQ(settings.Int(key, 5), 5) << key;
  EXPECT_TRUE(settings.Bool("yes") && settings.Bool("one") && settings.Bool("i", true));
  EXPECT_EQ(settings.Double("d") + settings.Double("i") + settings.Double("t", 0.5), 143.5);
  EXPECT_EQ(settings.Object("o").String("in", "-") + settings.Object("t").String("in", "-"),
            "ner-");
  std::string items;
  for (const auto& item : settings.Object("o").Items()) items += item.name + ";";
  for (const auto& item : settings.Object("list").Items()) {
    items += std::to_string(settings.Store()->GetValueInt(item.value)) + ";";
  }
  EXPECT_EQ(items, "in;n;1;0;");
  EXPECT_EQ(settings.Items().size(), 9u);
  settings.SetDouble("d", 0.1);
  settings.SetBool("yes", false);
  EXPECT_EQ(settings.Double("d"), 0.1);
  EXPECT_FALSE(settings.Bool("yes", true));
}

TEST(WatchForCrashes, ReportsAndClearsWhatEarlierRunsLeft) {
  // The same in the process that a death test starts anew on Windows.
  const fs::path top = fs::current_path() / u8"crash watch \u03BB";
  const fs::path dumps = top / "made" / "dumps";
  fs::remove_all(top);
#if defined(TEMVAR_TEST_CRASHES)
  // A relative folder without a separator, where none is.
  EXPECT_DEATH(
      {
        tmv::WatchForCrashes(fs::path(u8"crash watch \u03BB/made/dumps"));
        volatile int* volatile nowhere = nullptr;
        *nowhere = 1;
      },
      "");
#else
  fs::create_directories(dumps);
  PutFile(dumps / "20250131120005.dmp.zip", "archive");
#endif
  PutFile(dumps / "20240131120000.dmp", "never packed");
  PutFile(dumps / "20240131120000.txt", "the host's");
  PutFile(dumps / "settings.dmp", "the host's");
  std::vector<fs::path> reports;
  const auto note = [&reports](const fs::path& report) {
    reports.push_back(report);
    if (reports.size() == 2) throw std::runtime_error("no network");
  };
  EXPECT_THROW(tmv::WatchForCrashes(dumps, note), std::runtime_error);
  tmv::WatchForCrashes(dumps, note);
  ASSERT_GE(reports.size(), 3u) << "Windows may report one crash in two passes";
  EXPECT_EQ(reports[0].filename(), "20240131120000.dmp");
  EXPECT_EQ(reports[1].extension(), ".zip");
  EXPECT_EQ(reports[1], reports[2]) << "kept for the next run";
  int left = 0;
  for (const auto& entry : fs::directory_iterator(dumps)) left += entry.is_regular_file() ? 1 : 0;
  EXPECT_EQ(left, 2);
  if (fs::path::preferred_separator == '/') {
    EXPECT_EQ(fs::status(dumps).permissions(), fs::perms::owner_all);
  }
  fs::remove_all(top);
}

}  // namespace
