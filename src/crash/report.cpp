#include "crash/report.h"

#include <cstdlib>
#include <memory>
#include <string>

#include "crash/dump_path.h"
#include "crash/minidump_filter.h"
#include "crash/report_state.h"
#include "crash/running_reports.h"
#include "platform/crash_steps.h"
#include "platform/crash_thread.h"
#include "temvar/utility_zip.h"
#include "utilities/string/text.h"

namespace temvar {
namespace {

struct DestroyZip {
  void operator()(TMVUtilityZip* zip) const { DestroyTmvUtilityZip(zip); }
};

void WriteDump(const TmvWideChar* path, EXCEPTION_POINTERS* exception) {
  const DumpTurn turn;
  const HANDLE file =
      CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return;
  MINIDUMP_EXCEPTION_INFORMATION information = {GetCurrentThreadId(), exception, FALSE};
  MINIDUMP_CALLBACK_INFORMATION callback = {FilterMinidump, nullptr};
  MiniDumpWriteDump(GetCurrentProcess(), GetCurrentProcessId(), file, MiniDumpNormal, &information,
                    nullptr, &callback);
  CloseHandle(file);
}

void Collect() {
  const CollectCallback collect = collect_callback.load();
  if (collect == nullptr) return;
  void* result = nullptr;
  collect(DumpPath::Directory(), &result);
  std::free(result);
}

// Packs the dump directory, without the archives of earlier reports.
void WriteArchive(const char* archive) {
  const NarrowText directory = ToUtf8(DumpPath::Directory());
  const std::unique_ptr<TMVUtilityZip, DestroyZip> zip(CreateTmvUtilityZip());
  zip->AddDirectory(directory.get(), nullptr);
  zip->WriteArchive(archive, ";.zip;");
}

}  // namespace

void MakeReport(EXCEPTION_POINTERS* exception, bool notify) {
  const RunningReport running;
  if (!HasCrashStack() || running.GoesInCircles()) return;
  const DumpPath dump;
  WriteDump(dump.Text(), exception);
  ExpectHeapInCrash();
  Collect();

  const std::string archive = std::string(ToUtf8(dump.Text()).get()) + ".zip";
  const WideText archive_path = ToWide(archive.c_str());
  StoreArchivePath(archive_path.get());
  try {
    WriteArchive(archive.c_str());
  } catch (...) {
    // Too little memory for an archive: the host still learns of the dump beside it.
  }

  const ReportCallback report = report_callback.load();
  if (notify && report != nullptr) report(archive_path.get());
}

}  // namespace temvar
