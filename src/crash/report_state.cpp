#include "crash/report_state.h"

namespace temvar {

constinit std::atomic<ReportCallback> reportCallback{nullptr};
constinit std::atomic<CollectCallback> collectCallback{nullptr};

namespace {

// Set while a thread stores the path, and for good once the paths are gone.
constinit std::atomic_flag pathsTaken;

constinit bool ownFlag = false;
constinit std::atomic<bool*> exitFlag{&ownFlag};

// The host's flag is a plain bool, which it may change while another thread crashes.
std::atomic_ref<bool> Flag() {
  return std::atomic_ref<bool>(*exitFlag.load(std::memory_order_acquire));
}

}  // namespace

ReportPaths::~ReportPaths() { pathsTaken.test_and_set(); }

void StoreArchivePath(const TmvWideChar* path) {
  if (pathsTaken.test_and_set(std::memory_order_acquire)) return;
  GetReportPaths().archivePath = path;
  pathsTaken.clear(std::memory_order_release);
}

bool IsExiting() { return Flag().load(std::memory_order_relaxed); }

void SetExiting() { Flag().store(true, std::memory_order_relaxed); }

}  // namespace temvar

void SetExitProgram(bool* flag) {
  temvar::exitFlag.store(flag != nullptr ? flag : &temvar::ownFlag, std::memory_order_release);
}
