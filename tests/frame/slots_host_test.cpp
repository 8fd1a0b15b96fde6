// Pins the slot of each operation of the interfaces: a host that was built against an earlier
// header calls by slot.
//
// A pointer to a virtual member function holds 1 + the byte offset of its slot in its first word.
// So says the Itanium C++ ABI, section 2.3, for x86, and both g++ and clang follow it, for Windows
// too.
#include <gtest/gtest.h>
#include <temvar/temvar.h>

#include <cstring>
#include <typeinfo>
#include <vector>

namespace {

template <typename Member>
size_t SlotOf(Member member) {
  static_assert(sizeof(Member) == 2 * sizeof(void*));
  uintptr_t words[2];
  std::memcpy(words, &member, sizeof(words));
  EXPECT_EQ(words[0] % 2, 1u) << "not virtual";
  return (words[0] - 1) / sizeof(void*);
}

// One more operation after the last: its slot is the number of operations of the interface.
template <typename Interface>
class WithOneMore : public Interface {
 public:
  virtual void OneMore() = 0;

 protected:
  ~WithOneMore() = default;
};

template <typename Interface>
size_t CountSlots() {
  return SlotOf(&WithOneMore<Interface>::OneMore);
}

// The operations in their order, from the slot `first` on, and no others.
template <typename Interface, typename... Members>
void ExpectOrder(size_t first, Members... members) {
  SCOPED_TRACE(typeid(Interface).name());
  const std::vector<size_t> slots = {SlotOf(members)...};
  for (size_t i = 0; i < slots.size(); ++i) EXPECT_EQ(slots[i], first + i);
  EXPECT_EQ(CountSlots<Interface>(), first + slots.size());
}

TEST(Slots, InterfacesOfFewOperations) {
  ExpectOrder<TMVLock>(0, &TMVLock::Lock, &TMVLock::Unlock);
  ExpectOrder<TMVDbgReport>(0, &TMVDbgReport::Install);
  ExpectOrder<TMVAndroidManifest>(0, &TMVAndroidManifest::Decode,
                                  &TMVAndroidManifest::GetAttributeValue);
  ExpectOrder<RkTaskData>(0, &RkTaskData::SetPayload, &RkTaskData::GetPayload,
                          &RkTaskData::SetReleaser);
  ExpectOrder<RkTaskFunc>(0, &RkTaskFunc::Bind, &RkTaskFunc::SetCallback, &RkTaskFunc::GetCallback,
                          &RkTaskFunc::GetData);
  // The table of the virtual base comes first.
  ExpectOrder<RkTaskEvent>(CountSlots<RkTask>(), &RkTaskEvent::AddPackage);
  using Unzip = TMVUtilityUnzip;
  ExpectOrder<Unzip>(0, &Unzip::ExtractArchive, &Unzip::GunzipBuffer, &Unzip::ExtractEntry,
                     &Unzip::InflateBuffer, &Unzip::OpenArchive);
  using Zip = TMVUtilityZip;
  ExpectOrder<Zip>(0, &Zip::AddDirectory, &Zip::AddFile, &Zip::WriteArchive, &Zip::DeflateBuffer);
}

TEST(Slots, RkTask) {
  using I = RkTask;
  ExpectOrder<I>(0, &I::ReportState, &I::SetFunc, &I::GetFunc, &I::SetData, &I::GetData,
                 &I::ClearData, &I::ClearFunc, &I::GetType, &I::SetType, &I::GetState, &I::SetState,
                 &I::GetName, &I::SetNameNumber, &I::SetName);
}

TEST(Slots, RkTaskPackage) {
  using I = RkTaskPackage;
  ExpectOrder<I>(CountSlots<RkTask>(), &I::AddTask, &I::InsertTask, &I::SetContinueOnFailure,
                 &I::GetCount, &I::GetFirst, &I::GetLast, &I::GetPrevious, &I::GetCurrentIndex,
                 &I::GetNext);
}

TEST(Slots, RkTaskThread) {
  using I = RkTaskThread;
  ExpectOrder<I>(0, &I::ReportIdle, &I::SetPool, &I::Wake, &I::Lock, &I::Unlock, &I::Wait, &I::Join,
                 &I::ReservedValue, &I::Stop, &I::Start);
}

TEST(Slots, RkTaskPool) {
  using I = RkTaskPool;
  ExpectOrder<I>(0, &I::AddTask, &I::AddFunc, &I::Start, &I::ReservedOperation, &I::Stop,
                 &I::SetPollInterval, &I::GetPollInterval, &I::GetThreadCount, &I::DispatchOne,
                 &I::MarkRunning, &I::ThreadIdle, &I::GetQueuedCount, &I::WaitForWork,
                 &I::RemoveQueued, &I::ListRunning, &I::FreeTaskList);
}

TEST(Slots, RkTaskSchedular) {
  using I = RkTaskSchedular;
  ExpectOrder<I>(0, &I::CancelEvent, &I::CancelEventOfTask, &I::PauseEvent, &I::ResumeEvent,
                 &I::CheckPause, &I::RegisterEvent, &I::AddEvent, &I::ScheduleTask, &I::RemoveEvent,
                 &I::RemoveEventLocked, &I::PausePoint, &I::PausePointLocked, &I::TaskFinished,
                 &I::TaskFailed, &I::FindTask, &I::IsTaskCancelled, &I::FindEvent,
                 &I::FindEventOfTask, &I::FindEventOfPackage, &I::ListCurrentTasks,
                 &I::FreeTaskList, &I::FindPackageOfTask, &I::InsertTaskAfter,
                 &I::InsertTaskAfterName, &I::GetEventCount, &I::CancelEventEx);
}

TEST(Slots, TMVUserDefaults) {
  using I = TMVUserDefaults;
  ExpectOrder<I>(0, &I::SetString, &I::SetInt, &I::HasKey, &I::GetString, &I::GetInt,
                 &I::GetIntTriple, &I::Save, &I::IsLoaded, &I::GetFilePath, &I::ReleaseDocument,
                 &I::GetValue, &I::GetRootValue, &I::GetArraySize, &I::GetArrayElement,
                 &I::GetMemberBegin, &I::GetMemberEnd, &I::AdvanceMember, &I::GetMemberName,
                 &I::GetMemberValue, &I::GetValueString, &I::GetValueInt, &I::StringifyValue);
}

TEST(Slots, TMVUtilityString) {
  using I = TMVUtilityString;
  ExpectOrder<I>(0, &I::DupWideString, &I::Utf8ToWide, &I::WideToAnsi, &I::WideToUtf8,
                 &I::Utf8ToAnsi, &I::FormatString, &I::FormatWideString, &I::CompareVersion,
                 &I::IsNullOrEmpty, &I::SafeString, &I::IsEmailAddress, &I::IsBlankChar,
                 &I::DupString, &I::IsAllDigits, &I::RegexFirstMatch, &I::HexToUInt64,
                 &I::FreeString, &I::Md5OfFile, &I::Sha1OfString, &I::StartsWithDigit,
                 &I::SanitizeUtf8, &I::NewGuidString);
}

TEST(Slots, TMVUtilityFile) {
  using I = TMVUtilityFile;
  ExpectOrder<I>(0, &I::DeleteDirectoryTree, &I::CopyDirectoryTree, &I::CreateDirectoryPath,
                 &I::DirectorySize, &I::CopyFileTo, &I::MoveFileTo, &I::RemoveFile, &I::FormatSize,
                 &I::MakeUniquePath, &I::PathExists, &I::FileSize, &I::SetFileTimestamp,
                 &I::SplitPath, &I::FreePathParts, &I::ExtensionInList, &I::OpenFile,
                 &I::ReadWholeFile, &I::WriteWholeFile, &I::FileContainsText, &I::CreateFileOfSize,
                 &I::GetFreeDiskSpace, &I::IsDirectory);
}

TEST(Slots, TMVUtilitySys) {
  using I = TMVUtilitySys;
  ExpectOrder<I>(0, &I::GetAppDataPath, &I::GetDocumentsPath, &I::GetTempDirectory,
                 &I::GetDownloadsPath, &I::GetBuildYear, &I::FormatTime, &I::FormatCurrentTime,
                 &I::AlwaysTrue, &I::FormatSecondsSince, &I::FormatSecondsSince1970,
                 &I::FormatSecondsSince2001, &I::FormatLocalTime, &I::FormatDuration,
                 &I::UtcTextToLocalText, &I::LocalTextToUtcText, &I::SleepMilliseconds,
                 &I::IsVistaOrLater, &I::IsWindows7OrLater, &I::IsWindows8OrLater,
                 &I::Is64BitSystem, &I::Is64BitProcess, &I::GetExecutableFileName,
                 &I::FormatSeconds, &I::GetProcessId);
}

TEST(Slots, TMVUtilityApp) {
  using I = TMVUtilityApp;
  ExpectOrder<I>(0, &I::GetExecutablePath, &I::GetInstallRoot, &I::GetThemesDirectory,
                 &I::GetPluginsDirectory, &I::GetApplicationDirectory, &I::GetModuleDirectory,
                 &I::ExploreFolder, &I::OpenWithShell, &I::NewUniqueId, &I::NewPrefixedId,
                 &I::NextSerial, &I::ProgressPerMille);
}

}  // namespace
