// What only the stand-in of the file surface does: paths become those of the kernel, and nothing is
// inherited.
#include <fcntl.h>

#include <climits>
#include <string>

#include "platform/posix/files/file_handle.h"
#include "platform/posix/files/narrow_path.h"
#include "platform/win32.h"
#include "support/work_folder.h"
#include "temvar/temvar.h"

namespace {

using namespace test;
using temvar::posix::NarrowPath;

TEST(NarrowPath, DropsTheDriveAndRefusesWhatItCannotSayWhole) {
  const std::u16string longest(PATH_MAX - 1, u'a');
  const std::string narrow(PATH_MAX - 1, 'a');
  const struct {
    std::u16string wide;
    const char* narrow;
    DWORD error = 0;
  } cases[] = {
      {u"C:\\dir\\ä漢😀", "/dir/ä漢😀"},
      {u"C:file", "file"},
      {u"1:x", "1:x"},
      {longest, narrow.c_str()},
      {u"C:", nullptr, ERROR_PATH_NOT_FOUND},
      {longest + u'a', nullptr, ERROR_FILENAME_EXCED_RANGE},
      {std::u16string(PATH_MAX / 2, u'ä'), nullptr, ERROR_FILENAME_EXCED_RANGE},
      {u"half \xD83D pair", nullptr, ERROR_INVALID_NAME},
  };
  for (const auto& row : cases) {
    const NarrowPath path(row.wide.c_str());
    ASSERT_EQ(path.ok(), row.narrow != nullptr);
    if (path.ok()) {
      EXPECT_STREQ(path.c_str(), row.narrow);
    } else {
      EXPECT_EQ(GetLastError(), row.error);
    }
  }
}

class FilesPosixTest : public WorkFolderTest {
 protected:
  std::u16string Wide(std::string_view name) const { return FilePath(name).u16string(); }
};
TEMVAR_IN_EVERY_PLACE(FilesPosixTest);

TEST_P(FilesPosixTest, ChildrenInheritNothing) {
  FILE* const stream = _wfopen(Wide("f").c_str(), u"wb");
  ASSERT_NE(stream, nullptr);
  EXPECT_NE(fcntl(fileno(stream), F_GETFD) & FD_CLOEXEC, 0);
  std::fclose(stream);
  const HANDLE file =
      CreateFileW(Wide("f").c_str(), GENERIC_READ, 1, nullptr, OPEN_EXISTING, 0, nullptr);
  const int descriptor = temvar::posix::DescriptorOfHandle(file);
  EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
  CloseHandle(file);
  WIN32_FIND_DATAW data;
  const HANDLE find = FindFirstFileW(Wide("*").c_str(), &data);
  EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0) << "the lowest number is taken again";
  FindClose(find);
  EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
}

TEST_P(FilesPosixTest, FilesThatHaveNoSizeAreReadWhole) {
  ASSERT_TRUE(CopyFileW(u"/proc/version", Wide("version").c_str(), FALSE));
  BinaryDataResult result;
  ASSERT_TRUE(TmvUtilityFile()->ReadWholeFile(&result, "/proc/version"));
  EXPECT_EQ(std::string(result.Data, result.Size), GetFile("version"));
  EXPECT_GT(result.Size, 10u);
  FreeBinayDataResult(&result);
}

}  // namespace
