#include "crash/report.h"

#include <cstdlib>
#include <string_view>

#include "archives/utility_zip_impl.h"
#include "crash/dump_path.h"
#include "crash/report_state.h"
#include "crash/running_reports.h"
#include "platform/crash_steps.h"
#include "platform/crash_thread.h"
#include "utilities/string/text.h"

namespace temvar {
namespace {

constexpr size_t kMaxFileName = 256;

// The name as the loader spells it; another case is another module.
bool IsNtdll(const WCHAR* path) {
  WCHAR name[kMaxFileName] = {};
  _wsplitpath(path, nullptr, nullptr, name, nullptr);
  return std::basic_string_view<WCHAR>(name) == TMV_WIDE("ntdll");
}

void FilterModule(const WCHAR* path, PMINIDUMP_CALLBACK_OUTPUT output) {
  if ((output->ModuleWriteFlags & ModuleWriteDataSeg) == 0) return;
  if (path != nullptr && IsNtdll(path)) return;
  output->ModuleWriteFlags &= ~static_cast<decltype(output->ModuleWriteFlags)>(ModuleWriteDataSeg);
}

void WriteDump(const TmvWideChar* path, EXCEPTION_POINTERS* exception) {
  const DumpTurn turn;
  const HANDLE file = CreateDumpFile(path);
  if (file == INVALID_HANDLE_VALUE) return;
  MINIDUMP_EXCEPTION_INFORMATION information = {GetCurrentThreadId(), exception, FALSE};
  MINIDUMP_CALLBACK_INFORMATION callback = {FilterMinidump, nullptr};
  MiniDumpWriteDump(GetCurrentProcess(), GetCurrentProcessId(), file, MiniDumpNormal, &information,
                    nullptr, &callback);
  CloseHandle(file);
}

void Collect() {
  const CollectCallback collect = collectCallback.load();
  if (collect == nullptr) return;
  void* result = nullptr;
  collect(DumpPath::Directory(), &result);
  std::free(result);
}

// Packs the dump directory, without the archives of earlier reports. Where somebody else has left a
// link in it, what that leads to is none of the report's business, and a FIFO would be waited for.
void WriteArchive(const TmvWideChar* path, bool heapServes) {
  StoreArchivePath(path);
  if (!PrepareArchiveFile(path)) return;
  if (!heapServes) {
    PackWithoutHeap(DumpPath::Directory(), path);
    return;
  }
  const size_t directoryLength = std::basic_string_view<TmvWideChar>(DumpPath::Directory()).size();
  const NarrowText directory = ToUtf8(DumpPath::Directory());
  TMVUtilityZipImpl zip([directoryLength](const char* file) {
    return IsPlainFile(ToWide(file).get(), directoryLength);
  });
  zip.AddDirectory(directory.get(), nullptr);
  zip.WriteArchive(ToUtf8(path).get(), ";.zip;");
}

}  // namespace

BOOL CALLBACK FilterMinidump(PVOID, PMINIDUMP_CALLBACK_INPUT input,
                             PMINIDUMP_CALLBACK_OUTPUT output) {
  if (input == nullptr || output == nullptr) return FALSE;
  if (input->CallbackType == ModuleCallback) FilterModule(input->Module.FullPath, output);
  return input->CallbackType <= IncludeModuleCallback ? TRUE : FALSE;
}

void MakeReport(EXCEPTION_POINTERS* exception, bool notify) {
  const RunningReport running;
  const CrashStackUse stack;
  if (!stack.IsEnough() || running.GoesInCircles()) return;
  const DumpPath path;
  WriteDump(path.Dump(), exception);

  const bool heapServes = HeapServesInCrash();
  RunCrashStep([] { Collect(); });
  if (stack.IsEnoughForArchive()) {
    RunCrashStep([&] { WriteArchive(path.Archive(), heapServes); });
  }
  const ReportCallback report = reportCallback.load();
  if (notify && report != nullptr) RunCrashStep([&] { report(path.Archive()); });
}

}  // namespace temvar
