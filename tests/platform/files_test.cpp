// The file surface that the library calls: the same answers, error codes included, from Windows and
// from what stands in for it elsewhere.
#include "platform/paths.h"
#include "platform/win32.h"
#include "support/work_folder.h"
#include "utilities/file/system_path.h"

namespace {

using namespace test;
using temvar::SystemPath;

class FilesTest : public WorkFolderTest {
 protected:
  SystemPath Wide(std::string_view name) const { return SystemPath(Path(name).c_str()); }

  HANDLE Open(std::string_view name, DWORD access, DWORD share, DWORD disposition) const {
    return CreateFileW(Wide(name).get(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL,
                       nullptr);
  }
};
TEMVAR_IN_EVERY_PLACE(FilesTest);

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
  const auto isRefused = [this](DWORD access, DWORD share, DWORD disposition) {
    const HANDLE file = Open("f", access, share, disposition);
    if (file == INVALID_HANDLE_VALUE) return GetLastError() == DWORD{ERROR_SHARING_VIOLATION};
    CloseHandle(file);
    return false;
  };
  const HANDLE alone = Open("f", GENERIC_READ, 0, OPEN_EXISTING);
  ASSERT_NE(alone, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(isRefused(GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING));
  EXPECT_TRUE(isRefused(GENERIC_WRITE, 0, CREATE_ALWAYS));
  EXPECT_EQ(_wfopen(Wide("f").get(), TMV_WIDE("wb")), nullptr);
  CloseHandle(alone);
  EXPECT_EQ(GetFile("f"), "kept") << "a refused opening empties nothing";

  const HANDLE reader = Open("f", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
  ASSERT_NE(reader, INVALID_HANDLE_VALUE);
  EXPECT_FALSE(isRefused(GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING));
  EXPECT_TRUE(isRefused(GENERIC_READ, 0, OPEN_EXISTING));
  CloseHandle(reader);
}

// Beyond 4 GiB, with lower halves that look like a failure and like a negative number.
TEST_P(FilesTest, PositionsHave64Bits) {
  const HANDLE file = Open("f", GENERIC_READ | GENERIC_WRITE, 0, CREATE_ALWAYS);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  EXPECT_EQ(SetFilePointer(file, -20, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_NEGATIVE_SEEK});
  for (const LONG low : {LONG{5}, LONG{-1}, static_cast<LONG>(0x80000000)}) {
    LONG high = 2;
    EXPECT_EQ(SetFilePointer(file, low, &high, FILE_BEGIN), static_cast<DWORD>(low));
    EXPECT_TRUE(low != -1 || GetLastError() == 0);
    EXPECT_EQ(high, 2);
  }
  CloseHandle(file);
}

}  // namespace
