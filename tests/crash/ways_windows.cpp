#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "crash/ways.h"

namespace temvar_test {

// An uncaught exception of a program that mingw built ends in abort(), which is not reported.
const std::vector<Way>& WaysToCrash() {
  static const std::vector<Way> ways = {
      {"null-write", 0xC0000005, 2, 0, 0xC0000005},
      {"null-call", 0xC0000005, 2, 0, 0xC0000005},
      {"division", 0xC0000094, 1, 0, 0xC0000094},
      {"illegal", 0xC000001D, 1, 0, 0xC000001D},
      {"stack-overflow", 0xC00000FD, 1, 0, 0xC00000FD},
      {"abort", 0, 0, 0, 3},
      {"terminate", 0, 0, 0, 3},
      {"exception", 0, 0, 0, 3},
      {"heap-corruption", 0xC0000374, 1, 0, 0xC0000374},
      {"worker", 0xC0000005, 2, 0, 0xC0000005},
      {"worker-overflow", 0xC00000FD, 1, 0, 0xC00000FD},
  };
  return ways;
}

void CheckDump(const Way& way, const CrashRun& run, const Minidump& dump) {
  constexpr uint64_t kFunctionSize = 2048;
  EXPECT_EQ(dump.exception.code, way.code);
  EXPECT_EQ(dump.platform, 2u);
  const uint64_t fault = run.Address("fault");
  if (fault == 0) return;
  EXPECT_GE(dump.exception.registers.instruction, fault);
  EXPECT_LT(dump.exception.registers.instruction, fault + kFunctionSize);
}

}  // namespace temvar_test
