#include "crash/handlers.h"

#include "crash/exit_flag.h"
#include "crash/report.h"
#include "crash/running_reports.h"

namespace temvar {
namespace {

constexpr DWORD kAccessViolation = 0xC0000005;
constexpr DWORD kHeapCorruption = 0xC0000374;

}  // namespace

LONG CALLBACK VectoredHandler(EXCEPTION_POINTERS* exception) {
  if (IsExiting()) return 1;
  switch (exception->ExceptionRecord->ExceptionCode) {
    case kAccessViolation:
      MakeReport(exception, false);
      return EXCEPTION_CONTINUE_SEARCH;
    case kHeapCorruption:
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
