#ifndef EXAMPLES_CRASH_HOST_JOB_H_
#define EXAMPLES_CRASH_HOST_JOB_H_

namespace crash_host {

// Runs a job of six tasks in two packages on the pool; the third task calls `crash`. Comes back
// when the job is done, if it survives.
void RunJob(void (*crash)());

}  // namespace crash_host

#endif  // EXAMPLES_CRASH_HOST_JOB_H_
