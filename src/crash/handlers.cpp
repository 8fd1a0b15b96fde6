#include "crash/handlers.h"

#include "crash/report.h"
#include "crash/report_state.h"
#include "crash/running_reports.h"

namespace temvar {

LONG CALLBACK VectoredHandler(EXCEPTION_POINTERS* exception) {
  if (IsExiting()) return 1;
  switch (exception->ExceptionRecord->ExceptionCode) {
    case static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION):
      MakeReport(exception, false);
      return EXCEPTION_CONTINUE_SEARCH;
    case static_cast<DWORD>(STATUS_HEAP_CORRUPTION):
      // First, so that an exception in this report doesn't start another one.
      SetExiting();
      MakeReport(exception, true);
      return 1;
    default:
      return EXCEPTION_CONTINUE_SEARCH;
  }
}

LONG CALLBACK UnhandledFilter(EXCEPTION_POINTERS* exception) {
  if (!IsExiting()) MakeReport(exception, true);
  SetExiting();
  // The process ends with this answer, and another thread may have crashed as well.
  WaitForOtherReports();
  return EXCEPTION_EXECUTE_HANDLER;
}

void IgnoreAbort(int) {}

}  // namespace temvar
