// What only the system's own exceptions can show: a report that crashes in turn, and one on the
// rest of a stack.
#include <gmock/gmock.h>

#include "crash/crash_run.h"

namespace {

using namespace test;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

constexpr uint32_t kAccessViolation = 0xC0000005;

// The fault in the callback is an access violation like any other, and reported as one. The fault
// in that report's callback is one too many.
TEST(CrashExceptions, ACallbackThatCrashesEveryTimeEndsTheProcess) {
  for (const char* const way : {"null-write", "division", "stack-overflow"}) {
    CrashRun run;
    run.Start(way, {"crash-in-collect"});
    EXPECT_FALSE(run.End().timedOut) << way;
    EXPECT_EQ(run.End().status, kAccessViolation) << run.Describe();
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
TEST(CrashExceptions, ACrashCloseToTheEndOfAStackEndsTheProcess) {
  const std::tuple<const char*, std::vector<std::string>, size_t, bool> cases[] = {
      {"stack-left-310", {}, 1, true},
      {"stack-left-275", {}, 1, true},
      {"stack-left-78", {"on-thread"}, 1, false},
      {"stack-left-76", {"on-thread"}, 1, false},
      {"stack-left-48", {"on-thread"}, 0, false}};
  for (const auto& [way, options, reports, archive] : cases) {
    CrashRun run;
    run.Start(way, options);
    EXPECT_EQ(run.End().status, kAccessViolation) << run.Describe();
    EXPECT_THAT(run.Lines("ran"), IsEmpty()) << run.Describe();
    EXPECT_THAT(run.Lines("report"), SizeIs(reports)) << run.Describe();
    EXPECT_EQ(run.Dumps().empty(), reports == 0) << way;
    EXPECT_EQ(run.Archives().empty(), !archive) << way;
  }
}

}  // namespace
