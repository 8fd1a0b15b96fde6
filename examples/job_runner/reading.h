#ifndef EXAMPLES_JOB_RUNNER_READING_H_
#define EXAMPLES_JOB_RUNNER_READING_H_

#include <temvar/job.h>

#include <vector>

#include "work.h"

namespace job_runner {

// A lane for each package, with a callable for each file, which reads it and writes the results.
// The packages and the progress must outlive the job.
void AddReading(tmv::Job& job, std::vector<PackageWork>& packages, Progress& progress);

}  // namespace job_runner

#endif  // EXAMPLES_JOB_RUNNER_READING_H_
