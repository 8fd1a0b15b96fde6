#ifndef EXAMPLES_JOB_RUNNER_JOB_H_
#define EXAMPLES_JOB_RUNNER_JOB_H_

#include <atomic>
#include <vector>

#include <temvar/handles.h>
#include "work.h"

namespace job_runner {

// The job as an event of the library: one package for each folder, one task for each file.
//
// Start, Pause, Resume and Cancel belong to one thread, with the pool running. The object, the work
// and the progress must live until the pool has stopped.
class Job {
 public:
  Job(std::vector<PackageWork>& packages, Progress& progress);
  ~Job();
  Job(const Job&) = delete;
  Job& operator=(const Job&) = delete;

  void Start();

  // Returns when each running task stands at a pause point.
  void Pause();
  void Resume();

  // Stops the tasks and lets the event end; HasEnded tells when. Also while paused.
  void Cancel();

  bool IsPaused() const { return paused_; }
  bool HasEnded() const { return ended_; }

 private:
  static void NoteEnd(RkTask* event, RkTaskData* data);

  Progress& progress_;
  tmv::Event event_;
  bool paused_ = false;
  std::atomic<bool> ended_{false};
};

}  // namespace job_runner

#endif  // EXAMPLES_JOB_RUNNER_JOB_H_
