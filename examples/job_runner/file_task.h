#ifndef EXAMPLES_JOB_RUNNER_FILE_TASK_H_
#define EXAMPLES_JOB_RUNNER_FILE_TASK_H_

#include <temvar/temvar.h>

namespace job_runner {

// The function of a file's task: reads the FileWork that is its payload and reports.
void RunFileTask(RkTask* task, RkTaskData* data);

}  // namespace job_runner

#endif  // EXAMPLES_JOB_RUNNER_FILE_TASK_H_
