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

TEST(Slots, AreInTheOrderOfEachInterface) {
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
  using Task = RkTask;
  ExpectOrder<Task>(0, &Task::ReportState, &Task::SetFunc, &Task::GetFunc, &Task::SetData,
                    &Task::GetData, &Task::ClearData, &Task::ClearFunc, &Task::GetType,
                    &Task::SetType, &Task::GetState, &Task::SetState, &Task::GetName,
                    &Task::SetNameNumber, &Task::SetName);
  using Package = RkTaskPackage;
  ExpectOrder<Package>(CountSlots<RkTask>(), &Package::AddTask, &Package::InsertTask,
                       &Package::SetContinueOnFailure, &Package::GetCount, &Package::GetFirst,
                       &Package::GetLast, &Package::GetPrevious, &Package::GetCurrentIndex,
                       &Package::GetNext);
  using Thread = RkTaskThread;
  ExpectOrder<Thread>(0, &Thread::ReportIdle, &Thread::SetPool, &Thread::Wake, &Thread::Lock,
                      &Thread::Unlock, &Thread::Wait, &Thread::Join, &Thread::ReservedValue,
                      &Thread::Stop, &Thread::Start);
  using Pool = RkTaskPool;
  ExpectOrder<Pool>(0, &Pool::AddTask, &Pool::AddFunc, &Pool::Start, &Pool::ReservedOperation,
                    &Pool::Stop, &Pool::SetPollInterval, &Pool::GetPollInterval,
                    &Pool::GetThreadCount, &Pool::DispatchOne, &Pool::MarkRunning,
                    &Pool::ThreadIdle, &Pool::GetQueuedCount, &Pool::WaitForWork,
                    &Pool::RemoveQueued, &Pool::ListRunning, &Pool::FreeTaskList);
  using Schedular = RkTaskSchedular;
  ExpectOrder<Schedular>(
      0, &Schedular::CancelEvent, &Schedular::CancelEventOfTask, &Schedular::PauseEvent,
      &Schedular::ResumeEvent, &Schedular::CheckPause, &Schedular::RegisterEvent,
      &Schedular::AddEvent, &Schedular::ScheduleTask, &Schedular::RemoveEvent,
      &Schedular::RemoveEventLocked, &Schedular::PausePoint, &Schedular::PausePointLocked,
      &Schedular::TaskFinished, &Schedular::TaskFailed, &Schedular::FindTask,
      &Schedular::IsTaskCancelled, &Schedular::FindEvent, &Schedular::FindEventOfTask,
      &Schedular::FindEventOfPackage, &Schedular::ListCurrentTasks, &Schedular::FreeTaskList,
      &Schedular::FindPackageOfTask, &Schedular::InsertTaskAfter, &Schedular::InsertTaskAfterName,
      &Schedular::GetEventCount, &Schedular::CancelEventEx);
  using Store = TMVUserDefaults;
  ExpectOrder<Store>(0, &Store::SetString, &Store::SetInt, &Store::HasKey, &Store::GetString,
                     &Store::GetInt, &Store::GetIntTriple, &Store::Save, &Store::IsLoaded,
                     &Store::GetFilePath, &Store::ReleaseDocument, &Store::GetValue,
                     &Store::GetRootValue, &Store::GetArraySize, &Store::GetArrayElement,
                     &Store::GetMemberBegin, &Store::GetMemberEnd, &Store::AdvanceMember,
                     &Store::GetMemberName, &Store::GetMemberValue, &Store::GetValueString,
                     &Store::GetValueInt, &Store::StringifyValue);
  using String = TMVUtilityString;
  ExpectOrder<String>(
      0, &String::DupWideString, &String::Utf8ToWide, &String::WideToAnsi, &String::WideToUtf8,
      &String::Utf8ToAnsi, &String::FormatString, &String::FormatWideString,
      &String::CompareVersion, &String::IsNullOrEmpty, &String::SafeString, &String::IsEmailAddress,
      &String::IsBlankChar, &String::DupString, &String::IsAllDigits, &String::RegexFirstMatch,
      &String::HexToUInt64, &String::FreeString, &String::Md5OfFile, &String::Sha1OfString,
      &String::StartsWithDigit, &String::SanitizeUtf8, &String::NewGuidString);
  using File = TMVUtilityFile;
  ExpectOrder<File>(0, &File::DeleteDirectoryTree, &File::CopyDirectoryTree,
                    &File::CreateDirectoryPath, &File::DirectorySize, &File::CopyFileTo,
                    &File::MoveFileTo, &File::RemoveFile, &File::FormatSize, &File::MakeUniquePath,
                    &File::PathExists, &File::FileSize, &File::SetFileTimestamp, &File::SplitPath,
                    &File::FreePathParts, &File::ExtensionInList, &File::OpenFile,
                    &File::ReadWholeFile, &File::WriteWholeFile, &File::FileContainsText,
                    &File::CreateFileOfSize, &File::GetFreeDiskSpace, &File::IsDirectory);
  using Sys = TMVUtilitySys;
  ExpectOrder<Sys>(
      0, &Sys::GetAppDataPath, &Sys::GetDocumentsPath, &Sys::GetTempDirectory,
      &Sys::GetDownloadsPath, &Sys::GetBuildYear, &Sys::FormatTime, &Sys::FormatCurrentTime,
      &Sys::AlwaysTrue, &Sys::FormatSecondsSince, &Sys::FormatSecondsSince1970,
      &Sys::FormatSecondsSince2001, &Sys::FormatLocalTime, &Sys::FormatDuration,
      &Sys::UtcTextToLocalText, &Sys::LocalTextToUtcText, &Sys::SleepMilliseconds,
      &Sys::IsVistaOrLater, &Sys::IsWindows7OrLater, &Sys::IsWindows8OrLater, &Sys::Is64BitSystem,
      &Sys::Is64BitProcess, &Sys::GetExecutableFileName, &Sys::FormatSeconds, &Sys::GetProcessId);
  using App = TMVUtilityApp;
  ExpectOrder<App>(0, &App::GetExecutablePath, &App::GetInstallRoot, &App::GetThemesDirectory,
                   &App::GetPluginsDirectory, &App::GetApplicationDirectory,
                   &App::GetModuleDirectory, &App::ExploreFolder, &App::OpenWithShell,
                   &App::NewUniqueId, &App::NewPrefixedId, &App::NextSerial,
                   &App::ProgressPerMille);
}

}  // namespace
