#include "crash/report.h"

#include <gtest/gtest.h>

#include "temvar/types.h"

namespace {

constexpr DWORD kOthers = ModuleWriteModule | ModuleWriteMiscRecord | ModuleWriteCvRecord;

struct Case {
  const WCHAR* path;
  DWORD flags;
  DWORD left;
};

TEST(MinidumpFilter, LeavesDataSectionsToNtdllAlone) {
  const Case cases[] = {
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
  for (const Case& test : cases) {
    MINIDUMP_CALLBACK_INPUT input = {};
    input.CallbackType = ModuleCallback;
    input.Module.FullPath = const_cast<WCHAR*>(test.path);
    MINIDUMP_CALLBACK_OUTPUT output = {};
    output.ModuleWriteFlags = test.flags;
    EXPECT_TRUE(temvar::FilterMinidump(nullptr, &input, &output));
    EXPECT_EQ(output.ModuleWriteFlags, test.left);
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

}  // namespace
