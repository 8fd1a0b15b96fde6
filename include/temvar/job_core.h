#ifndef TEMVAR_JOB_CORE_H_
#define TEMVAR_JOB_CORE_H_

// How temvar/job.h does it. Include that one; nothing here is for hosts.
//
// The scheduler keeps the order: a lane is a package, a callable a task, the end the function of
// the event. Whether a callable may begin, and when the job has ended, is decided here, under one
// mutex, and not by PauseEvent and CancelEvent. PauseEvent would block its caller and keep a worker
// for every lane; a cancel needs a free worker, takes queued work of others along, remembers names
// for ever, and calls the event's function a second time when it meets the end.
//
//   pause    a task that starts while the job is paused is put into held_ and returns without a
//            report, so its package pauses. Resume queues it again. A callable that runs waits in
//            PausePoint.
//   cancel   nothing begins and nothing reports any more, so the packages stop, and the event is
//            taken out of the registry. The job ends when no callable runs.
//
// Invariants
// 1. mutex_ guards everything that is not constant. No host code runs under it: no callable, no
//    destructor of one. Calls of the library under it make objects, and nothing else.
// 2. A callable runs only while its step is in running_, and enters only while endDue_ is false. So
//    once endDue_ is true and running_ is empty, no callable runs and none will: the job ends then,
//    once, on the thread that made it so.
// 3. The core lives as long as a task of the job or the Job itself. Before the start it holds the
//    packages and they hold it; Start or Close breaks that ring.

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "temvar/job.h"

namespace tmv {
namespace detail {

template <typename Argument, typename Stored>
class CallableOf final : public AnyCallable<Argument> {
 public:
  template <typename Callable>
  explicit CallableOf(Callable&& callable) : stored_(std::forward<Callable>(callable)) {}

  void Call(Argument argument) override {
    if constexpr (std::is_invocable_v<Stored&, Argument>) {
      static_assert(std::is_void_v<std::invoke_result_t<Stored&, Argument>>,
                    "a failure is an exception, so the callable returns nothing");
      stored_(static_cast<Argument>(argument));
    } else {
      static_assert(std::is_invocable_v<Stored&>, "the callable takes the argument or nothing");
      static_assert(std::is_void_v<std::invoke_result_t<Stored&>>,
                    "a failure is an exception, so the callable returns nothing");
      stored_();
    }
  }

 private:
  Stored stored_;
};

template <typename Argument, typename Callable>
CallablePtr<Argument> MakeCallable(Callable&& callable) {
  return std::make_unique<CallableOf<Argument, std::decay_t<Callable>>>(
      std::forward<Callable>(callable));
}

// One callable of a job.
struct JobStep {
  std::size_t lane;
  std::string label;
  CallablePtr<JobContext&> callable;
  double fraction = 0;
  bool sawCancel = false;  // Of the thread that runs the callable.
};

class JobCore final : public PoolUser, public std::enable_shared_from_this<JobCore> {
 public:
  explicit JobCore(std::string_view label)
      : eventName_(Text(TmvUtilityApp()->NewPrefixedId(std::string(label).c_str())).View()) {}

  std::size_t AddLane(std::string_view label);
  void Append(std::size_t lane, std::string_view label, CallablePtr<JobContext&> callable);
  void StopAtFailure(std::size_t lane);
  void SetOnEnd(CallablePtr<JobState> callable);

  void Start();
  void Pause();
  bool PauseAndWait();
  void Resume();
  void Cancel();
  JobState Wait();
  bool WaitUntil(std::chrono::steady_clock::time_point time);

  // The end of the Job object: cancels, waits for the callables of other threads, and destroys what
  // the host gave.
  void Close();

  // For JobContext.
  bool PausePoint(JobStep& step);
  bool IsCancelled() const;
  void SetFraction(JobStep& step, double fraction);

  JobState GetState() const;
  JobProgress GetProgress() const;
  JobProgress GetProgress(std::size_t lane) const;
  std::vector<JobFailure> Failures() const;
  const std::string& EventName() const override { return eventName_; }
  const std::string& LabelOf(std::size_t lane) const;

  void EndWithPool() override { Cancel(); }
  std::string Describe() const override;

 private:
  using Lock = std::unique_lock<std::mutex>;

  struct Lane {
    std::string label;
    Package package;  // Null once the job has been started.
    JobProgress counts;
    double runningFraction = 0;  // Sum over the callables that run.
  };

  struct Running {
    JobStep* step;
    std::thread::id thread;
  };

  // What a task's function gets.
  struct Link {
    std::shared_ptr<JobCore> core;
    JobStep* step;
  };

  static void RunLink(RkTask* task, RkTaskData* data);
  Event MakeEndEvent();
  void RunStep(RkTask* task, JobStep& step);
  bool BeginStep(RkTask* task, JobStep& step);
  bool EndStep(JobStep& step, std::exception_ptr error);
  void EndByEngine(RkTask* event);
  void LeaveRegistry() const;

  // The following need mutex_.
  void ThrowIfStarted() const;
  Lane& UnstartedLane(std::size_t lane);
  void FinishIfDue(Lock& lock);
  void KeepFailure(std::string lane, std::string label, std::exception_ptr error) noexcept;
  bool RunsHere() const;
  JobState State() const;
  static JobProgress ProgressOf(const Lane& lane);

  const std::string eventName_;

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::unique_ptr<Lane>> lanes_;
  std::vector<std::unique_ptr<JobStep>> steps_;  // Empty once the job has ended.
  CallablePtr<JobState> onEnd_;
  std::vector<JobFailure> failures_;
  std::vector<Running> running_;  // At most one for each lane.
  std::vector<Task> held_;        // At most one for each lane.
  std::size_t standing_ = 0;      // Of those that run: at a pause point, or waiting for a pause.
  uint64_t resumes_ = 0;
  bool started_ = false;
  bool paused_ = false;
  bool cancelled_ = false;
  bool endDue_ = false;  // Cancelled, or the scheduler says that all lanes have ended.
  bool ended_ = false;   // The outcome is fixed, and OnEnd runs.
  bool closed_ = false;  // OnEnd has returned.
  JobState outcome_ = JobState::kNew;
  std::thread::id endThread_;  // Runs OnEnd.

  // Whether PausePoint has to look: paused or cancelled. Written under mutex_.
  std::atomic<bool> attention_{false};
};

// Building.

inline void JobCore::ThrowIfStarted() const {
  if (started_) throw std::logic_error("tmv::Job: the job has been started");
}

inline JobCore::Lane& JobCore::UnstartedLane(std::size_t lane) {
  ThrowIfStarted();
  return *lanes_[lane];
}

inline std::size_t JobCore::AddLane(std::string_view label) {
  auto lane = std::make_unique<Lane>();
  lane->label = label;
  lane->package = MakePackage();
  const Lock lock(mutex_);
  ThrowIfStarted();
  lanes_.push_back(std::move(lane));
  return lanes_.size() - 1;
}

// The task is named after the event, with a number that is its own: names of tasks must be unique
// over the process. The label is for people who look at the task.
inline void JobCore::Append(std::size_t index, std::string_view label,
                            CallablePtr<JobContext&> callable) {
  auto step = std::make_unique<JobStep>();
  auto link = std::make_unique<Link>(Link{shared_from_this(), step.get()});
  step->lane = index;
  step->callable = std::move(callable);
  Func func = Func::Adopt(CreateRkTaskFunc());
  func->Bind(link.get(), RunLink, [](void* payload) { delete static_cast<Link*>(payload); });
  link.release();

  const Lock lock(mutex_);
  Lane& lane = UnstartedLane(index);
  const std::string number = std::to_string(lane.counts.total + 1);
  step->label = label.empty() ? "task " + number : std::string(label);
  const std::string place = std::to_string(index + 1) + "." + number;
  const Task task = MakeTask((eventName_ + "/" + place + " " + step->label).c_str());
  task->SetFunc(func);
  steps_.push_back(std::move(step));
  lane.package->AddTask(task);
  ++lane.counts.total;
}

inline void JobCore::StopAtFailure(std::size_t lane) {
  const Lock lock(mutex_);
  UnstartedLane(lane).package->SetContinueOnFailure(false);
}

inline void JobCore::SetOnEnd(CallablePtr<JobState> callable) {
  const Lock lock(mutex_);
  ThrowIfStarted();
  onEnd_.swap(callable);
}

// Running.

inline Event JobCore::MakeEndEvent() {
  return MakeEvent(eventName_.c_str(),
                   [core = shared_from_this()](RkTask* event) { core->EndByEngine(event); });
}

inline void JobCore::Start() {
  const Event event = MakeEndEvent();
  {
    Lock lock(mutex_);
    ThrowIfStarted();
    running_.reserve(lanes_.size());
    held_.reserve(lanes_.size());
    bool any = false;
    for (const std::unique_ptr<Lane>& lane : lanes_) {
      if (lane->counts.total == 0) continue;
      event->AddPackage(lane->package);
      any = true;
    }
    if (!PoolUsers::Get().Add(shared_from_this())) cancelled_ = true;
    started_ = true;
    for (const std::unique_ptr<Lane>& lane : lanes_) lane->package.Reset();
    if (cancelled_ || !any) {
      endDue_ = true;
      FinishIfDue(lock);
      return;
    }
  }
  try {
    TmvTaskSchedular()->AddEvent(event);
  } catch (...) {
    Cancel();
    throw;
  }
  // A cancel may have come before the event was there to be taken out.
  if (IsCancelled()) LeaveRegistry();
}

inline void JobCore::RunLink(RkTask* task, RkTaskData* data) {
  const Link& link = *static_cast<Link*>(data->GetPayload());
  const std::shared_ptr<JobCore> core = link.core;
  core->RunStep(task, *link.step);
}

inline void JobCore::RunStep(RkTask* task, JobStep& step) {
  if (!BeginStep(task, step)) return;
  std::exception_ptr error;
  try {
    JobContext context(*this, step, task);
    step.callable->Call(context);
  } catch (const JobCancelled&) {
    step.sawCancel = IsCancelled();
    if (!step.sawCancel) error = std::current_exception();
  } catch (...) {
    error = std::current_exception();
  }
  step.callable.reset();
  const bool failed = error != nullptr;
  if (EndStep(step, std::move(error))) {
    ReportEnd(task, failed ? kTaskStateFailed : kTaskStateSucceeded);
  }
}

// False if the callable must not run now.
inline bool JobCore::BeginStep(RkTask* task, JobStep& step) {
  const Lock lock(mutex_);
  if (endDue_) return false;
  if (paused_) {
    held_.push_back(Task::Share(task));
    return false;
  }
  running_.push_back({&step, std::this_thread::get_id()});
  ++lanes_[step.lane]->counts.running;
  return true;
}

// True if the lane goes on, with a report. The step may be gone afterwards.
inline bool JobCore::EndStep(JobStep& step, std::exception_ptr error) {
  Lock lock(mutex_);
  running_.erase(std::find_if(running_.begin(), running_.end(),
                              [&step](const Running& entry) { return entry.step == &step; }));
  Lane& lane = *lanes_[step.lane];
  --lane.counts.running;
  lane.runningFraction -= step.fraction;
  if (error) {
    ++lane.counts.failed;
    KeepFailure(lane.label, std::move(step.label), std::move(error));
  } else if (!step.sawCancel) {
    ++lane.counts.done;
  }
  changed_.notify_all();
  const bool goesOn = !endDue_;
  FinishIfDue(lock);
  return goesOn;
}

// A failure that finds no memory is counted, and that is all.
inline void JobCore::KeepFailure(std::string lane, std::string label,
                                 std::exception_ptr error) noexcept {
  try {
    failures_.push_back({std::move(lane), std::move(label), std::move(error)});
  } catch (...) {
  }
}

// The event's function. Somebody may have cancelled the event by its name, with callables running.
inline void JobCore::EndByEngine(RkTask* event) {
  const bool byName = event->GetState() == kTaskStateCancelled;
  {
    Lock lock(mutex_);
    if (byName && !ended_) {
      cancelled_ = true;
      attention_ = true;
      changed_.notify_all();
    }
    endDue_ = true;
    FinishIfDue(lock);
  }
  if (byName) LeaveRegistry();
}

// Invariant 2. Runs without the mutex in between; what it destroys is host code.
inline void JobCore::FinishIfDue(Lock& lock) {
  if (!started_ || !endDue_ || ended_ || !running_.empty()) return;
  ended_ = true;
  endThread_ = std::this_thread::get_id();
  JobProgress sum;
  for (const std::unique_ptr<Lane>& lane : lanes_) {
    sum.total += lane->counts.total;
    sum.done += lane->counts.done;
    sum.failed += lane->counts.failed;
  }
  const bool all = sum.done + sum.failed == sum.total;
  outcome_ = cancelled_ && !all ? JobState::kCancelled
             : sum.failed > 0   ? JobState::kFailed
                                : JobState::kSucceeded;
  const JobState outcome = outcome_;
  std::vector<std::unique_ptr<JobStep>> steps = std::move(steps_);
  std::vector<Task> held = std::move(held_);
  CallablePtr<JobState> onEnd = std::move(onEnd_);
  lock.unlock();

  PoolUsers::Get().Remove(this);
  held.clear();
  steps.clear();
  std::exception_ptr error;
  try {
    if (onEnd) onEnd->Call(outcome);
  } catch (...) {
    error = std::current_exception();
  }
  onEnd.reset();

  lock.lock();
  if (error) KeepFailure({}, "OnEnd", std::move(error));
  closed_ = true;
  endThread_ = {};
  changed_.notify_all();
}

// Steering.

inline void JobCore::Pause() {
  const Lock lock(mutex_);
  if (endDue_ || cancelled_) return;
  paused_ = true;
  attention_ = true;
}

inline bool JobCore::PauseAndWait() {
  Pause();
  Lock lock(mutex_);
  const uint64_t resumes = resumes_;
  const std::size_t own = RunsHere() ? 1 : 0;
  const auto over = [this, resumes] { return endDue_ || !paused_ || resumes_ != resumes; };
  standing_ += own;
  changed_.notify_all();
  changed_.wait(lock, [&] { return over() || standing_ >= running_.size(); });
  standing_ -= own;
  return !over();
}

inline void JobCore::Resume() {
  std::vector<Task> held;
  {
    const Lock lock(mutex_);
    if (!paused_ || cancelled_) return;
    held.reserve(held_.capacity());
    held.swap(held_);
    paused_ = false;
    attention_ = false;
    ++resumes_;
    changed_.notify_all();
  }
  try {
    for (const Task& task : held) TmvTaskSchedular()->ScheduleTask(task);
  } catch (...) {
    Cancel();  // A lane whose task could not be queued would wait for ever.
    throw;
  }
}

inline void JobCore::Cancel() {
  std::vector<Task> held;
  {
    const Lock lock(mutex_);
    if (cancelled_ || ended_) return;
    cancelled_ = true;
    attention_ = true;
    held.swap(held_);
    if (!started_) return;
    endDue_ = true;
    changed_.notify_all();
  }
  held.clear();
  LeaveRegistry();
  Lock lock(mutex_);
  FinishIfDue(lock);
}

// Somebody may have paused the event by its name; a task that is paused outside the registry would
// never go on.
inline void JobCore::LeaveRegistry() const {
  TmvTaskSchedular()->ResumeEvent(eventName_.c_str());
  TmvTaskSchedular()->RemoveEvent(eventName_.c_str());
}

inline bool JobCore::RunsHere() const {
  return std::any_of(running_.begin(), running_.end(), [](const Running& entry) {
    return entry.thread == std::this_thread::get_id();
  });
}

inline JobState JobCore::Wait() {
  Lock lock(mutex_);
  if (RunsHere()) {
    throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
  }
  if (started_ && endThread_ != std::this_thread::get_id()) {
    changed_.wait(lock, [this] { return closed_; });
  }
  return State();
}

inline bool JobCore::WaitUntil(std::chrono::steady_clock::time_point time) {
  Lock lock(mutex_);
  if (endThread_ == std::this_thread::get_id()) return true;
  return changed_.wait_until(lock, time, [this] { return closed_; });
}

// The locals are destroyed after the lock is released: they are host code.
inline void JobCore::Close() {
  Cancel();
  std::vector<std::unique_ptr<JobStep>> steps;
  std::vector<CallablePtr<JobContext&>> callables;
  std::vector<Package> packages;
  std::vector<JobFailure> failures;
  CallablePtr<JobState> onEnd;
  Lock lock(mutex_);
  if (!started_) {
    for (const std::unique_ptr<Lane>& lane : lanes_) packages.push_back(std::move(lane->package));
    steps.swap(steps_);
    onEnd.swap(onEnd_);
    return;
  }
  if (RunsHere()) {
    // The caller's own callable ends the job when it returns; nothing but it is left to do so.
    changed_.wait(lock, [this] { return running_.size() == 1; });
    for (const std::unique_ptr<JobStep>& step : steps_) {
      if (step.get() != running_.front().step) callables.push_back(std::move(step->callable));
    }
    onEnd.swap(onEnd_);
  } else if (endThread_ != std::this_thread::get_id()) {
    changed_.wait(lock, [this] { return closed_; });
  }
  failures.swap(failures_);
}

// For JobContext.

inline bool JobCore::PausePoint(JobStep& step) {
  if (!attention_.load(std::memory_order_acquire)) return true;
  Lock lock(mutex_);
  if (paused_ && !endDue_) {
    ++standing_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !paused_ || endDue_; });
    --standing_;
  }
  step.sawCancel = step.sawCancel || cancelled_;
  return !step.sawCancel;
}

inline bool JobCore::IsCancelled() const {
  const Lock lock(mutex_);
  return cancelled_;
}

inline void JobCore::SetFraction(JobStep& step, double fraction) {
  const double value = fraction > 0 ? std::min(fraction, 1.0) : 0;
  const Lock lock(mutex_);
  lanes_[step.lane]->runningFraction += value - step.fraction;
  step.fraction = value;
}

// Asking.

inline JobState JobCore::State() const {
  if (ended_) return outcome_;
  if (!started_) return JobState::kNew;
  if (cancelled_) return JobState::kCancelling;
  if (!paused_) return JobState::kRunning;
  return standing_ >= running_.size() ? JobState::kPaused : JobState::kPausing;
}

inline JobState JobCore::GetState() const {
  const Lock lock(mutex_);
  return State();
}

inline JobProgress JobCore::ProgressOf(const Lane& lane) {
  JobProgress progress = lane.counts;
  if (progress.total > 0) {
    progress.fraction = (progress.done + progress.failed + lane.runningFraction) / progress.total;
  }
  return progress;
}

inline JobProgress JobCore::GetProgress(std::size_t lane) const {
  const Lock lock(mutex_);
  return ProgressOf(*lanes_[lane]);
}

inline JobProgress JobCore::GetProgress() const {
  JobProgress sum;
  double ended = 0;
  const Lock lock(mutex_);
  for (const std::unique_ptr<Lane>& lane : lanes_) {
    sum.total += lane->counts.total;
    sum.done += lane->counts.done;
    sum.failed += lane->counts.failed;
    sum.running += lane->counts.running;
    ended += lane->counts.done + lane->counts.failed + lane->runningFraction;
  }
  if (sum.total > 0) sum.fraction = ended / sum.total;
  return sum;
}

inline std::vector<JobFailure> JobCore::Failures() const {
  const Lock lock(mutex_);
  return failures_;
}

inline const char* NameOf(JobState state) {
  constexpr const char* kNames[] = {"new",        "running",   "pausing", "paused",
                                    "cancelling", "succeeded", "failed",  "cancelled"};
  return kNames[static_cast<int>(state)];
}

inline std::string JobCore::Describe() const {
  const auto counts = [](const JobProgress& progress) {
    return std::to_string(progress.done) + " of " + std::to_string(progress.total) + " done, " +
           std::to_string(progress.failed) + " failed, " + std::to_string(progress.running) +
           " running";
  };
  const JobProgress all = GetProgress();
  const Lock lock(mutex_);
  std::string text = "job " + eventName_ + ": " + NameOf(State()) + ", " + counts(all) + ", " +
                     std::to_string(held_.size()) + " held back\n";
  for (std::size_t i = 0; i < lanes_.size(); ++i) {
    text += "  lane " + std::to_string(i + 1) + " " + lanes_[i]->label + ": " +
            counts(lanes_[i]->counts);
    for (const Running& entry : running_) {
      if (entry.step->lane == i) text += ", in " + entry.step->label;
    }
    text += "\n";
  }
  return text;
}

inline const std::string& JobCore::LabelOf(std::size_t lane) const {
  const Lock lock(mutex_);
  return lanes_[lane]->label;
}

}  // namespace detail

inline std::string JobFailure::Message() const {
  try {
    if (error) std::rethrow_exception(error);
  } catch (const std::exception& exception) {
    return exception.what();
  } catch (...) {
  }
  return "unknown error";
}

inline bool JobContext::KeepGoing() {
  // The first is for those who pause or cancel the event by its name.
  const bool goesOn = tmv::KeepGoing(task_);
  return core_.PausePoint(step_) && goesOn;
}

inline void JobContext::ThrowIfCancelled() {
  if (!KeepGoing()) throw JobCancelled();
}

inline bool JobContext::IsCancelled() const { return core_.IsCancelled(); }
inline void JobContext::SetProgress(double fraction) { core_.SetFraction(step_, fraction); }
inline const std::string& JobContext::Label() const { return step_.label; }

inline void JobLane::Append(std::string_view label, detail::CallablePtr<JobContext&> callable) {
  core_->Append(index_, label, std::move(callable));
}

inline JobLane& JobLane::StopAtFailure() {
  core_->StopAtFailure(index_);
  return *this;
}

inline const std::string& JobLane::Label() const { return core_->LabelOf(index_); }
inline JobProgress JobLane::GetProgress() const { return core_->GetProgress(index_); }

inline Job::Job(std::string_view label) : core_(std::make_shared<detail::JobCore>(label)) {}

inline Job& Job::operator=(Job&& other) {
  const std::shared_ptr<detail::JobCore> old = std::exchange(core_, std::move(other.core_));
  if (old) old->Close();
  return *this;
}

// OnEnd may destroy the Job that an operation is called on, so each holds the core itself.
inline Job::~Job() {
  const std::shared_ptr<detail::JobCore> core = std::move(core_);
  if (core) core->Close();
}

inline Job::Lane Job::AddLane(std::string_view label) { return {core_, core_->AddLane(label)}; }
inline void Job::SetOnEnd(detail::CallablePtr<JobState> callable) {
  core_->SetOnEnd(std::move(callable));
}
inline void Job::Start() { std::shared_ptr(core_)->Start(); }
inline void Job::Pause() { core_->Pause(); }
inline bool Job::PauseAndWait() { return std::shared_ptr(core_)->PauseAndWait(); }
inline void Job::Resume() { std::shared_ptr(core_)->Resume(); }
inline void Job::Cancel() { std::shared_ptr(core_)->Cancel(); }
inline JobState Job::Wait() { return std::shared_ptr(core_)->Wait(); }
inline bool Job::WaitUntil(std::chrono::steady_clock::time_point time) {
  return std::shared_ptr(core_)->WaitUntil(time);
}
inline JobState Job::GetState() const { return core_->GetState(); }
inline JobProgress Job::GetProgress() const { return core_->GetProgress(); }
inline std::vector<JobFailure> Job::Failures() const { return core_->Failures(); }
inline const std::string& Job::EventName() const { return core_->EventName(); }

}  // namespace tmv

#endif  // TEMVAR_JOB_CORE_H_
