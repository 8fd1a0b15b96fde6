// What only the system's own exceptions can show: faults that the host handles, and a report that
// crashes in turn.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "crash/crash_run.h"

namespace {

using namespace temvar_test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

constexpr uint32_t kAccessViolation = 0xC0000005;

// Nobody is asked whether the host will handle it: a dump and an archive, but no notice, and the
// exit flag stays as it is.
TEST(CrashExceptions, AFaultThatTheHostHandlesLeavesDumpAndArchive) {
  CrashRun run;
  run.Start("null-write", {"catch"});
  EXPECT_EQ(run.End().status, 0u) << run.Describe();
  EXPECT_THAT(run.Lines("ran"), ElementsAre("on"));
  EXPECT_THAT(run.Lines("collect"), ElementsAre(run.DumpDirectory() + " null"));
  EXPECT_THAT(run.Lines("report"), IsEmpty());
  ASSERT_THAT(run.Dumps(), SizeIs(1));
  ASSERT_THAT(run.Archives(), SizeIs(1));
  const Minidump dump = ReadMinidump(run.Dumps()[0]);
  EXPECT_THAT(dump.errors, IsEmpty());
  EXPECT_EQ(dump.exception.code, kAccessViolation);
  EXPECT_THAT(EntryNames(run.Archives()[0]), ElementsAre(Utf8(run.Dumps()[0].filename())));
}

TEST(CrashExceptions, AFaultThatTheHostHandlesLeavesNothingWhileTheExitFlagIsSet) {
  CrashRun run;
  run.Start("null-write", {"catch", "exiting"});
  EXPECT_EQ(run.End().status, 0u) << run.Describe();
  EXPECT_THAT(run.Lines("ran"), ElementsAre("on, exiting"));
  EXPECT_THAT(run.Lines("collect"), IsEmpty());
  EXPECT_THAT(run.Dumps(), IsEmpty());
}

// The fault in the callback is an access violation like any other, and reported as one. The fault
// in that report's callback is one too many.
TEST(CrashExceptions, ACallbackThatCrashesEveryTimeEndsTheProcess) {
  for (const char* const way : {"null-write", "division", "stack-overflow"}) {
    CrashRun run;
    run.Start(way, {"crash-in-collect"});
    EXPECT_FALSE(run.End().timed_out) << way;
    EXPECT_EQ(run.End().status, kAccessViolation) << run.Describe();
    EXPECT_THAT(run.Lines("collect"), SizeIs(2)) << run.Describe();
    EXPECT_THAT(run.Lines("report"), IsEmpty());
    ASSERT_THAT(run.Dumps(), Not(IsEmpty()));
    for (const std::filesystem::path& file : run.Dumps()) {
      EXPECT_THAT(ReadMinidump(file).errors, IsEmpty()) << run.Describe();
    }
  }
}

}  // namespace
