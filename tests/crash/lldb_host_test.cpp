// Opens dumps with LLDB, as a person would, and looks for the signal, the crashed function and what
// called it.
#include <gmock/gmock.h>

#include <ostream>

#include "crash/crash_run.h"

namespace {

using namespace test;
using testing::HasSubstr;

struct Case {
  const char* way;
  const char* signal;
  const char* function;  // Where it stopped, or near it.
  const char* caller;
};

std::ostream& operator<<(std::ostream& stream, const Case& test) { return stream << test.way; }

// What LLDB prints. It must come back by itself: a code that is no signal hangs it.
std::string AskLldb(const CrashRun& run, const std::vector<std::string>& commands) {
  const std::filesystem::path output = run.Folder() / "lldb";
  std::vector<std::string> arguments = {"--no-lldbinit", "--batch"};
  for (const std::string& command : commands) {
    arguments.push_back("-o");
    arguments.push_back(command);
  }
  EXPECT_FALSE(RunChild(TEMVAR_LLDB, arguments, output, std::chrono::seconds(60)).timedOut);
  return ReadAll(output);
}

class LldbOpens : public testing::TestWithParam<Case> {};

TEST_P(LldbOpens, TheDump) {
  const Case& test = GetParam();
  CrashRun run;
  run.Start(test.way);
  ASSERT_FALSE(run.Dumps().empty()) << run.Describe();
  const std::string open = "target create -c " + Utf8(run.Dumps().back()) + " ";
  const std::string text = AskLldb(
      run, {open + Utf8(ProgramFolder() / "crash_child"), "bt", "register read rip", "image list"});
  EXPECT_THAT(text, HasSubstr(std::string("stop reason = signal ") + test.signal));
  EXPECT_THAT(text, HasSubstr(test.function));
  EXPECT_THAT(text, HasSubstr(test.caller));
  EXPECT_THAT(text, HasSubstr("rip = 0x"));
  EXPECT_THAT(text, HasSubstr("libTemvar.so"));
}

// From a customer's archive to function and line: what crashed has no symbols and is gone, and LLDB
// has what the maker kept.
TEST(LldbReads, ACustomersArchiveWithSymbolsThatWereSplitOff) {
  const std::filesystem::path symbols = TEMVAR_SYMBOLS;
  CrashRun run;
  const std::filesystem::path shipped = run.Folder() / "shipped";
  std::filesystem::create_directory(shipped);
  for (const char* const file : {"crash_child", TEMVAR_LIBRARY_NAME}) {
    std::filesystem::copy_file(symbols / file, shipped / file);
  }
  run.Start("worker", {}, "", shipped / "crash_child");
  std::filesystem::remove_all(shipped);
  ASSERT_FALSE(run.Archives().empty()) << run.Describe();
  const std::filesystem::path dump = run.Folder() / "customer.dmp";
  std::ofstream(dump, std::ios::binary) << ReadZip(ReadAll(run.Archives()[0])).at(0).data;

  const std::string text = AskLldb(run, {"settings set target.exec-search-paths " + Utf8(symbols),
                                         "target create -c " + Utf8(dump), "bt"});
  EXPECT_THAT(text, HasSubstr("WriteNull() at faults.cpp:"));
  EXPECT_THAT(text, testing::ContainsRegex("RunAssignment.* at task_thread_impl.cpp:[0-9]+"));
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
