#ifndef TEMVAR_JOB_H_
#define TEMVAR_JOB_H_

// A job as a host thinks of it: lanes of callables, with pause, cancel, progress, failures and an
// end. C++17 and later, header-only over the exports.
//
//   tmv::RunningPool pool(4);
//   tmv::Job job("import");
//   tmv::Job::Lane lane = job.AddLane("photos");
//   lane.Then("first.jpg", [] { Import("first.jpg"); });
//   lane.Then("second.jpg", [](tmv::Job::Context& c) { while (c.KeepGoing() && More()) Step(); });
//   job.Start();
//   if (job.Wait() == tmv::JobState::kFailed) Show(job.Failures());
//
// The callables of a lane run one after the other, the lanes side by side, as far as the pool has
// workers. A callable takes a Context or nothing and returns nothing. It has failed if it throws,
// whatever it throws; its lane goes on unless StopAtFailure says otherwise.
//
// Life. A Job may be destroyed at any time and on any thread, by one of its own callables and by
// OnEnd too: its end cancels it, paused or not, and waits for the callables that run on other
// threads. So what the callables refer to only has to outlive the Job, and every callable is
// destroyed before Wait returns. Callables are destroyed on a worker or on the thread that ends the
// job, without any lock held.
//
// Threads. Every operation may be called from any thread at any time, from a callable of the job
// too, unless it says otherwise. What the callables wrote is visible to whoever saw the end by
// Wait, WaitFor, OnEnd or GetState.
//
// Workers. A job that is paused keeps a worker only for each callable that waits in KeepGoing;
// the next callable of a lane is held back without one. A cancel needs no worker at all, and leaves
// the work of others in the pool's queue alone.
//
// Errors. What allocates throws std::bad_alloc, what needs a mutex std::system_error.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "temvar/handles.h"

namespace tmv {

// What a job is doing, or how it ended.
enum class JobState {
  kNew,         // Not started.
  kRunning,     // Started, and neither paused nor cancelled.
  kPausing,     // Paused, but a callable still works towards its next KeepGoing.
  kPaused,      // Paused, and no callable works.
  kCancelling,  // Cancelled, but a callable has not returned yet.
  kSucceeded,   // Ended: every callable ran, none failed.
  kFailed,      // Ended: at least one callable failed.
  kCancelled,   // Ended: a cancel kept at least one callable from its end.
};

// Whether it is one of the three last.
inline bool HasEnded(JobState state) { return state >= JobState::kSucceeded; }

// How far a job or a lane is, all of one moment. `fraction` counts a callable that has ended as 1
// and one that runs as what it said by SetProgress; it is 1 for what holds no callable.
struct JobProgress {
  uint32_t total = 0;    // Callables in all.
  uint32_t done = 0;     // Those that ended without a failure.
  uint32_t failed = 0;   // Those that threw.
  uint32_t running = 0;  // Those that run, or wait in KeepGoing.
  double fraction = 1;   // 0 to 1.
};

// One callable that failed.
struct JobFailure {
  std::string lane;          // The label of its lane.
  std::string label;         // Its own.
  std::exception_ptr error;  // What it threw.

  // What the exception says of itself; "unknown error" if it is no std::exception.
  std::string Message() const;
};

// Thrown by JobContext::ThrowIfCancelled, so that a deep callable can leave. It is no failure.
class JobCancelled : public std::exception {
 public:
  // A fixed text.
  const char* what() const noexcept override { return "the job was cancelled"; }
};

namespace detail {

class JobCore;
struct JobStep;

// A callable of any type, moved or copied in, that takes an Argument or nothing.
template <typename Argument>
class AnyCallable {
 public:
  virtual ~AnyCallable() = default;
  virtual void Call(Argument argument) = 0;
};

template <typename Argument>
using CallablePtr = std::unique_ptr<AnyCallable<Argument>>;

template <typename Argument, typename Callable>
CallablePtr<Argument> MakeCallable(Callable&& callable);

}  // namespace detail

// What a running callable may ask and say. Belongs to the thread that runs the callable, and to the
// time of its run.
class JobContext {
 public:
  // A pause point: blocks while the job is paused. False if it has been cancelled, and the callable
  // should return soon; it does not count as done then.
  bool KeepGoing();

  // The same, but throws JobCancelled instead of returning false.
  void ThrowIfCancelled();

  // Whether the job has been cancelled. Never blocks.
  bool IsCancelled() const;

  // How far this callable is, 0 to 1; values beyond are taken as the nearest.
  void SetProgress(double fraction);

  // The label that the callable was added with.
  const std::string& Label() const;

 private:
  friend class detail::JobCore;
  JobContext(detail::JobCore& core, detail::JobStep& step, RkTask* task)
      : core_(core), step_(step), task_(task) {}
  JobContext(const JobContext&) = delete;
  JobContext& operator=(const JobContext&) = delete;

  detail::JobCore& core_;
  detail::JobStep& step_;
  RkTask* const task_;
};

// One lane of a job, made by AddLane. A copy is the same lane. It stays valid after the job is
// gone.
class JobLane {
 public:
  // Appends a callable of the form void(JobContext&) or void(). The label names it in failures;
  // without one it is "task 1" and so on. Labels need not be unique. Throws std::logic_error once
  // the job has been started.
  template <typename Callable>
  JobLane& Then(std::string_view label, Callable&& callable) {
    Append(label, detail::MakeCallable<JobContext&>(std::forward<Callable>(callable)));
    return *this;
  }
  template <typename Callable>
  JobLane& Then(Callable&& callable) {
    return Then(std::string_view(), std::forward<Callable>(callable));
  }

  // The first failure ends the lane: what lies after it never runs. Throws std::logic_error once
  // the job has been started.
  JobLane& StopAtFailure();

  // The label that the lane was added with.
  const std::string& Label() const;

  // How far the lane is.
  JobProgress GetProgress() const;

 private:
  friend class Job;
  JobLane(std::shared_ptr<detail::JobCore> core, std::size_t index)
      : core_(std::move(core)), index_(index) {}
  void Append(std::string_view label, detail::CallablePtr<JobContext&> callable);

  std::shared_ptr<detail::JobCore> core_;
  std::size_t index_;
};

// A job: its lanes, its pause, cancel and end, and what became of it. The head of this header says
// how it lives, which threads may use it, which workers it needs and what it throws.
class Job {
 public:
  // The names of its parts.
  using State = JobState;
  using Progress = JobProgress;
  using Failure = JobFailure;
  using Context = JobContext;
  using Lane = JobLane;

  // A job without lanes. The label shows in Describe; it need not be unique.
  explicit Job(std::string_view label = "job");

  // A job moves with all that belongs to it. What was moved from may only be destroyed or assigned.
  Job(Job&& other) noexcept = default;
  Job& operator=(Job&& other);

  // Cancels the job and waits until its callables and OnEnd have returned; it needs no free worker
  // and no pool. A callable or OnEnd that destroys its job is not waited for; after a callable that
  // does, OnEnd is not called.
  ~Job();

  // A new lane. Throws std::logic_error once the job has been started.
  Lane AddLane(std::string_view label = {});

  // A callable in a lane of its own.
  template <typename Callable>
  Job& Add(std::string_view label, Callable&& callable) {
    AddLane(label).Then(label, std::forward<Callable>(callable));
    return *this;
  }

  // Sets what runs once, after the last callable, of the form void(JobState) or void(). It runs
  // before Wait returns, on a worker, or in Start or Cancel when those end the job themselves. It
  // may destroy the Job, and must not wait for a thread that does: post to a window, do not send.
  // What it throws is kept among the failures, as "OnEnd", and changes nothing else. Not called for
  // a job that was never started. Throws std::logic_error after Start.
  template <typename Callable>
  Job& OnEnd(Callable&& callable) {
    SetOnEnd(detail::MakeCallable<JobState>(std::forward<Callable>(callable)));
    return *this;
  }

  // Starts the job, once. Lanes without callables are left out, and a job without any ends here.
  // So does a job that was cancelled before, or whose tmv::RunningPool has ended: as kCancelled.
  // Before the pool is started it waits for that. Throws std::logic_error at a second call; if it
  // throws anything else, the job has ended as kCancelled.
  void Start();

  // Holds the job. Returns at once: callables that run stop at their next KeepGoing, the others do
  // not begin. Also before Start. Does nothing after a cancel or the end.
  void Pause();

  // The same, and waits until no callable works any more: each waits in KeepGoing, has ended, or
  // is the caller. False if the job was resumed or cancelled, or ended, meanwhile.
  bool PauseAndWait();

  // Lets a paused job go on. If it throws, the job has been cancelled.
  void Resume();

  // Ends the job: no further callable begins, and those that run see it in their KeepGoing. Returns
  // at once. Also for a paused job. If all callables had ended before, the job ends as it would
  // have without the call.
  void Cancel();

  // Waits for the end, and returns how the job ended; returns kNew at once if it was not started.
  // Needs a pool that runs. Throws std::system_error (resource_deadlock_would_occur) in a callable
  // of this very job. In a callable of another job it keeps a worker.
  State Wait();

  // The same for a limited time. True if the job has ended.
  template <typename Rep, typename Period>
  bool WaitFor(std::chrono::duration<Rep, Period> time) {
    constexpr std::chrono::hours kLongest(24 * 365);  // Longer ones would overflow the clock.
    return WaitUntil(std::chrono::steady_clock::now() +
                     (time < kLongest ? std::chrono::ceil<std::chrono::milliseconds>(time)
                                      : std::chrono::milliseconds(kLongest)));
  }
  bool WaitUntil(std::chrono::steady_clock::time_point time);

  // What the job is doing, whether it ended with every callable done, and how far it is.
  State GetState() const;
  bool Succeeded() const { return GetState() == State::kSucceeded; }
  Progress GetProgress() const;

  // The failures so far, in the order in which they happened.
  std::vector<Failure> Failures() const;

  // The name of the job's event in the scheduler: the label with a number after it. For look-ups;
  // pausing, cancelling or removing the event by this name is not needed.
  const std::string& EventName() const;

 private:
  void SetOnEnd(detail::CallablePtr<JobState> callable);

  std::shared_ptr<detail::JobCore> core_;
};

// A list that the callables of a job fill and the host reads: what a host would otherwise guard
// with a mutex of its own. Copies share one list, so capture it by value and nothing dangles.
//   tmv::Results<std::string> names;
//   lane.Then([names] { names.Add("a.jpg"); });
template <typename Value>
class Results {
 public:
  // Appends a value. Any thread.
  void Add(Value value) const {
    const std::lock_guard<std::mutex> lock(shared_->mutex);
    shared_->values.push_back(std::move(value));
  }

  // Takes out what has been added so far, in the order of the calls. Any thread.
  std::vector<Value> Take() const {
    const std::lock_guard<std::mutex> lock(shared_->mutex);
    return std::exchange(shared_->values, {});
  }

 private:
  struct Shared {
    std::mutex mutex;
    std::vector<Value> values;
  };
  std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
};

}  // namespace tmv

#include "temvar/job_core.h"

#endif  // TEMVAR_JOB_H_
