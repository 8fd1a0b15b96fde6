// What the stand-in for other systems than Windows promises beyond the common behaviour.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <map>

#include "crash/crash_run.h"

namespace {

using namespace test;
using namespace testing;

// Each process is in some trouble, and the report comes all the same: dump, archive, notice, and
// the signal of the crash at the end.
TEST(CrashSignals, TroubleInTheProcessLosesNoReport) {
  using Options = std::vector<std::string>;
  std::vector<std::tuple<Options, const char*, int>> troubles = {
      {{"timer", "bystander"}, "division", SIGFPE},
      {{"signals-blocked"}, "null-write", SIGSEGV},
      {{"signals-blocked"}, "worker", SIGSEGV},
      {{"signals-blocked", "on-thread"}, "exception", SIGABRT},
      {{"many-threads"}, "division", SIGFPE},
      {{"no-proc"}, "division", SIGFPE},
      {{"crash-in-collect"}, "division", SIGFPE},
      {{"fork-in-collect"}, "division", SIGFPE},
      {{"onlooker"}, "null-write", SIGSEGV},
  };
#if !defined(TEMVAR_FOREIGN_HEAP)
  // UndefinedBehaviourSanitizer needs descriptors for its own checks.
  troubles.push_back({{"no-descriptors", "bystander"}, "null-write", SIGSEGV});
#endif
  for (const auto& [options, way, signal] : troubles) {
    SCOPED_TRACE(way + PrintToString(options));
    CrashRun run;
    // A FIFO that nobody writes to, and links that lead out.
    ASSERT_EQ(mkfifo((run.Folder() / "dumps" / "fifo").c_str(), 0600), 0);
    std::filesystem::create_symlink("/etc/passwd", run.Folder() / "dumps" / "link");
    std::filesystem::create_directory_symlink("/etc/ssl", run.Folder() / "dumps" / "folder-link");
    run.Start(way, options);
    EXPECT_EQ(run.End().signal, signal) << run.Describe();
    EXPECT_LT(run.End().duration.count(), 20'000);
    ASSERT_THAT(run.Dumps(), Not(IsEmpty())) << run.Describe();
    for (const std::filesystem::path& file : run.Dumps()) {
      const Minidump dump = ReadMinidump(file);
      EXPECT_THAT(dump.errors, IsEmpty());
      EXPECT_GT(dump.FindThread(dump.exception.thread)->stackSize, 0u);
      EXPECT_GT(dump.threads.size(), options[0] == "many-threads" ? 600u : 0u);
    }
    ASSERT_THAT(run.Lines("report"), Not(IsEmpty())) << run.Describe();
    EXPECT_THAT(run.Lines("report"), Each(EndsWith(" there")));
    EXPECT_THAT(EntryNames(run.Archives().back()), Each(EndsWith(".dmp")));
  }
}

// The crashed code holds the lock of the heap: what needs it hangs, and is left. Dump, archive and
// notice do without it.
TEST(CrashSignals, UnderTheLockOfTheHeapNothingIsLost) {
#if defined(TEMVAR_FOREIGN_HEAP)
  GTEST_SKIP() << "the heap is a sanitizer's";
#endif
  for (const char* const way : {"heap-locked", "heap-corruption"}) {
    CrashRun run;
    const std::filesystem::path dumps = run.Folder() / "dumps";
    std::filesystem::create_directories(dumps / "logs" / "old");
    const std::string noise = std::string(100'000, 'x') + "end";
    for (const char* name : {"logs/old/a.txt", "logs/earlier.zip", "logs/b.txt"}) {
      std::ofstream(dumps / name) << noise;
    }
    ASSERT_EQ(mkfifo((dumps / "fifo").c_str(), 0600), 0);
    std::filesystem::create_symlink("/etc/passwd", dumps / "link");
    run.Start(way, {"bystander"});
    const int signal = way == std::string("heap-locked") ? SIGSEGV : SIGABRT;
    EXPECT_EQ(run.End().signal, signal) << run.Describe();
    EXPECT_LT(run.End().duration.count(), 30'000);
    ASSERT_THAT(run.Dumps(), Not(IsEmpty())) << run.Describe();
    const Minidump dump = ReadMinidump(run.Dumps()[0]);
    EXPECT_THAT(dump.errors, IsEmpty());
    EXPECT_GE(dump.threads.size(), 2u);
    EXPECT_EQ(dump.exception.code, static_cast<uint32_t>(signal));
    EXPECT_THAT(run.Lines("report"), SizeIs(1)) << run.Describe();
    EXPECT_THAT(run.Lines("report"), Each(EndsWith(".dmp.zip there")));
    ASSERT_THAT(run.Archives(), Not(IsEmpty()));
    std::map<std::string, std::string> files;
    for (const ZipEntry& entry : ReadZip(ReadAll(run.Archives()[0]))) {
      files[entry.name] = entry.data;
    }
    EXPECT_EQ(files.size(), 3u);
    EXPECT_EQ(files["logs/old/a.txt"], noise);
    EXPECT_EQ(files["logs/b.txt"], noise);
    EXPECT_EQ(files[run.Dumps()[0].filename()], ReadAll(run.Dumps()[0]));
  }
}

// The file system takes no more than a part of the dump, and the process is not ended for it.
TEST(CrashSignals, AFileThatMayNotGrowIsPassedOver) {
  CrashRun run;
  run.Start("null-write", {"file-limit"});
  EXPECT_EQ(run.End().signal, SIGSEGV) << run.Describe();
  EXPECT_THAT(run.Lines("report"), SizeIs(1)) << run.Describe();
}

// A handler of before takes the signal in the place of a structured handler: after the vectored
// pass, before the filter. An exception that nobody catches can't be taken any more.
TEST(CrashSignals, AForeignHandlerHasItsTurn) {
  const std::tuple<const char*, size_t, size_t> cases[] = {
      {"null-write", 1, 0}, {"abort", 0, 0}, {"exception", 1, 1}};
  for (const auto& [way, dumps, reports] : cases) {
    CrashRun run;
    run.Start(way, {"foreign"});
    EXPECT_EQ(run.End().status, 42u) << run.Describe();
    EXPECT_THAT(run.Lines("foreign"), SizeIs(1)) << run.Describe();
    EXPECT_THAT(run.Dumps(), SizeIs(dumps)) << way;
    EXPECT_THAT(run.Lines("report"), SizeIs(reports)) << way;
  }
}

TEST(CrashSignals, ASecondInstallPutsDisplacedHandlersBack) {
  const std::pair<const char*, int> signals[] = {{"null-write", SIGSEGV}, {"exception", SIGABRT}};
  for (const auto& [way, signal] : signals) {
    CrashRun run;
    run.Start(way, {"foreign-later", "second"});
    EXPECT_EQ(run.End().signal, signal) << run.Describe();
    EXPECT_THAT(run.Lines("report"), SizeIs(1)) << run.Describe();
  }
}

// The zone of the host is 13:37 ahead when it crashes.
TEST(CrashSignals, TheNameHasTheTimeOfTheZoneOfTheCrash) {
  CrashRun run;
  const time_t before = time(nullptr);
  run.Start("division", {"zone"});
  ASSERT_THAT(run.Dumps(), SizeIs(1)) << run.Describe();
  tm local = {};
  ASSERT_NE(strptime(run.Dumps()[0].filename().c_str(), "%Y%m%d%H%M%S", &local), nullptr);
  const time_t named = timegm(&local) - (13 * 60 + 37) * 60;
  EXPECT_GE(named, before);
  EXPECT_LE(named, time(nullptr));
}

// What the process was given is nobody's business: neither its arguments nor its environment, on
// whichever thread it crashes. Only its user reads what is left, and nothing is written through a
// link.
TEST(CrashSignals, ADumpKeepsSecrets) {
  setenv("TEMVAR_TEST_SECRET", "secret-of-the-environment", 1);
  std::vector<const char*> ways = {"null-write", "worker", "stack-overflow"};
#if !defined(TEMVAR_FOREIGN_HEAP)
  ways.push_back("heap-corruption");
#endif
  for (const char* const way : ways) {
    CrashRun run;
    const mode_t mask = umask(0);
    run.Start(way, {"secret-of-the-arguments"});
    umask(mask);
    ASSERT_THAT(run.Dumps(), Not(IsEmpty())) << run.Describe();
    EXPECT_THAT(ReadAll(run.Dumps()[0]), Not(HasSubstr("secret-of-the-")));
    for (const auto& file : std::filesystem::directory_iterator(run.Folder() / "dumps")) {
      EXPECT_EQ(file.status().permissions(), std::filesystem::perms(0600)) << file.path();
    }
  }
}

TEST(CrashSignals, NothingIsWrittenThroughALink) {
  CrashRun run;
  const std::filesystem::path victim = run.Folder() / "victim";
  std::ofstream(victim) << "untouched";
  // The names of the seconds to come, in the zone of the child.
  for (int i = 0; i < 20; ++i) {
    const time_t moment = time(nullptr) + i;
    char name[32];
    strftime(name, sizeof(name), "%Y%m%d%H%M%S.dmp", localtime(&moment));
    std::filesystem::create_symlink(victim, run.Folder() / "dumps" / name);
    std::filesystem::create_symlink(victim, run.Folder() / "dumps" / (std::string(name) + ".zip"));
  }
  run.Start("division");
  EXPECT_THAT(run.Lines("report"), SizeIs(1)) << run.Describe();
  EXPECT_THAT(run.Lines("report"), Each(EndsWith(" there")));
  EXPECT_EQ(ReadAll(victim), "untouched");
}

}  // namespace
