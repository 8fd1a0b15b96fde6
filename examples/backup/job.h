#ifndef EXAMPLES_BACKUP_JOB_H_
#define EXAMPLES_BACKUP_JOB_H_

#include <vector>

#include "folder.h"
#include "steps.h"
#include "support/job_control.h"

namespace backup {

// The backup as an event of the library: one package for each folder, with a task for each step. It
// and the folders must live until the pool has stopped.
class Job {
 public:
  explicit Job(std::vector<Folder>& folders);

  support::JobControl& control() { return control_; }
  const Progress& progress() const { return progress_; }

 private:
  tmv::Package MakePackage(Folder& folder);
  tmv::Task MakeStep(const char* name, Folder& folder, void (Steps::*step)(RkTask*));

  Progress progress_;
  tmv::Event event_;
  support::JobControl control_;
};

}  // namespace backup

#endif  // EXAMPLES_BACKUP_JOB_H_
