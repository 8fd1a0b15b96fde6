#ifndef EXAMPLES_BACKUP_STEPS_H_
#define EXAMPLES_BACKUP_STEPS_H_

#include <temvar/job.h>

#include <atomic>
#include <cstdint>
#include <vector>

#include "folder.h"

namespace backup {

// Bytes that were taken in, over all steps: each file counts three times, once for each step.
struct Progress {
  std::atomic<uint64_t> done{0};
  uint64_t total = 0;
};

// A lane for each folder, with a callable for each step, and returns the lanes in that order. The
// folders and the progress must outlive the job.
std::vector<tmv::JobLane> AddFolders(tmv::Job& job, std::vector<Folder>& folders,
                                     Progress& progress);

// After the end of the job: a folder whose lane has a failure has failed.
void NoteFailures(const std::vector<tmv::JobFailure>& failures, std::vector<Folder>& folders);

}  // namespace backup

#endif  // EXAMPLES_BACKUP_STEPS_H_
