// The file surface that the library calls: the same answers, error codes included, from Windows and
// from what stands in for it elsewhere.
#include <gtest/gtest.h>

#include <string>

#include "platform/paths.h"
#include "platform/win32.h"
#include "support/take.h"
#include "support/work_folder.h"
#include "utilities/file/system_path.h"

namespace {

using temvar::SystemPath;

class FilesTest : public temvar_test::WorkFolderTest {
 protected:
  SystemPath Wide(std::string_view name) const { return SystemPath(Path(name).c_str()); }

  HANDLE Open(std::string_view name, DWORD access, DWORD share, DWORD disposition) const {
    return CreateFileW(Wide(name).get(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL,
                       nullptr);
  }

  // Opens and closes; the error code, 0 for success.
  DWORD ErrorOfOpening(std::string_view name, DWORD access, DWORD share, DWORD disposition) const {
    const HANDLE file = Open(name, access, share, disposition);
    if (file == INVALID_HANDLE_VALUE) return GetLastError();
    CloseHandle(file);
    return 0;
  }
};
TEMVAR_IN_EVERY_PLACE(FilesTest);

TEST_P(FilesTest, AFailedOpeningSaysWhy) {
  PutFile("file", "x");
  MakeFolder("folder");
  const struct {
    const char* name;
    DWORD access;
    DWORD disposition;
    DWORD error;
  } openings[] = {
      {"missing", GENERIC_READ, OPEN_EXISTING, ERROR_FILE_NOT_FOUND},
      {"no folder/file", GENERIC_WRITE, CREATE_ALWAYS, ERROR_PATH_NOT_FOUND},
      {"file/file", GENERIC_READ, OPEN_EXISTING, ERROR_PATH_NOT_FOUND},
      {"folder", GENERIC_READ, OPEN_EXISTING, ERROR_ACCESS_DENIED},
  };
  for (const auto& row : openings) {
    EXPECT_EQ(ErrorOfOpening(row.name, row.access, 0, row.disposition), row.error) << row.name;
  }
}

// Nothing is deleted to find out: a mistake would empty a disk.
TEST(IsRootPath, KnowsARootInEachForm) {
  const auto isRoot = [](const char* path) {
    return temvar::IsRootPath(temvar::ShellPath(path).get());
  };
  for (const char* path : {"/", "\\", "//", "/.", "C:/", "C:\\.", "C:\\x\\..", "/a/./../b/.."}) {
    EXPECT_TRUE(isRoot(path)) << path;
  }
  for (const char* path : {"/tmp", "C:\\tmp", "C:\\x\\..\\y", "x", "."}) {
    EXPECT_FALSE(isRoot(path)) << path;
  }
#ifdef _WIN32
  for (const char* path : {"\\\\server\\share", "\\\\?\\C:\\"}) EXPECT_TRUE(isRoot(path)) << path;
#endif
}

TEST_P(FilesTest, AHandleWithoutSharingIsAlone) {
  PutFile("f", "kept");
  const HANDLE alone = Open("f", GENERIC_READ, 0, OPEN_EXISTING);
  ASSERT_NE(alone, INVALID_HANDLE_VALUE);
  constexpr DWORD kViolation = ERROR_SHARING_VIOLATION;
  EXPECT_EQ(ErrorOfOpening("f", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING), kViolation);
  EXPECT_EQ(ErrorOfOpening("f", GENERIC_WRITE, 0, CREATE_ALWAYS), kViolation);
  EXPECT_EQ(_wfopen(Wide("f").get(), TMV_WIDE("wb")), nullptr);
  testing::internal::CaptureStdout();
  EXPECT_EQ(temvar_test::Take(TmvUtilityString()->Md5OfFile(Path("f").c_str())), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Error opening file " + Path("f") + "\nError: 32\n");
  CloseHandle(alone);
  EXPECT_EQ(GetFile("f"), "kept") << "a refused opening empties nothing";

  const HANDLE reader = Open("f", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
  ASSERT_NE(reader, INVALID_HANDLE_VALUE);
  EXPECT_EQ(ErrorOfOpening("f", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING), 0u);
  EXPECT_EQ(ErrorOfOpening("f", GENERIC_READ, 0, OPEN_EXISTING), kViolation);
  CloseHandle(reader);
}

TEST_P(FilesTest, BytesAndPositions) {
  const HANDLE file = Open("f", GENERIC_READ | GENERIC_WRITE, 0, CREATE_ALWAYS);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  DWORD count = 0;
  EXPECT_TRUE(WriteFile(file, "0123456789", 10, &count, nullptr));
  EXPECT_EQ(count, 10u);
  EXPECT_EQ(SetFilePointer(file, -4, nullptr, FILE_END), 6u);
  char buffer[16] = {};
  EXPECT_TRUE(ReadFile(file, buffer, sizeof(buffer), &count, nullptr));
  EXPECT_EQ(std::string(buffer, count), "6789");
  EXPECT_TRUE(ReadFile(file, buffer, sizeof(buffer), &count, nullptr)) << "the end is no error";
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(SetFilePointer(file, -3, nullptr, FILE_CURRENT), 7u);

  EXPECT_EQ(SetFilePointer(file, -20, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_NEGATIVE_SEEK});

  // Beyond 4 GiB, with lower halves that look like a failure and like a negative number.
  for (const LONG low : {LONG{5}, LONG{-1}, static_cast<LONG>(0x80000000)}) {
    LONG high = 2;
    EXPECT_EQ(SetFilePointer(file, low, &high, FILE_BEGIN), static_cast<DWORD>(low));
    EXPECT_TRUE(low != -1 || GetLastError() == 0);
    EXPECT_EQ(high, 2);
  }
  CloseHandle(file);
  EXPECT_EQ(GetFile("f"), "0123456789") << "moving alone writes nothing";
}

}  // namespace
