#include "temvar/dbg_report.h"

#include "crash/dump_path.h"
#include "crash/handlers.h"
#include "crash/report_state.h"
#include "platform/crash_clock.h"
#include "platform/crash_steps.h"
#include "platform/crash_thread.h"
#include "platform/win32.h"

namespace temvar {
namespace {

class TMVDbgReportImpl final : public TMVDbgReport {
 public:
  void Install(const TmvWideChar* dumpDirectory, ReportCallback onReport,
               CollectCallback onCollect) override;
};

void SetDirectory(const TmvWideChar* directory) {
  if (directory == nullptr) return;
  std::basic_string<TmvWideChar>& stored = GetReportPaths().dumpDirectory;
  if (!stored.empty()) return;
  stored.append(directory);
  DumpPath::Reserve(stored);
}

void InstallHandlers() {
  SetUnhandledExceptionFilter(UnhandledFilter);
  // Registered twice, it would be called twice for each exception.
  static constinit std::atomic<bool> vectored{false};
  if (!vectored.exchange(true)) AddVectoredExceptionHandler(1, VectoredHandler);
  signal(kAbortSignal, IgnoreAbort);
}

void TMVDbgReportImpl::Install(const TmvWideChar* dumpDirectory, ReportCallback onReport,
                               CollectCallback onCollect) {
  SetDirectory(dumpDirectory);
  reportCallback.store(onReport);
  collectCallback.store(onCollect);
  PrepareCrashSteps();
  PrepareCrashTime();
  KeepCrashStack();
  InstallHandlers();
}

TMVDbgReportImpl* ToImpl(TMVDbgReport* report) { return dynamic_cast<TMVDbgReportImpl*>(report); }

}  // namespace
}  // namespace temvar

TMVDbgReport* CreateTmvDbgReport() { return new temvar::TMVDbgReportImpl; }

void DestroyTmvDbgReport(TMVDbgReport* report) { delete temvar::ToImpl(report); }
