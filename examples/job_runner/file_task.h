#ifndef EXAMPLES_JOB_RUNNER_FILE_TASK_H_
#define EXAMPLES_JOB_RUNNER_FILE_TASK_H_

#include <temvar/temvar.h>

#include "support/job_control.h"
#include "work.h"

namespace job_runner {

// Reads the file of one task and reports, whatever happens.
void RunFileTask(RkTask* task, FileWork& work, Progress& progress, const support::JobControl& job);

}  // namespace job_runner

#endif  // EXAMPLES_JOB_RUNNER_FILE_TASK_H_
