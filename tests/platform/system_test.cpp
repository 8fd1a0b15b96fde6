// System facts of the platform layer, on Windows and elsewhere.
#include <gtest/gtest.h>

#include <string>

#include "platform/win32.h"
#include "temvar/types.h"

namespace {

using Wide = std::basic_string<WCHAR>;

TEST(System, PathRemoveFileSpec) {
  const struct {
    const WCHAR* path;
    const WCHAR* folder;
  } cases[] = {
      {TMV_WIDE("C:\\Prod\\bin\\app.exe"), TMV_WIDE("C:\\Prod\\bin")},
      {TMV_WIDE("C:\\app.exe"), TMV_WIDE("C:\\")},
      {TMV_WIDE("\\home\\app"), TMV_WIDE("\\home")},
      {TMV_WIDE("\\app"), TMV_WIDE("\\")},
      {TMV_WIDE("app"), TMV_WIDE("")},
  };
  for (const auto& [path, folder] : cases) {
    WCHAR units[64] = {};
    Wide(path).copy(units, 63);
    EXPECT_TRUE(PathRemoveFileSpecW(units));
    EXPECT_EQ(Wide(units), folder);
  }
  WCHAR root[] = {'\\', 0};
  EXPECT_FALSE(PathRemoveFileSpecW(root));
}

TEST(System, ModuleFileName) {
  WCHAR whole[512] = {};
  const DWORD length = GetModuleFileNameW(nullptr, whole, 512);
  ASSERT_GT(length, 8u);
  EXPECT_EQ(Wide(whole).size(), length);
  EXPECT_EQ(Wide(whole).find(TMV_WIDE('/')), Wide::npos);
  WCHAR cut[8];
  EXPECT_EQ(GetModuleFileNameW(nullptr, cut, 8), 8u);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
  // Windows XP and Wine (seen in 8.0) cut without a terminator.
  EXPECT_EQ(Wide(cut, 7), Wide(whole, 7));
}

TEST(System, TempPath) {
  WCHAR path[512] = {};
  const DWORD length = GetTempPathW(512, path);
  EXPECT_EQ(Wide(path).size(), length);
  EXPECT_EQ(path[length - 1], TMV_WIDE('\\'));
  EXPECT_EQ(GetTempPathW(1, path), length + 1);
}

TEST(System, Version) {
  OSVERSIONINFOEXA info = {};
  info.dwOSVersionInfoSize = sizeof(info);
  ASSERT_EQ(sizeof(info), 156u);
  EXPECT_TRUE(GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&info)));
  EXPECT_EQ(info.dwMajorVersion, 6u);
  info.dwOSVersionInfoSize = 1;
  EXPECT_FALSE(GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&info)));
}

}  // namespace
