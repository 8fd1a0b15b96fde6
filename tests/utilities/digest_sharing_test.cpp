#include <gtest/gtest.h>

#include "platform/win32.h"
#include "support/take.h"
#include "support/work_folder.h"
#include "utilities/text.h"

namespace {

using DigestSharingTest = temvar_test::WorkFolderTest;
TEMVAR_IN_EVERY_PLACE(DigestSharingTest);

// A file that somebody writes and shares with nobody: error 32, a sharing violation.
TEST_P(DigestSharingTest, FileThatAWriterHolds) {
  PutFile("held.bin", "abc");
  const std::string path = Path("held.bin");
  const HANDLE writer = CreateFileW(temvar::ToWide(path.c_str()).get(), GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(writer, INVALID_HANDLE_VALUE);
  testing::internal::CaptureStdout();
  EXPECT_EQ(temvar_test::Take(TmvUtilityString()->Md5OfFile(path.c_str())), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Error opening file " + path + "\nError: 32\n");
  CloseHandle(writer);
  EXPECT_EQ(temvar_test::Take(TmvUtilityString()->Md5OfFile(path.c_str())),
            "900150983cd24fb0d6963f7d28e17f72");
}

}  // namespace
