// What only the stand-in of the file surface does: paths become those of the kernel, files go
// between file systems, and nothing is inherited.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <filesystem>
#include <string>
#include <thread>

#include "platform/posix/files/file_handle.h"
#include "platform/posix/files/narrow_path.h"
#include "platform/win32.h"
#include "support/work_folder.h"
#include "temvar/temvar.h"

namespace {

namespace fs = std::filesystem;
using temvar::posix::NarrowPath;

TEST(NarrowPath, TakesBothSeparatorsAndDropsTheDrive) {
  const struct {
    const char16_t* wide;
    const char* narrow;
  } cases[] = {
      {u"C:\\dir\\file.txt", "/dir/file.txt"},
      {u"z:/dir\\file", "/dir/file"},
      {u"C:file", "file"},
      {u"/a\\b/c", "/a/b/c"},
      {u"ä漢😀", "ä漢😀"},
      {u"1:x", "1:x"},
      {u"dir:x", "dir:x"},
  };
  for (const auto& c : cases) {
    const NarrowPath path(c.wide);
    EXPECT_TRUE(path.ok());
    EXPECT_STREQ(path.c_str(), c.narrow);
  }
}

TEST(NarrowPath, RefusesWhatItCannotSayWhole) {
  const std::u16string longest(PATH_MAX - 1, u'a');
  EXPECT_TRUE(NarrowPath(longest.c_str()).ok());
  EXPECT_FALSE(NarrowPath(nullptr).ok());
  const std::pair<std::u16string, DWORD> cases[] = {
      {u"C:", ERROR_PATH_NOT_FOUND},
      {longest + u'a', ERROR_FILENAME_EXCED_RANGE},
      {std::u16string(PATH_MAX / 2, u'ä'), ERROR_FILENAME_EXCED_RANGE},
      {u"half \xD83D pair", ERROR_INVALID_NAME},
      {u"\xDE00\xD83D", ERROR_INVALID_NAME},
  };
  for (const auto& [wide, code] : cases) {
    EXPECT_FALSE(NarrowPath(wide.c_str()).ok());
    EXPECT_EQ(GetLastError(), code);
  }
}

class FilesPosixTest : public temvar_test::WorkFolderTest {
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

TEST_P(FilesPosixTest, FilesMoveToAnotherFileSystem) {
  const fs::path other = "/dev/shm";
  struct stat here, there;
  if (stat(Folder().c_str(), &here) != 0 || stat(other.c_str(), &there) != 0 ||
      here.st_dev == there.st_dev) {
    GTEST_SKIP() << "no second file system";
  }
  PutFile("file", "content");
  MakeFolder("folder");
  const fs::path target = other / Folder().parent_path().filename();
  const std::u16string wide = target.u16string();
  EXPECT_TRUE(MoveFileW(Wide("file").c_str(), wide.c_str()));
  EXPECT_FALSE(Exists("file"));
  PutFile("second", "other content");
  EXPECT_FALSE(MoveFileW(Wide("second").c_str(), wide.c_str()));
  EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
  EXPECT_EQ(GetFile("second"), "other content");
  // A source that is missing or held by somebody leaves a destination alone that is not its copy.
  EXPECT_FALSE(MoveFileW(Wide("missing").c_str(), wide.c_str()));
  const HANDLE held =
      CreateFileW(Wide("second").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  EXPECT_FALSE(MoveFileW(Wide("second").c_str(), wide.c_str()));
  CloseHandle(held);
  ASSERT_TRUE(fs::exists(target));
  EXPECT_TRUE(CopyFileW(wide.c_str(), Wide("back").c_str(), FALSE));
  EXPECT_EQ(GetFile("back"), "content");
  fs::remove(target);
  EXPECT_FALSE(MoveFileW(Wide("folder").c_str(), wide.c_str()));
  EXPECT_EQ(GetLastError(), ERROR_NOT_SAME_DEVICE);
  EXPECT_FALSE(fs::exists(target));
}

TEST_P(FilesPosixTest, CopiesFilesThatHaveNoSize) {
  ASSERT_TRUE(CopyFileW(u"/proc/version", Wide("version").c_str(), FALSE));
  EXPECT_NE(GetFile("version").find("Linux"), std::string::npos);
}

TEST_P(FilesPosixTest, PipesAreReadAsTheyCome) {
  ASSERT_EQ(mkfifo(FilePath("pipe").c_str(), 0600), 0);
  const std::string bytes(100'000, 'p');
  const int pipe = open(FilePath("pipe").c_str(), O_RDWR);
  std::thread writer([&] {
    EXPECT_EQ(write(pipe, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    close(pipe);
  });
  BinaryDataResult result;
  const bool read = TmvUtilityFile()->ReadWholeFile(&result, Path("pipe").c_str());
  writer.join();
  ASSERT_TRUE(read);
  EXPECT_EQ(std::string(result.Data, result.Size), bytes);
  FreeBinayDataResult(&result);
}

}  // namespace
