#ifndef EXAMPLES_JOB_RUNNER_JOB_H_
#define EXAMPLES_JOB_RUNNER_JOB_H_

#include <vector>

#include "support/job_control.h"
#include "work.h"

namespace job_runner {

// The job as an event of the library: one package for each folder, one task for each file. It, the
// work and the progress must live until the pool has stopped.
class Job {
 public:
  Job(std::vector<PackageWork>& packages, Progress& progress);

  support::JobControl& control() { return control_; }

 private:
  tmv::Package MakePackage(PackageWork& work);
  tmv::Task MakeTask(FileWork& work);

  Progress& progress_;
  uint64_t lastTask_ = 0;
  tmv::Event event_;
  support::JobControl control_;
};

}  // namespace job_runner

#endif  // EXAMPLES_JOB_RUNNER_JOB_H_
