#ifndef EXAMPLES_BACKUP_STEPS_H_
#define EXAMPLES_BACKUP_STEPS_H_

#include <temvar/temvar.h>

#include <atomic>
#include <cstdint>

#include "folder.h"
#include "support/job_control.h"

namespace backup {

// Bytes that were taken in, over all steps: each file counts three times, once for each step.
struct Progress {
  std::atomic<uint64_t> done{0};
  uint64_t total = 0;
};

// The three steps of a folder's backup, each the body of one task. They throw what went wrong, and
// return early when the job is cancelled.
class Steps {
 public:
  Steps(Folder& folder, Progress& progress, const support::JobControl& job)
      : folder_(folder), progress_(progress), job_(job) {}

  // Takes the digest of each file. If none has changed since the last backup, that is all.
  void Digest(RkTask* task);

  // Packs the files into an archive that doesn't have its name yet.
  void Pack(RkTask* task);

  // Unpacks that archive, compares the digests, and gives it its name.
  void Verify(RkTask* task);

 private:
  bool IsUnchanged() const;
  void CompareUnpacked(RkTask* task);
  void GiveName();

  Folder& folder_;
  Progress& progress_;
  const support::JobControl& job_;
};

}  // namespace backup

#endif  // EXAMPLES_BACKUP_STEPS_H_
