#ifndef EXAMPLES_JOB_RUNNER_WATCH_H_
#define EXAMPLES_JOB_RUNNER_WATCH_H_

#include "job.h"
#include "support/terminal.h"
#include "work.h"

namespace job_runner {

// Follows a started job to its end: obeys the keys, and shows a progress line on a screen. Where
// the output is no screen, only what the keys did is told.
void WatchJob(Job& job, const Progress& progress, uint64_t fileCount, support::Terminal& terminal);

}  // namespace job_runner

#endif  // EXAMPLES_JOB_RUNNER_WATCH_H_
