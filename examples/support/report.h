#ifndef EXAMPLES_SUPPORT_REPORT_H_
#define EXAMPLES_SUPPORT_REPORT_H_

#include <temvar/handles.h>

#include <exception>

namespace support {

// Runs `work` as the body of a task's function and reports: success when it gives true, failure
// when it throws, since nothing may escape into the worker. False means that it stopped because of
// a cancel, of which nothing is reported. Gives what was thrown, for the host's own record.
//
// A pause swallows a report that comes in while the task is paused; ReportEnd then reports again.
template <typename Work>
std::exception_ptr RunReported(RkTask* task, Work&& work) {
  std::exception_ptr error;
  try {
    if (!work()) return nullptr;
  } catch (...) {
    error = std::current_exception();
  }
  tmv::ReportEnd(task, error ? kTaskStateFailed : kTaskStateSucceeded);
  return error;
}

}  // namespace support

#endif  // EXAMPLES_SUPPORT_REPORT_H_
