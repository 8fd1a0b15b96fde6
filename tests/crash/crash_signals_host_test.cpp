// What the stand-in for other systems than Windows promises beyond the common behaviour.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "crash/crash_run.h"

namespace {

using namespace temvar_test;
using testing::IsEmpty;
using testing::SizeIs;

// The crashed code holds the lock of the heap: what needs it hangs, and is ended by the watchdog.
// The dump was complete before.
TEST(CrashSignals, UnderTheLockOfTheHeapTheDumpSurvives) {
#if defined(TEMVAR_FOREIGN_HEAP)
  GTEST_SKIP() << "the heap is a sanitizer's";
#endif
  for (const char* const way : {"heap-locked", "heap-corruption"}) {
    CrashRun run;
    run.Start(way, {"bystander"});
    const int signal = way == std::string("heap-locked") ? SIGSEGV : SIGABRT;
    EXPECT_EQ(run.End().signal, signal) << run.Describe();
    EXPECT_LT(run.End().duration.count(), 20'000);
    ASSERT_THAT(run.Dumps(), SizeIs(1)) << run.Describe();
    const Minidump dump = ReadMinidump(run.Dumps()[0]);
    EXPECT_THAT(dump.errors, IsEmpty());
    EXPECT_GE(dump.threads.size(), 2u);
    EXPECT_EQ(dump.exception.code, static_cast<uint32_t>(signal));
  }
}

TEST(CrashSignals, ACrashInACallbackEndsTheProcess) {
  CrashRun run;
  run.Start("division", {"crash-in-collect"});
  EXPECT_EQ(run.End().signal, SIGSEGV) << run.Describe();
  EXPECT_THAT(run.Dumps(), SizeIs(1));
  EXPECT_THAT(run.Lines("collect"), SizeIs(1));
}

// Who handled the signal before the library gets it afterwards, with the facts of the fault.
TEST(CrashSignals, AForeignHandlerHasItsTurn) {
  const std::pair<const char*, size_t> reports[] = {
      {"null-write", 1}, {"abort", 0}, {"exception", 1}};
  for (const auto& [way, count] : reports) {
    CrashRun run;
    run.Start(way, {"foreign"});
    EXPECT_EQ(run.End().status, 42u) << run.Describe();
    EXPECT_THAT(run.Lines("foreign"), SizeIs(1)) << run.Describe();
    EXPECT_THAT(run.Lines("report"), SizeIs(count)) << way;
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

}  // namespace
