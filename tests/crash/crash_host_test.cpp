// Crashes child programs and looks at what is left: the files, what the callbacks were told, and
// how the process ended.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "crash/crash_run.h"
#include "crash/ways.h"
#include "support/minidump_reader.h"

namespace {

using namespace temvar_test;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;

bool EndedAs(const CrashRun& run, const Way& way) {
  return !run.End().timed_out && run.End().signal == way.signal && run.End().status == way.status;
}

std::string NameOf(const std::filesystem::path& file) { return Utf8(file.filename()); }

// Names of tests have no dashes.
std::string NameOfWay(const testing::TestParamInfo<Way>& info) {
  std::string name = info.param.name;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

class EveryWay : public testing::TestWithParam<Way> {};

TEST_P(EveryWay, LeavesDumpAndArchiveAndTellsTheHost) {
  const Way& way = GetParam();
  CrashRun run;
  run.Start(way.name);
  EXPECT_TRUE(EndedAs(run, way)) << run.Describe();
  EXPECT_THAT(run.Lines("collect"), SizeIs(way.passes));
  EXPECT_THAT(run.Lines("collect"), Each(run.DumpDirectory() + " null"));
  // Two passes within one second write to the same names.
  EXPECT_LE(run.Dumps().size(), way.passes);
  ASSERT_EQ(run.Archives().size(), run.Dumps().size()) << run.Describe();
  EXPECT_EQ(run.Dumps().empty(), way.code == 0) << run.Describe();
  ASSERT_THAT(run.Lines("report"), SizeIs(way.code == 0 ? 0 : 1));
  if (run.Dumps().empty()) return;

  const std::filesystem::path archive = run.Archives().back();
  EXPECT_EQ(run.Lines("report").front(), run.DumpDirectory() + NameOf(archive) + " there");
  EXPECT_EQ(NameOf(archive), NameOf(run.Dumps().back()) + ".zip");
  EXPECT_EQ(NameOf(archive).find_first_not_of("0123456789"), 14u);
  EXPECT_THAT(EntryNames(archive), Contains(NameOf(run.Dumps().back())));

  for (const std::filesystem::path& file : run.Dumps()) {
    const Minidump dump = ReadMinidump(file);
    EXPECT_THAT(dump.errors, IsEmpty());
    ASSERT_FALSE(dump.modules.empty());
    EXPECT_THAT(dump.modules.front().path, testing::HasSubstr("crash_child"));
    ASSERT_TRUE(dump.exception.present);
    EXPECT_TRUE(dump.exception.registers.known);
    const DumpThread* const thread = dump.FindThread(dump.exception.thread);
    ASSERT_NE(thread, nullptr);
    EXPECT_EQ(thread->registers.instruction, dump.exception.registers.instruction);
    EXPECT_GT(thread->stack_size, 0u);
    CheckDump(way, run, dump);
  }
}

TEST_P(EveryWay, LeavesNothingWhileTheExitFlagIsSet) {
  CrashRun run;
  run.Start(GetParam().name, {"exiting"});
  EXPECT_TRUE(EndedAs(run, GetParam())) << run.Describe();
  EXPECT_THAT(run.Lines("collect"), IsEmpty());
  EXPECT_THAT(run.Lines("report"), IsEmpty());
  EXPECT_TRUE(std::filesystem::is_empty(run.Folder() / "dumps"));
}

INSTANTIATE_TEST_SUITE_P(Crash, EveryWay, testing::ValuesIn(WaysToCrash()), NameOfWay);

TEST(CrashReport, ShowsTheOtherThreads) {
  CrashRun run;
  run.Start("division", {"bystander"});
  ASSERT_THAT(run.Dumps(), SizeIs(1)) << run.Describe();
  const Minidump dump = ReadMinidump(run.Dumps()[0]);
  EXPECT_THAT(dump.errors, IsEmpty());
  EXPECT_GE(dump.threads.size(), 2u);
  for (const DumpThread& thread : dump.threads) {
    EXPECT_TRUE(thread.registers.known) << thread.id;
    EXPECT_GT(thread.stack_size, 0u) << thread.id;
  }
}

TEST(CrashReport, OutlivesTheHandleAndASecondInstall) {
  const Way& way = FindWay("division");
  CrashRun run;
  run.Start(way.name, {"destroyed", "second"});
  EXPECT_TRUE(EndedAs(run, way)) << run.Describe();
  EXPECT_THAT(run.Dumps(), SizeIs(1));
  EXPECT_THAT(run.Lines("collect"), ElementsAre(run.DumpDirectory() + " null"));
  EXPECT_THAT(run.Lines("report"), SizeIs(1));
}

TEST(CrashReport, NeedsNoCallbacks) {
  CrashRun run;
  run.Start("division", {"no-collect", "no-notify"});
  EXPECT_TRUE(EndedAs(run, FindWay("division"))) << run.Describe();
  EXPECT_THAT(run.Archives(), SizeIs(1));
  EXPECT_THAT(run.Lines("report"), IsEmpty());
}

TEST(CrashReport, PacksWhatTheHostAddsButNoArchive) {
  CrashRun run;
  run.Start("division", {"leave-files"});
  EXPECT_TRUE(EndedAs(run, FindWay("division"))) << run.Describe();
  ASSERT_THAT(run.Dumps(), SizeIs(1));
  EXPECT_THAT(EntryNames(run.Folder() / "dumps" / (NameOf(run.Dumps()[0]) + ".zip")),
              UnorderedElementsAre(NameOf(run.Dumps()[0]), "logs/host.log"));
}

TEST(CrashReport, WithoutSeparatorLiesBesideTheDirectory) {
  CrashRun run;
  std::ofstream(run.Folder() / "dumps" / "kept.txt") << "kept";
  std::string directory = run.DumpDirectory();
  directory.pop_back();
  run.Start("division", {}, directory);
  EXPECT_TRUE(EndedAs(run, FindWay("division"))) << run.Describe();
  EXPECT_THAT(run.Dumps(), IsEmpty());
  ASSERT_THAT(run.Lines("report"), SizeIs(1));
  std::string archive = run.Lines("report").front();
  EXPECT_THAT(archive, StartsWith(directory + "2"));
  archive.resize(archive.size() - std::string(" there").size());
  EXPECT_TRUE(std::filesystem::exists(FromUtf8(archive.substr(0, archive.size() - 4))));
  EXPECT_THAT(EntryNames(FromUtf8(archive)), ElementsAre("kept.txt"));
}

TEST(CrashReport, GoesOnWithoutADirectory) {
  CrashRun run;
  run.Start("null-write", {}, Utf8(run.Folder() / "missing" / ""));
  EXPECT_TRUE(EndedAs(run, FindWay("null-write"))) << run.Describe();
  EXPECT_THAT(run.Lines("collect"), SizeIs(2));
  ASSERT_THAT(run.Lines("report"), SizeIs(1));
  EXPECT_THAT(run.Lines("report").front(), testing::EndsWith(".dmp.zip missing"));
  EXPECT_FALSE(std::filesystem::exists(run.Folder() / "missing"));
}

TEST(CrashReport, TakesPathsOfEveryKind) {
  CrashRun run(FolderKind::kInternational);
  run.Start("division");
  EXPECT_TRUE(EndedAs(run, FindWay("division"))) << run.Describe();
  ASSERT_THAT(run.Archives(), SizeIs(1));
  EXPECT_EQ(run.Lines("report").front(),
            run.DumpDirectory() + NameOf(run.Archives()[0]) + " there");
}

// There is no room for a report, and no reason to hang.
TEST(CrashReport, AnOverflowOfAThreadOfTheHostIsNotReported) {
  CrashRun run;
  run.Start("thread-overflow");
  EXPECT_FALSE(run.End().timed_out);
  EXPECT_THAT(run.Lines("collect"), IsEmpty()) << run.Describe();
  EXPECT_THAT(run.Dumps(), IsEmpty());
  // 64-bit Wine (seen in 8.0) ends that thread alone.
  if (!run.Lines("ran").empty()) GTEST_SKIP() << "the process went on";
  const Way& worker = FindWay("worker-overflow");
  EXPECT_TRUE(EndedAs(run, worker)) << run.Describe();
}

TEST(CrashReport, TwoThreadsAtOnceBothReport) {
  CrashRun run;
  run.Start("two-threads");
  EXPECT_TRUE(EndedAs(run, FindWay("null-write"))) << run.Describe();
  // The vectored handler on both threads, and the filter on one or both.
  EXPECT_GE(run.Lines("collect").size(), 2u);
  EXPECT_THAT(run.Lines("report"), testing::AnyOf(SizeIs(1), SizeIs(2)));
  ASSERT_THAT(run.Dumps(), Not(IsEmpty()));
  EXPECT_THAT(EntryNames(run.Archives().back()), Contains(NameOf(run.Dumps().back())));
  for (const std::filesystem::path& file : run.Dumps()) {
    EXPECT_THAT(ReadMinidump(file).errors, IsEmpty()) << run.Describe();
  }
}

}  // namespace
