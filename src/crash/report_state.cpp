#include "crash/report_state.h"

namespace temvar {

constinit std::atomic<ReportCallback> report_callback{nullptr};
constinit std::atomic<CollectCallback> collect_callback{nullptr};

namespace {

// Set while a thread stores the path, and for good once the paths are gone.
constinit std::atomic_flag paths_taken;

}  // namespace

ReportPaths::~ReportPaths() { paths_taken.test_and_set(); }

void StoreArchivePath(const TmvWideChar* path) {
  if (paths_taken.test_and_set(std::memory_order_acquire)) return;
  GetReportPaths().archivePath = path;
  paths_taken.clear(std::memory_order_release);
}

}  // namespace temvar
