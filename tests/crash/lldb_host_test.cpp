// Opens dumps with LLDB, as a person would, and looks for the signal, the crashed function and what
// called it.
#include <gmock/gmock.h>

#include "crash/crash_run.h"

namespace {

using namespace test;
using testing::HasSubstr;

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

// Where each way to crash stopped, or near it, and what had called that.
TEST(LldbReads, TheDumpOfEachWay) {
  const std::tuple<const char*, std::string, const char*, const char*> ways[] = {
      {"null-write", "SIGSEGV", "frame #0: 0x", "WriteNull()"},
      {"null-call", "SIGSEGV", "frame #0: 0x0000000000000000", "CallNull()"},
      {"division", "SIGFPE", "Divide()", "CallFault("},
      {"illegal", "SIGILL", "RunIllegal()", "CallFault("},
      {"stack-overflow", "SIGSEGV", "frame #0: 0x", "Overflow("},
      {"exception", "SIGABRT", "ThrowUncaught()", "CallFault("},
      {"heap-corruption", "SIGABRT", "DamageHeap()", "CallFault("},
      {"worker", "SIGSEGV", "WriteNull()", "RkTaskThreadImpl::ThreadMain"},
      {"worker-overflow", "SIGSEGV", "frame #0: 0x", "Overflow("}};
  for (const auto& [way, signal, function, caller] : ways) {
    CrashRun run;
    run.Start(way);
    ASSERT_FALSE(run.Dumps().empty()) << run.Describe();
    const std::string open = "target create -c " + Utf8(run.Dumps().back()) + " ";
    const std::string child = Utf8(ProgramFolder() / "crash_child");
    const std::string text = AskLldb(run, {open + child, "bt", "register read rip", "image list"});
    EXPECT_THAT(text, HasSubstr("stop reason = signal " + signal));
    for (const char* seen : {function, caller, "rip = 0x", "libTemvar.so"}) {
      EXPECT_THAT(text, HasSubstr(seen)) << way;
    }
  }
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

}  // namespace
