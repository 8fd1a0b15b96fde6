#include "platform/crash_steps.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>

#include "platform/posix/crash/reserve.h"
#include "platform/posix/crash/signal_report.h"
#include "platform/posix/crash/stored_archive.h"
#include "platform/posix/files/file_handle.h"
#include "platform/posix/files/narrow_path.h"

namespace temvar {
namespace {

using posix::NarrowPath;
using posix::SignalReport;

// Larger than what glibc keeps for each thread without a lock.
constexpr size_t kProbeSize = 16 * 1024;

// Once a step has hung, others will hang as well: what hung it is still there.
constinit std::atomic<bool> hurries{false};

// A dump holds what was on the stacks: nobody else may read it.
constexpr mode_t kOwnerOnly = 0600;

int CreateOwnFile(const TmvWideChar* path) {
  const NarrowPath narrow(path);
  if (!narrow.ok()) return -1;
  unlink(narrow.c_str());
  return open(narrow.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly);
}

void PinLibrary() {
  static const char anchor = 0;
  Dl_info library = {};
  if (dladdr(&anchor, &library) == 0) return;
  // The handle is never closed, and the flag keeps the library even where the host closes too
  // often.
  dlopen(library.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

}  // namespace

void PrepareCrashSteps() noexcept {
  PinLibrary();
  posix::FillReserve();
}

HANDLE CreateDumpFile(const TmvWideChar* path) noexcept {
  const int descriptor = CreateOwnFile(path);
  return descriptor < 0 ? INVALID_HANDLE_VALUE : posix::HandleOfDescriptor(descriptor);
}

bool PrepareArchiveFile(const TmvWideChar* path) noexcept {
  const int descriptor = CreateOwnFile(path);
  if (descriptor >= 0) close(descriptor);
  return descriptor >= 0;
}

bool IsPlainFile(const TmvWideChar* path, size_t directoryLength) {
  TmvWideChar part[PATH_MAX];
  for (size_t i = 0; i + 1 < PATH_MAX; ++i) {
    part[i] = path[i];
    const bool end = path[i] == u'\0';
    if (!end && (i <= directoryLength || (path[i] != u'/' && path[i] != u'\\'))) continue;
    part[i] = u'\0';
    struct stat info;
    const NarrowPath narrow(part);
    if (!narrow.ok() || lstat(narrow.c_str(), &info) != 0 || S_ISLNK(info.st_mode)) return false;
    if (end) return S_ISREG(info.st_mode);
    part[i] = path[i];
  }
  return false;
}

bool HeapServesInCrash() noexcept {
  SignalReport* const report = SignalReport::Current();
  if (report == nullptr) return true;
  posix::ReleaseReserve();
  report->OpenSignals();
  if (hurries.load()) return false;
  report->Hurry();
  const bool serves = RunCrashStep([] {
    void* volatile block = std::malloc(kProbeSize);
    std::free(block);
  });
  serves ? report->RestoreTime() : hurries.store(true);
  return serves;
}

void PackWithoutHeap(const TmvWideChar* directory, const TmvWideChar* archive) noexcept {
  const NarrowPath source(directory);
  const NarrowPath target(archive);
  if (!source.ok() || !target.ok()) return;
  const int file = open(target.c_str(), O_WRONLY | O_TRUNC | O_NOFOLLOW | O_CLOEXEC);
  if (file < 0) return;
  posix::StoreDirectory(source.c_str(), file);
  close(file);
}

bool RunCrashStep(void (*step)(void*), void* argument) noexcept {
  SignalReport* const report = SignalReport::Current();
  sigjmp_buf* volatile outer = nullptr;  // A step may be a part of another.
  sigjmp_buf wayOut;
  volatile bool done = false;
  if (report != nullptr) {
    outer = report->WayOut();
    if (sigsetjmp(wayOut, 1) != 0) {
      report->SetWayOut(outer);
      if (report->IsLate()) hurries.store(true);
      return false;
    }
    if (hurries.load()) report->Hurry();
    report->SetWayOut(&wayOut);
  }
  try {
    step(argument);
    done = true;
  } catch (...) {
    // What the host throws concerns the host's step alone.
  }
  if (report != nullptr) report->SetWayOut(outer);
  return done;
}

}  // namespace temvar
