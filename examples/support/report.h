#ifndef EXAMPLES_SUPPORT_REPORT_H_
#define EXAMPLES_SUPPORT_REPORT_H_

#include <temvar/temvar.h>

#include <exception>

#include "support/owners.h"

namespace support {

// Reports the result of a task (1 or 6) until the scheduler has taken it.
//
// A pause swallows a report that comes in while the task is paused: the call comes back after the
// resume, with the task active (or paused anew) and nothing reported. The report is then made
// again. A task of which the report was taken is in the state 1 or 6, and a cancelled one in 5.
// Without a registered event nobody takes reports, and the task stays active: that ends it too.
inline void ReportResult(RkTask* task, int32_t result) {
  for (;;) {
    task->ReportState(task, result);
    const int32_t state = task->GetState();
    if (state != kTaskStateActive && state != kTaskStatePaused) return;
    if (!TaskOwner(TmvTaskSchedular()->FindEventOfTask(task->GetName()))) return;
  }
}

// Runs `work` as the body of a task's function and reports: success when it gives true, failure
// when it throws, since nothing may escape into the worker. False means that it stopped because of
// a cancel, of which nothing is reported. Gives what was thrown, for the host's own record.
template <typename Work>
std::exception_ptr RunReported(RkTask* task, Work&& work) {
  std::exception_ptr error;
  try {
    if (!work()) return nullptr;
  } catch (...) {
    error = std::current_exception();
  }
  ReportResult(task, error ? kTaskStateFailed : kTaskStateSucceeded);
  return error;
}

}  // namespace support

#endif  // EXAMPLES_SUPPORT_REPORT_H_
