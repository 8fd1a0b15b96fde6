// Pins the slot of each operation of the utilities: a host that was built against an earlier header
// calls by slot.
#include <gtest/gtest.h>
#include <temvar/temvar.h>

#include <vector>

#include "support/slots.h"

namespace {

// The operations in their order, from slot 0 on, and no others.
template <typename Interface, typename... Members>
void ExpectOrder(Members... members) {
  const std::vector<size_t> slots = {test::SlotOf(members)...};
  for (size_t i = 0; i < slots.size(); ++i) EXPECT_EQ(slots[i], i);
  EXPECT_EQ(test::CountSlots<Interface>(), slots.size());
}

TEST(UtilitySlots, String) {
  using I = TMVUtilityString;
  ExpectOrder<I>(&I::DupWideString, &I::Utf8ToWide, &I::WideToAnsi, &I::WideToUtf8, &I::Utf8ToAnsi,
                 &I::FormatString, &I::FormatWideString, &I::CompareVersion, &I::IsNullOrEmpty,
                 &I::SafeString, &I::IsEmailAddress, &I::IsBlankChar, &I::DupString,
                 &I::IsAllDigits, &I::RegexFirstMatch, &I::HexToUInt64, &I::FreeString,
                 &I::Md5OfFile, &I::Sha1OfString, &I::StartsWithDigit, &I::SanitizeUtf8,
                 &I::NewGuidString);
}

TEST(UtilitySlots, File) {
  using I = TMVUtilityFile;
  ExpectOrder<I>(&I::DeleteDirectoryTree, &I::CopyDirectoryTree, &I::CreateDirectoryPath,
                 &I::DirectorySize, &I::CopyFileTo, &I::MoveFileTo, &I::RemoveFile, &I::FormatSize,
                 &I::MakeUniquePath, &I::PathExists, &I::FileSize, &I::SetFileTimestamp,
                 &I::SplitPath, &I::FreePathParts, &I::ExtensionInList, &I::OpenFile,
                 &I::ReadWholeFile, &I::WriteWholeFile, &I::FileContainsText, &I::CreateFileOfSize,
                 &I::GetFreeDiskSpace, &I::IsDirectory);
}

TEST(UtilitySlots, Sys) {
  using I = TMVUtilitySys;
  ExpectOrder<I>(&I::GetAppDataPath, &I::GetDocumentsPath, &I::GetTempDirectory,
                 &I::GetDownloadsPath, &I::GetBuildYear, &I::FormatTime, &I::FormatCurrentTime,
                 &I::AlwaysTrue, &I::FormatSecondsSince, &I::FormatSecondsSince1970,
                 &I::FormatSecondsSince2001, &I::FormatLocalTime, &I::FormatDuration,
                 &I::UtcTextToLocalText, &I::LocalTextToUtcText, &I::SleepMilliseconds,
                 &I::IsVistaOrLater, &I::IsWindows7OrLater, &I::IsWindows8OrLater,
                 &I::Is64BitSystem, &I::Is64BitProcess, &I::GetExecutableFileName,
                 &I::FormatSeconds, &I::GetProcessId);
}

TEST(UtilitySlots, App) {
  using I = TMVUtilityApp;
  ExpectOrder<I>(&I::GetExecutablePath, &I::GetInstallRoot, &I::GetThemesDirectory,
                 &I::GetPluginsDirectory, &I::GetApplicationDirectory, &I::GetModuleDirectory,
                 &I::ExploreFolder, &I::OpenWithShell, &I::NewUniqueId, &I::NewPrefixedId,
                 &I::NextSerial, &I::ProgressPerMille);
}

}  // namespace
