#ifndef TESTS_SCHEDULER_PAUSABLE_H_
#define TESTS_SCHEDULER_PAUSABLE_H_

#include "support/host_job.h"

namespace test {

// An event with one task that waits at its gate, goes to a pause point, and then reports until it
// is heard. `passed` counts its pause points.
class Pausable {
 public:
  // A task that asks uses CheckPause; another one meets the pause in a report of nothing.
  explicit Pausable(const std::string& name, bool asks = false)
      : name_(name),
        job_(name,
             {{name + " task",
               [this, asks](RkTask* task) {
                 gate.Wait();
                 asks ? (void)Schedular().CheckPause(task)
                      : task->ReportState(task, kTaskStateCreated);
                 ++passed;
                 while (task->GetState() == kTaskStateActive && !silent) Succeed(task);
               }}},
             [this](RkTask*) { ended = true; }) {}

  void Start() {
    job_.Add();
    gate.WaitForArrivals(1);
  }

  void Pause() const { Schedular().PauseEvent(name_.c_str()); }
  void Resume() const { Schedular().ResumeEvent(name_.c_str()); }
  // Comes back with the task at its pause point.
  void PauseWhole() {
    Call pause([this] { Pause(); });
    Eventually([this] { return State() == kTaskStatePaused; });
    gate.Open();
    pause.WaitForReturn();
  }

  int32_t State() const { return job_[0]->GetState(); }
  RkTask* task() const { return job_[0]; }
  RkTask* event() const { return job_.event.get(); }

  Gate gate;
  std::atomic<int> passed{0};
  std::atomic<bool> ended{false};
  std::atomic<bool> silent{false};

 private:
  const std::string name_;
  const Job job_;
};

}  // namespace test

#endif  // TESTS_SCHEDULER_PAUSABLE_H_
