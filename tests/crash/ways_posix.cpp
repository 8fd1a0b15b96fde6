#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>

#include "crash/ways.h"

namespace temvar_test {
namespace {

constexpr uint64_t kFunctionSize = 2048;  // No function of the child is larger.

bool Within(uint64_t address, uint64_t function) {
  return address >= function && address - function < kFunctionSize;
}

void CheckBacktrace(const CrashRun& run, const Minidump& dump) {
  const uint64_t fault = run.Address("fault");
  if (fault == 0) return;
  EXPECT_PRED2(Within, dump.exception.registers.instruction, fault);
  // A worker's task is called by the library, and an overflown stack is too deep to go up.
  const std::vector<uint64_t> calls = dump.Backtrace(dump.exception.registers);
  EXPECT_GT(calls.size(), 1u);
  for (size_t i = 1; i < calls.size() && i < 3; ++i) {
    EXPECT_NE(dump.FindModule(calls[i]), nullptr) << "frame " << i;
  }
}

}  // namespace

const std::vector<Way>& WaysToCrash() {
  static const std::vector<Way> ways = {
    {"null-write", 0xC0000005, 2, SIGSEGV, 0},
    {"null-call", 0xC0000005, 2, SIGSEGV, 0},
    {"division", 0xC0000094, 1, SIGFPE, 0},
    {"illegal", 0xC000001D, 1, SIGILL, 0},
    {"stack-overflow", 0xC0000005, 2, SIGSEGV, 0},
    {"abort", 0, 0, SIGABRT, 0},
    {"terminate", 0, 0, SIGABRT, 0},
    {"exception", 0xE06D7363, 1, SIGABRT, 0},
    {"worker", 0xC0000005, 2, SIGSEGV, 0},
    {"worker-overflow", 0xC0000005, 2, SIGSEGV, 0},
#if !defined(TEMVAR_FOREIGN_HEAP)
    {"heap-corruption", 0xC0000374, 1, SIGABRT, 0},
#endif
  };
  return ways;
}

void CheckDump(const Way& way, const CrashRun& run, const Minidump& dump) {
  // The signal stands as the code, and the handlers' code beside it.
  EXPECT_EQ(dump.exception.code, static_cast<uint32_t>(way.signal));
  EXPECT_THAT(dump.exception.parameters, testing::ElementsAre(way.code));
  EXPECT_TRUE(dump.texts_end);
  EXPECT_TRUE(dump.ranges_apart);
  EXPECT_EQ(dump.platform, 0x8201u);
  EXPECT_EQ(dump.processor, 9);
  EXPECT_THAT(dump.system, testing::StartsWith("Linux "));
  EXPECT_NE(dump.process, 0u);
  EXPECT_EQ(dump.streams.count(0x47670009), 1u) << "mappings";
  const auto has_id = [](const DumpModule& module) { return module.build_id.size() == 20; };
  EXPECT_TRUE(std::any_of(dump.modules.begin(), dump.modules.end(), has_id));
  CheckBacktrace(run, dump);
}

}  // namespace temvar_test
