// What goes into a dump, and the clock that names it.
#include "crash/report.h"

#include <gtest/gtest.h>

#include <ctime>

#include "platform/crash_clock.h"
#include "temvar/types.h"
#include "temvar/utility_sys.h"

namespace {

constexpr DWORD kOthers = ModuleWriteModule | ModuleWriteMiscRecord | ModuleWriteCvRecord;

TEST(MinidumpFilter, LeavesDataSectionsToNtdllAlone) {
  const std::tuple<const WCHAR*, DWORD, DWORD> cases[] = {
      {TMV_WIDE("C:\\Windows\\System32\\ntdll.dll"), kOthers | ModuleWriteDataSeg,
       kOthers | ModuleWriteDataSeg},
      {TMV_WIDE("ntdll"), ModuleWriteDataSeg, ModuleWriteDataSeg},
      {TMV_WIDE("C:\\Windows\\System32\\NTDLL.DLL"), kOthers | ModuleWriteDataSeg, kOthers},
      {TMV_WIDE("C:\\host\\ntdll.x\\host.exe"), kOthers | ModuleWriteDataSeg, kOthers},
      {TMV_WIDE("C:\\host\\ntdll2.dll"), ModuleWriteDataSeg, 0},
      {TMV_WIDE(""), kOthers | ModuleWriteDataSeg, kOthers},
      {nullptr, kOthers | ModuleWriteDataSeg, kOthers},
      {nullptr, kOthers, kOthers},
      {TMV_WIDE("C:\\host\\host.exe"), kOthers, kOthers},
  };
  for (const auto& [path, flags, left] : cases) {
    MINIDUMP_CALLBACK_INPUT input = {};
    input.CallbackType = ModuleCallback;
    input.Module.FullPath = const_cast<WCHAR*>(path);
    MINIDUMP_CALLBACK_OUTPUT output = {};
    output.ModuleWriteFlags = flags;
    EXPECT_TRUE(temvar::FilterMinidump(nullptr, &input, &output));
    EXPECT_EQ(output.ModuleWriteFlags, left);
  }
}

TEST(MinidumpFilter, AnswersTheTypesItKnows) {
  MINIDUMP_CALLBACK_INPUT input = {};
  MINIDUMP_CALLBACK_OUTPUT output = {};
  for (DWORD type = 0; type < 12; ++type) {
    input.CallbackType = type;
    EXPECT_EQ(temvar::FilterMinidump(nullptr, &input, &output) != FALSE, type <= 4) << type;
  }
  input.CallbackType = ModuleCallback;
  EXPECT_FALSE(temvar::FilterMinidump(nullptr, nullptr, &output));
  EXPECT_FALSE(temvar::FilterMinidump(nullptr, &input, nullptr));
}

// The ordinary clock and the one for crashes agree, across every change of the zone that lies
// ahead. On Windows there is the ordinary clock alone.
TEST(CrashClock, AgreesWithTheOrdinaryClock) {
  temvar::PrepareCrashTime();
  const int64_t now = std::time(nullptr);
  for (int64_t time = now; time < now + 4 * 365 * 86400LL; time += 1801) {
    char text[32] = {};
    if (!temvar::CrashTimeOf(time, text)) GTEST_SKIP() << "the ordinary clock serves here";
    char expected[32] = {};
    TmvUtilitySys()->FormatTime(time, expected, sizeof(expected), "%Y%m%d%H%M%S");
    ASSERT_STREQ(text, expected) << time;
  }
}

}  // namespace
