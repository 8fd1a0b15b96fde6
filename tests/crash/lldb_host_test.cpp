// Opens dumps with LLDB, as a person would, and looks for the signal, the crashed function and what
// called it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "crash/crash_run.h"

namespace {

using namespace temvar_test;
using testing::HasSubstr;

struct Case {
  const char* way;
  const char* signal;
  const char* function;  // Where it stopped, or near it.
  const char* caller;
};

std::ostream& operator<<(std::ostream& stream, const Case& test) { return stream << test.way; }

// What LLDB prints of a dump. It must come back by itself: a code that is no signal hangs it.
std::string AskLldb(const CrashRun& run, const std::filesystem::path& dump) {
  const std::filesystem::path output = run.Folder() / "lldb";
  const ChildEnd end =
      RunChild(TEMVAR_LLDB,
               {"--no-lldbinit", "--batch", "-o", "bt", "-o", "register read rip", "-o",
                "image list", "-c", Utf8(dump), ProgramFolder() / "crash_child"},
               output, std::chrono::seconds(60));
  EXPECT_FALSE(end.timed_out);
  return ReadAll(output);
}

class LldbOpens : public testing::TestWithParam<Case> {};

TEST_P(LldbOpens, TheDump) {
  const Case& test = GetParam();
  CrashRun run;
  run.Start(test.way);
  ASSERT_FALSE(run.Dumps().empty()) << run.Describe();
  const std::string text = AskLldb(run, run.Dumps().back());
  EXPECT_THAT(text, HasSubstr(std::string("stop reason = signal ") + test.signal));
  EXPECT_THAT(text, HasSubstr(test.function));
  EXPECT_THAT(text, HasSubstr(test.caller));
  EXPECT_THAT(text, HasSubstr("rip = 0x"));
  EXPECT_THAT(text, HasSubstr("libTemvar.so"));
}

INSTANTIATE_TEST_SUITE_P(
    Crash, LldbOpens,
    testing::Values(Case{"null-write", "SIGSEGV", "frame #0: 0x", "WriteNull()"},
                    Case{"null-call", "SIGSEGV", "frame #0: 0x0000000000000000", "CallNull()"},
                    Case{"division", "SIGFPE", "Divide()", "CallFault("},
                    Case{"illegal", "SIGILL", "RunIllegal()", "CallFault("},
                    Case{"stack-overflow", "SIGSEGV", "frame #0: 0x", "Overflow("},
                    Case{"exception", "SIGABRT", "ThrowUncaught()", "CallFault("},
                    Case{"heap-corruption", "SIGABRT", "DamageHeap()", "CallFault("},
                    Case{"worker", "SIGSEGV", "WriteNull()", "RkTaskThreadImpl::ThreadMain"},
                    Case{"worker-overflow", "SIGSEGV", "frame #0: 0x", "Overflow("}));

}  // namespace
