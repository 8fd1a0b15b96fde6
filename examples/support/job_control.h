#ifndef EXAMPLES_SUPPORT_JOB_CONTROL_H_
#define EXAMPLES_SUPPORT_JOB_CONTROL_H_

#include <temvar/handles.h>

#include <atomic>
#include <thread>

namespace support {

// Starts, pauses, resumes and cancels one event. Takes the event's function for itself, to know the
// end.
//
// All operations belong to one thread, with the pool running; none of them waits for a task. The
// object, and what the tasks refer to, must live until the pool has stopped.
class JobControl {
 public:
  explicit JobControl(tmv::Event event);
  ~JobControl();
  JobControl(const JobControl&) = delete;
  JobControl& operator=(const JobControl&) = delete;

  void Start();
  void Pause();
  void Resume();

  // Stops the job, also while it is paused. HasEnded tells when no task of it runs any more.
  void Cancel();

  bool IsPaused() const { return pauser_.joinable(); }
  bool HasEnded() const { return ended_; }

  // For the tasks, between two pieces of their work: a pause point. False if they should return.
  bool KeepGoing(RkTask* task) const { return tmv::KeepGoing(task) && !cancelled_; }
  bool IsCancelled() const { return cancelled_; }

 private:
  const char* Name() const { return event_->GetName(); }

  tmv::Event event_;
  std::atomic<bool> cancelled_{false};
  std::atomic<bool> ended_{false};
  std::thread pauser_;
  std::atomic<bool> pauserDone_{false};
};

// Starts a job, and cancels it if its scope is left before the end, so that no task is parked or at
// work when the pool stops. Declare it behind the pool.
class RunningJob {
 public:
  explicit RunningJob(JobControl& job) : job_(job) { job_.Start(); }
  ~RunningJob() {
    if (job_.HasEnded()) {
      job_.Resume();
    } else {
      job_.Cancel();
    }
  }
  RunningJob(const RunningJob&) = delete;
  RunningJob& operator=(const RunningJob&) = delete;

 private:
  JobControl& job_;
};

}  // namespace support

#endif  // EXAMPLES_SUPPORT_JOB_CONTROL_H_
