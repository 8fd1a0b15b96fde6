// The text conversions as the library's platform layer has them: the system's own on Windows, the
// stand-in elsewhere.
#include <gtest/gtest.h>

#include <iterator>
#include <string>

#include "platform/win32.h"
#include "temvar/types.h"

namespace {

using Wide = std::basic_string<WCHAR>;

Wide Decode(UINT code_page, DWORD flags, const std::string& bytes) {
  WCHAR wide[64];
  const int size =
      MultiByteToWideChar(code_page, flags, bytes.data(), static_cast<int>(bytes.size()), wide,
                          static_cast<int>(std::size(wide)));
  return Wide(wide, static_cast<size_t>(size));
}

TEST(Text, LengthsAndCapacities) {
  const char* const bytes = "a\xCE\xB1\xF0\x9F\x98\x80";  // 1, 1 and 2 units
  WCHAR wide[8];
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, bytes, -1, nullptr, 0), 5);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, bytes, -1, wide, 5), 5);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, bytes, 3, nullptr, 0), 2);
  for (int capacity = 1; capacity < 5; ++capacity) {
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, bytes, -1, wide, capacity), 0) << capacity;
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
  }
  char narrow[16];
  MultiByteToWideChar(CP_UTF8, 0, bytes, -1, wide, 5);
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr), 8);
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, wide, -1, narrow, 8, nullptr, nullptr), 8);
  EXPECT_STREQ(narrow, bytes);
  for (int capacity = 1; capacity < 8; ++capacity) {
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, wide, -1, narrow, capacity, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
  }
}

TEST(Text, BadArguments) {
  WCHAR wide[8];
  char narrow[8];
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, nullptr, -1, wide, 8), 0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a", 0, wide, 8), 0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, nullptr, -1, narrow, 8, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
  EXPECT_EQ(MultiByteToWideChar(12345, 0, "a", -1, wide, 8), 0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST(Text, IllFormedUtf8FailsOrIsReplaced) {
  const Wide r(1, static_cast<WCHAR>(0xFFFD));
  const Wide a(1, static_cast<WCHAR>('a'));
  const struct {
    std::string bytes;
    Wide replaced;
  } cases[] = {
      {"\x80", r},
      {"\xFF"
       "a",
       r + a},
      {"\xC3"
       "a",
       r + a},
      {"\xE4\xB8"
       "a",
       r + a},
      {"\xF0\x9F\x98", r},
      {"\xC0\x80", r + r},
  };
  for (const auto& [bytes, replaced] : cases) {
    EXPECT_EQ(Decode(CP_UTF8, 0, bytes), replaced) << testing::PrintToString(bytes);
    SetLastError(0);
    EXPECT_EQ(Decode(CP_UTF8, MB_ERR_INVALID_CHARS, bytes), Wide());
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_UNICODE_TRANSLATION));
  }
}

TEST(Text, AnsiCodePageBothWays) {
  for (int value = 1; value < 256; ++value) {
    const char byte = static_cast<char>(value);
    WCHAR unit = 0;
    ASSERT_EQ(MultiByteToWideChar(CP_ACP, 0, &byte, 1, &unit, 1), 1);
    if (value < 0x80 || value >= 0xA0) {
      EXPECT_EQ(unit, static_cast<WCHAR>(value));
    }
    char back = 0;
    ASSERT_EQ(WideCharToMultiByte(CP_ACP, 0, &unit, 1, &back, 1, nullptr, nullptr), 1);
    EXPECT_EQ(back, byte) << value;
  }
  EXPECT_EQ(Decode(CP_ACP, 0, "\x80\x9F"), Wide({WCHAR{0x20AC}, WCHAR{0x178}}));
  const WCHAR outside[] = {0x4E2D, 0xD83D, 0xDE00, 'a'};
  char narrow[8] = {};
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, outside, 4, narrow, 8, nullptr, nullptr), 4);
  EXPECT_STREQ(narrow, "???a");
}

TEST(Text, Wtoi) {
  const struct {
    const WCHAR* text;
    int value;
  } cases[] = {
      {TMV_WIDE(""), 0},
      {TMV_WIDE("12"), 12},
      {TMV_WIDE(" \t-7x"), -7},
      {TMV_WIDE("+3"), 3},
      {TMV_WIDE("x"), 0},
      {TMV_WIDE("- 1"), 0},
      {TMV_WIDE("2147483647"), 2147483647},
  };
  for (const auto& [text, value] : cases) EXPECT_EQ(_wtoi(text), value);
}

TEST(Text, SplitPath) {
  const struct {
    const WCHAR* path;
    Wide directory;
    Wide name;
    Wide extension;
  } cases[] = {
      {TMV_WIDE("C:\\Windows\\ntdll.dll"), TMV_WIDE("\\Windows\\"), TMV_WIDE("ntdll"),
       TMV_WIDE(".dll")},
      {TMV_WIDE("/usr/lib/libc.so.6"), TMV_WIDE("/usr/lib/"), TMV_WIDE("libc.so"), TMV_WIDE(".6")},
      {TMV_WIDE("\\a.b\\c"), TMV_WIDE("\\a.b\\"), TMV_WIDE("c"), TMV_WIDE("")},
      {TMV_WIDE("name"), TMV_WIDE(""), TMV_WIDE("name"), TMV_WIDE("")},
      {TMV_WIDE(""), TMV_WIDE(""), TMV_WIDE(""), TMV_WIDE("")},
  };
  for (const auto& [path, directory, name, extension] : cases) {
    WCHAR parts[3][256];
    _wsplitpath(path, nullptr, parts[0], parts[1], parts[2]);
    EXPECT_EQ(Wide(parts[0]), directory);
    EXPECT_EQ(Wide(parts[1]), name);
    EXPECT_EQ(Wide(parts[2]), extension);
  }
}

}  // namespace
