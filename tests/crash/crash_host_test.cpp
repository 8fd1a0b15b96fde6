// Crashes child programs and looks at what is left: the files, what the callbacks were given, and
// how the process ended.
#include <gmock/gmock.h>

#include <csignal>

#include "crash/crash_run.h"

namespace {

using namespace test;
using namespace testing;

constexpr bool kWindows = std::filesystem::path::preferred_separator == '\\';

// What a crash leads to: what the handlers see, 0 when no report is made; how many passes of the
// handlers make one, the vectored handler and the unhandled filter or one of them; and how the
// process ends.
struct Ending {
  uint32_t code;
  size_t passes;
  int signal;
  uint32_t status;
};

struct Way {
  Way(const char* way, const Ending& windows, const Ending& elsewhere)
      : name(way), ending(kWindows ? windows : elsewhere) {}
  std::string name;
  Ending ending;
};

std::ostream& operator<<(std::ostream& stream, const Way& way) { return stream << way.name; }

constexpr Ending kAccess = {0xC0000005, 2, 0, 0xC0000005}, kUnreported = {0, 0, 0, 3};
constexpr Ending kSegfault = {0xC0000005, 2, SIGSEGV, 0}, kAborted = {0, 0, SIGABRT, 0};
// SIGTRAP and SIGSYS of Linux; Windows has no such names.
constexpr int kTrap = 5, kForbiddenCall = 31;
constexpr Ending kOverflow = {0xC00000FD, 1, 0, 0xC00000FD};

// An uncaught exception of a program that mingw built ends in abort(), which is not reported.
const Way kWays[] = {
    {"null-write", kAccess, kSegfault},
    {"null-call", kAccess, kSegfault},
    {"division", {0xC0000094, 1, 0, 0xC0000094}, {0xC0000094, 1, SIGFPE, 0}},
    {"illegal", {0xC000001D, 1, 0, 0xC000001D}, {0xC000001D, 1, SIGILL, 0}},
    {"breakpoint", {0x80000003, 1, 0, 0x80000003}, {0x80000003, 1, kTrap, 0}},
    {"forbidden-call", {0xC000001C, 1, 0, 0xC000001C}, {0xC000001C, 1, kForbiddenCall, 0}},
    {"stack-overflow", kOverflow, kSegfault},
    {"abort", kUnreported, kAborted},
    {"terminate", kUnreported, kAborted},
    {"exception", kUnreported, {0xE06D7363, 1, SIGABRT, 0}},
    {"worker", kAccess, kSegfault},
    {"worker-overflow", kOverflow, kSegfault},
#if !defined(TEMVAR_FOREIGN_HEAP)
    {"heap-corruption", {0xC0000374, 1, 0, 0xC0000374}, {0xC0000374, 1, SIGABRT, 0}},
#endif
};

bool EndedAs(const CrashRun& run, const std::string& way) {
  const auto isIt = [&way](const Way& other) { return other.name == way; };
  const Ending& ending = std::find_if(std::begin(kWays), std::end(kWays), isIt)->ending;
  return !run.End().timedOut && run.End().signal == ending.signal &&
         run.End().status == ending.status;
}

std::string NameOf(const std::filesystem::path& file) { return Utf8(file.filename()); }

// Names of tests have no dashes.
std::string NameOfWay(const TestParamInfo<Way>& info) {
  std::string name = info.param.name;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

// What only a reader who knows the system can check: the code, the system's own fields, and where
// the fault happened, as far as the child has logged it.
void CheckDump(const Ending& ending, const CrashRun& run, const Minidump& dump) {
  constexpr uint64_t kFunctionSize = 2048;  // No function of the child is larger.
  if (const uint64_t fault = run.FaultAddress(); fault != 0) {
    EXPECT_GE(dump.exception.registers.instruction, fault);
    EXPECT_LT(dump.exception.registers.instruction, fault + kFunctionSize);
  }
  EXPECT_EQ(dump.platform, kWindows ? 2u : 0x8201u);
  // On Linux the signal is the code, and the handlers' code beside it.
  EXPECT_EQ(dump.exception.code, kWindows ? ending.code : static_cast<uint32_t>(ending.signal));
  // In the list of threads Windows may show the crashed one inside the call that writes the dump
  // (Wine 10 does, Wine 8 does not); its stack holds the frame of the fault either way.
  if (kWindows) return;
  EXPECT_EQ(dump.FindThread(dump.exception.thread)->registers.instruction,
            dump.exception.registers.instruction);
  EXPECT_THAT(dump.exception.parameters, ElementsAre(ending.code));
  EXPECT_TRUE(dump.textsEnd);
  EXPECT_TRUE(dump.rangesApart);
  EXPECT_EQ(dump.processor, 9);
  EXPECT_THAT(dump.system, StartsWith("Linux "));
  EXPECT_NE(dump.process, 0u);
  EXPECT_EQ(dump.streams.count(0x47670009), 1u) << "mappings";
  EXPECT_THAT(dump.modules, Contains(Field(&DumpModule::buildId, SizeIs(20))));
}

class EveryWay : public TestWithParam<Way> {};

TEST_P(EveryWay, LeavesDumpAndArchiveAndCallsTheHost) {
  const Ending& way = GetParam().ending;
  CrashRun run;
  run.Start(GetParam().name);
  EXPECT_TRUE(EndedAs(run, GetParam().name)) << run.Describe();
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
  std::printf("%s us from the fault, dump of %.1f KB, archive of %.1f KB\n",
              run.Lines("elapsed").front().c_str(),
              static_cast<double>(std::filesystem::file_size(run.Dumps().back())) / 1024,
              static_cast<double>(std::filesystem::file_size(archive)) / 1024);

  for (const std::filesystem::path& file : run.Dumps()) {
    const Minidump dump = ReadMinidump(file);
    EXPECT_THAT(dump.errors, IsEmpty());
    ASSERT_FALSE(dump.modules.empty());
    EXPECT_THAT(dump.modules.front().path, HasSubstr("crash_child"));
    ASSERT_TRUE(dump.exception.present);
    EXPECT_TRUE(dump.exception.registers.known);
    EXPECT_GE(dump.threads.size(), GetParam().name == "worker" ? 2u : 1u);
    for (const DumpThread& thread : dump.threads) {
      EXPECT_TRUE(thread.registers.known && thread.stackSize > 0) << thread.id;
    }
    const DumpThread* const thread = dump.FindThread(dump.exception.thread);
    ASSERT_NE(thread, nullptr);
    // Below the dumped stack after an overflow.
    EXPECT_LT(dump.exception.registers.stack, thread->stackStart + thread->stackSize);
    CheckDump(way, run, dump);
  }
}

TEST_P(EveryWay, LeavesNothingWhileTheExitFlagIsSet) {
  CrashRun run;
  run.Start(GetParam().name, {"exiting"});
  EXPECT_TRUE(EndedAs(run, GetParam().name)) << run.Describe();
  EXPECT_THAT(run.Lines("collect"), IsEmpty());
  EXPECT_THAT(run.Lines("report"), IsEmpty());
  EXPECT_TRUE(std::filesystem::is_empty(run.Folder() / "dumps"));
}

INSTANTIATE_TEST_SUITE_P(Crash, EveryWay, ValuesIn(kWays), NameOfWay);

// The handlers stay in force, and so does the code that they lead to; callbacks may be missing or
// throw; a fault under the exit flag leaves nothing, and the next one is reported.
TEST(CrashReport, ComesWhateverTheHostHasDoneBefore) {
  const std::tuple<const char*, std::vector<std::string>, size_t, size_t> cases[] = {
      {"division", {"destroyed", "second"}, 1, 1},
      {"null-write", {"unloaded"}, 2, 1},
      {"division", {"probe"}, 1, 1},
      {"division", {"throw-in-collect"}, 1, 1},
      {"division", {"no-collect", "no-notify"}, 0, 0}};
  for (const auto& [way, options, collects, reports] : cases) {
    SCOPED_TRACE(PrintToString(options));
    CrashRun run;
    run.Start(way, options);
    EXPECT_TRUE(EndedAs(run, way)) << run.Describe();
    EXPECT_THAT(run.Dumps(), Not(IsEmpty()));
    EXPECT_EQ(run.Archives().size(), run.Dumps().size());
    EXPECT_THAT(run.Lines("collect"), SizeIs(collects));
    EXPECT_THAT(run.Lines("report"), SizeIs(reports));
  }
}

// Nobody is asked whether the host will handle a fault: a dump and an archive, but no notice, and
// the exit flag stays as it is.
TEST(CrashReport, AFaultThatTheHostHandlesLeavesDumpAndArchive) {
  CrashRun run;
  run.Start("null-write", {"caught"});
  EXPECT_EQ(run.End().status, 0u) << run.Describe();
  EXPECT_THAT(run.Lines("ran"), ElementsAre("on"));
  EXPECT_THAT(run.Lines("collect"), ElementsAre(run.DumpDirectory() + " null"));
  EXPECT_THAT(run.Lines("report"), IsEmpty());
  ASSERT_THAT(run.Dumps(), SizeIs(1));
  ASSERT_THAT(run.Archives(), SizeIs(1));
  EXPECT_THAT(ReadMinidump(run.Dumps()[0]).errors, IsEmpty());
  EXPECT_THAT(EntryNames(run.Archives()[0]), ElementsAre(NameOf(run.Dumps()[0])));
}

TEST(CrashReport, PacksWhatTheHostAddsButNoArchiveInAFolderOfAnyName) {
  CrashRun run(FolderKind::kInternational);
  run.Start("division", {"leave-files"});
  EXPECT_TRUE(EndedAs(run, "division")) << run.Describe();
  ASSERT_THAT(run.Dumps(), SizeIs(1));
  const std::string archive = NameOf(run.Dumps()[0]) + ".zip";
  EXPECT_THAT(EntryNames(run.Folder() / "dumps" / archive),
              UnorderedElementsAre(NameOf(run.Dumps()[0]), "logs/host.log"));
  EXPECT_THAT(run.Lines("report"), ElementsAre(run.DumpDirectory() + archive + " there"));
}

TEST(CrashReport, WithoutSeparatorLiesBesideTheDirectory) {
  CrashRun run;
  std::ofstream(run.Folder() / "dumps" / "kept.txt") << "kept";
  std::string directory = run.DumpDirectory();
  directory.pop_back();
  run.Start("division", {}, directory);
  EXPECT_TRUE(EndedAs(run, "division")) << run.Describe();
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
  EXPECT_TRUE(EndedAs(run, "null-write")) << run.Describe();
  EXPECT_THAT(run.Lines("collect"), SizeIs(2));
  EXPECT_THAT(run.Lines("report"), ElementsAre(EndsWith(".dmp.zip missing")));
  EXPECT_FALSE(std::filesystem::exists(run.Folder() / "missing"));
}

// There is no room for a report, and no reason to hang.
TEST(CrashReport, AnOverflowOfAThreadOfTheHostIsNotReported) {
  CrashRun run;
  run.Start("thread-overflow");
  EXPECT_FALSE(run.End().timedOut);
  EXPECT_THAT(run.Lines("collect"), IsEmpty()) << run.Describe();
  EXPECT_THAT(run.Dumps(), IsEmpty());
  // 64-bit Wine (seen in 8.0) ends that thread alone.
  if (!run.Lines("ran").empty()) GTEST_SKIP() << "the process went on";
  EXPECT_TRUE(EndedAs(run, "worker-overflow")) << run.Describe();
}

TEST(CrashReport, TwoThreadsAtOnceBothReport) {
  CrashRun run;
  run.Start("two-threads");
  EXPECT_TRUE(EndedAs(run, "null-write")) << run.Describe();
  // The vectored handler on both threads, and the filter on one or both.
  EXPECT_GE(run.Lines("collect").size(), 2u);
  EXPECT_THAT(run.Lines("report"), AnyOf(SizeIs(1), SizeIs(2)));
  ASSERT_THAT(run.Dumps(), Not(IsEmpty()));
  EXPECT_THAT(EntryNames(run.Archives().back()), Contains(NameOf(run.Dumps().back())));
  for (const std::filesystem::path& file : run.Dumps()) {
    EXPECT_THAT(ReadMinidump(file).errors, IsEmpty()) << run.Describe();
  }
}

// What only the system's own exceptions can show: a report that crashes in turn, and one on the
// rest of a stack.
#if defined(_WIN32)

// The fault in the callback is an access violation like any other, and reported as one. The fault
// in that report's callback is one too many.
TEST(CrashReport, ACallbackThatCrashesEveryTimeEndsTheProcess) {
  for (const char* const way : {"null-write", "division", "stack-overflow"}) {
    CrashRun run;
    run.Start(way, {"crash-in-collect"});
    EXPECT_FALSE(run.End().timedOut) << way;
    EXPECT_EQ(run.End().status, kAccess.code) << run.Describe();
    EXPECT_THAT(run.Lines("collect"), SizeIs(2)) << run.Describe();
    EXPECT_THAT(run.Lines("report"), IsEmpty());
    ASSERT_THAT(run.Dumps(), Not(IsEmpty()));
    for (const std::filesystem::path& file : run.Dumps()) {
      EXPECT_THAT(ReadMinidump(file).errors, IsEmpty()) << run.Describe();
    }
  }
}

// The handlers run on what is left of the stack: just above what the library keeps there; on a
// thread of the host with too little for an archive, and for anything.
TEST(CrashReport, ACrashCloseToTheEndOfAStackEndsTheProcess) {
  const std::tuple<const char*, std::vector<std::string>, size_t, bool> cases[] = {
      {"stack-left-310", {}, 1, true},
      {"stack-left-275", {}, 1, true},
      {"stack-left-78", {"on-thread"}, 1, false},
      {"stack-left-76", {"on-thread"}, 1, false},
      {"stack-left-48", {"on-thread"}, 0, false}};
  for (const auto& [way, options, reports, archive] : cases) {
    CrashRun run;
    run.Start(way, options);
    EXPECT_EQ(run.End().status, kAccess.code) << run.Describe();
    EXPECT_THAT(run.Lines("ran"), IsEmpty()) << run.Describe();
    EXPECT_THAT(run.Lines("report"), SizeIs(reports)) << run.Describe();
    EXPECT_EQ(run.Dumps().empty(), reports == 0) << way;
    EXPECT_EQ(run.Archives().empty(), !archive) << way;
  }
}

#endif

}  // namespace
