// The functions of temvar/jobs.h over tmv::Job. A library of its own: it uses libTemvar as any host
// does, through the exports.
#include "temvar/jobs.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "temvar/job.h"

static_assert(TMV_JOB_NEW == static_cast<int>(tmv::JobState::kNew));
static_assert(TMV_JOB_PAUSED == static_cast<int>(tmv::JobState::kPaused));
static_assert(TMV_JOB_SUCCEEDED == static_cast<int>(tmv::JobState::kSucceeded));
static_assert(TMV_JOB_CANCELLED == static_cast<int>(tmv::JobState::kCancelled));

struct TmvJob {
  explicit TmvJob(const char* label) : job(label) {}

  tmv::Job job;
  std::mutex mutex;
  std::vector<tmv::Job::Lane> lanes;  // Guarded by mutex. No lane is ever taken out.
};

struct TmvJobContext {
  tmv::Job::Context& context;
  std::string error;
};

namespace {

const char* TextOrEmpty(const char* text) { return text == nullptr ? "" : text; }

int32_t CodeOf(const std::system_error& error) {
  const std::error_code& code = error.code();
  if (code == std::errc::resource_deadlock_would_occur) return TMV_JOBS_DEADLOCK;
  // What the pool throws when it has been started, or has not been.
  const bool pool =
      code == std::errc::operation_not_permitted || code == std::errc::invalid_argument;
  return pool ? TMV_JOBS_WRONG_STATE : TMV_JOBS_SYSTEM_ERROR;
}

// Runs a function's body, which returns a code, and turns what it throws into one.
template <typename Body>
int32_t Guarded(Body&& body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return TMV_JOBS_NO_MEMORY;
  } catch (const std::system_error& error) {
    return CodeOf(error);
  } catch (const std::logic_error&) {
    return TMV_JOBS_WRONG_STATE;
  } catch (...) {
    return TMV_JOBS_SYSTEM_ERROR;
  }
}

// The same for an operation of a job that returns nothing.
template <typename Operation>
int32_t OnJob(TmvJob* job, Operation&& operation) noexcept {
  if (job == nullptr) return TMV_JOBS_INVALID_ARGUMENT;
  return Guarded([&] {
    operation(job->job);
    return TMV_JOBS_OK;
  });
}

// The same for an operation of one lane.
template <typename Operation>
int32_t OnLane(TmvJob* job, uint32_t lane, Operation&& operation) noexcept {
  if (job == nullptr) return TMV_JOBS_INVALID_ARGUMENT;
  return Guarded([&] {
    std::unique_lock<std::mutex> lock(job->mutex);
    if (lane >= job->lanes.size()) return TMV_JOBS_INVALID_ARGUMENT;
    // A copy of the handle, since another thread may add a lane and move them all.
    tmv::Job::Lane found = job->lanes[lane];
    // Operations of a lane take the job's own lock and may call the host.
    lock.unlock();
    operation(found);
    return TMV_JOBS_OK;
  });
}

// The host's pointer, released with the last reference on this.
class User {
 public:
  User(void* pointer, TmvJobRelease release) : pointer_(pointer), release_(release) {}
  User(const User&) = delete;
  User& operator=(const User&) = delete;
  ~User() {
    if (release_ != nullptr) release_(pointer_);
  }

  void* Get() const { return pointer_; }
  void LeaveToHost() { release_ = nullptr; }

 private:
  void* const pointer_;
  TmvJobRelease release_;
};

void RunTask(TmvJobTask task, void* user, tmv::Job::Context& context) {
  TmvJobContext own{context, {}};
  const int32_t result = task(&own, user);
  if (result == 0) return;
  // A task that a cancel has stopped early returns some error, which is no failure of the job.
  if (context.IsCancelled()) throw tmv::JobCancelled();
  if (own.error.empty()) own.error = "the task returned " + std::to_string(result);
  throw std::runtime_error(own.error);
}

std::string TextOf(const tmv::Job::Failure& failure) {
  return failure.lane + "/" + failure.label + ": " + failure.Message();
}

// Copies what fits, and no part of a character.
void CopyText(const std::string& text, char* buffer, uint32_t size) {
  if (size == 0) return;
  size_t length = std::min<size_t>(text.size(), size - 1);
  if (length < text.size()) {
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0u) == 0x80u) --length;
  }
  std::memcpy(buffer, text.data(), length);
  buffer[length] = '\0';
}

}  // namespace

const char* TmvJobsErrorText(int32_t code) {
  switch (code) {
    case TMV_JOBS_OK:
      return "success";
    case TMV_JOBS_INVALID_ARGUMENT:
      return "an argument is null or names nothing";
    case TMV_JOBS_WRONG_STATE:
      return "the job or the pool is not in a state for this call";
    case TMV_JOBS_TIMEOUT:
      return "the job has not ended in that time";
    case TMV_JOBS_DEADLOCK:
      return "the caller would wait for itself";
    case TMV_JOBS_NO_MEMORY:
      return "memory is exhausted";
    case TMV_JOBS_SYSTEM_ERROR:
      return "the system refused a thread or a mutex";
    default:
      return "unknown code";
  }
}

// The pool.

int32_t TmvJobsStartPool(uint32_t workers) {
  return Guarded([workers] {
    tmv::detail::StartPool(workers);
    return TMV_JOBS_OK;
  });
}

int32_t TmvJobsStopPool() {
  return Guarded([] {
    tmv::detail::StopPool();
    return TMV_JOBS_OK;
  });
}

// Making a job.

int32_t TmvJobCreate(const char* label, TmvJob** job) {
  if (job == nullptr) return TMV_JOBS_INVALID_ARGUMENT;
  return Guarded([label, job] {
    *job = new TmvJob(TextOrEmpty(label));
    return TMV_JOBS_OK;
  });
}

int32_t TmvJobFree(TmvJob* job) {
  return Guarded([job] {
    delete job;
    return TMV_JOBS_OK;
  });
}

int32_t TmvJobAddLane(TmvJob* job, const char* label, uint32_t* lane) {
  if (job == nullptr || lane == nullptr) return TMV_JOBS_INVALID_ARGUMENT;
  return Guarded([job, label, lane] {
    const std::lock_guard<std::mutex> lock(job->mutex);
    job->lanes.push_back(job->job.AddLane(TextOrEmpty(label)));
    *lane = static_cast<uint32_t>(job->lanes.size() - 1);
    return TMV_JOBS_OK;
  });
}

int32_t TmvJobStopAtFailure(TmvJob* job, uint32_t lane) {
  return OnLane(job, lane, [](tmv::Job::Lane& found) { found.StopAtFailure(); });
}

int32_t TmvJobAddTask(TmvJob* job, uint32_t lane, const char* label, TmvJobTask task, void* user,
                      TmvJobRelease release) {
  if (task == nullptr) return TMV_JOBS_INVALID_ARGUMENT;
  return OnLane(job, lane, [=](tmv::Job::Lane& found) {
    const auto owned = std::make_shared<User>(user, release);
    try {
      found.Then(TextOrEmpty(label), [task, owned](tmv::Job::Context& context) {
        RunTask(task, owned->Get(), context);
      });
    } catch (...) {
      // The pointer stays with the host, who would otherwise see it released twice.
      owned->LeaveToHost();
      throw;
    }
  });
}

int32_t TmvJobOnEnd(TmvJob* job, TmvJobEnd end, void* user) {
  return OnJob(job, [end, user](tmv::Job& owned) {
    owned.OnEnd([end, user](tmv::JobState state) {
      if (end != nullptr) end(static_cast<int32_t>(state), user);
    });
  });
}

// Steering.

int32_t TmvJobStart(TmvJob* job) {
  return OnJob(job, [](tmv::Job& owned) { owned.Start(); });
}

int32_t TmvJobPause(TmvJob* job) {
  return OnJob(job, [](tmv::Job& owned) { owned.Pause(); });
}

int32_t TmvJobPauseAndWait(TmvJob* job) {
  if (job == nullptr) return TMV_JOBS_INVALID_ARGUMENT;
  return Guarded([job] { return job->job.PauseAndWait() ? TMV_JOBS_OK : TMV_JOBS_WRONG_STATE; });
}

int32_t TmvJobResume(TmvJob* job) {
  return OnJob(job, [](tmv::Job& owned) { owned.Resume(); });
}

int32_t TmvJobCancel(TmvJob* job) {
  return OnJob(job, [](tmv::Job& owned) { owned.Cancel(); });
}

int32_t TmvJobWait(TmvJob* job, int32_t milliseconds, int32_t* state) {
  if (job == nullptr) return TMV_JOBS_INVALID_ARGUMENT;
  return Guarded([=] {
    tmv::Job& owned = job->job;
    // A job that was never started would be waited for without end.
    bool ended = owned.GetState() == tmv::JobState::kNew;
    if (!ended && milliseconds < 0) {
      owned.Wait();
      ended = true;
    } else if (!ended) {
      ended = owned.WaitFor(std::chrono::milliseconds(milliseconds));
    }
    if (state != nullptr) *state = static_cast<int32_t>(owned.GetState());
    return ended ? TMV_JOBS_OK : TMV_JOBS_TIMEOUT;
  });
}

// Asking.

int32_t TmvJobGetState(TmvJob* job, int32_t* state) {
  if (state == nullptr) return TMV_JOBS_INVALID_ARGUMENT;
  return OnJob(job, [state](tmv::Job& owned) { *state = static_cast<int32_t>(owned.GetState()); });
}

int32_t TmvJobGetProgress(TmvJob* job, uint32_t lane, TmvJobProgress* progress) {
  if (progress == nullptr) return TMV_JOBS_INVALID_ARGUMENT;
  const auto store = [progress](const auto& source) {
    const tmv::JobProgress from = source.GetProgress();
    *progress = {from.total, from.done, from.failed, from.running, from.fraction};
  };
  return lane == TMV_JOB_ALL_LANES ? OnJob(job, store) : OnLane(job, lane, store);
}

int32_t TmvJobGetFailureCount(TmvJob* job, uint32_t* count) {
  if (count == nullptr) return TMV_JOBS_INVALID_ARGUMENT;
  return OnJob(
      job, [count](tmv::Job& owned) { *count = static_cast<uint32_t>(owned.Failures().size()); });
}

int32_t TmvJobGetFailure(TmvJob* job, uint32_t index, char* buffer, uint32_t size,
                         uint32_t* needed) {
  if (job == nullptr || (buffer == nullptr && size > 0)) return TMV_JOBS_INVALID_ARGUMENT;
  return Guarded([=] {
    // A copy each time: the list grows while the job runs, and indexes stay what they are.
    const std::vector<tmv::Job::Failure> failures = job->job.Failures();
    if (index >= failures.size()) return TMV_JOBS_INVALID_ARGUMENT;
    const std::string text = TextOf(failures[index]);
    CopyText(text, buffer, size);
    if (needed != nullptr) *needed = static_cast<uint32_t>(text.size() + 1);
    return TMV_JOBS_OK;
  });
}

// In a task.

int32_t TmvJobKeepGoing(TmvJobContext* context) {
  int32_t goesOn = 0;
  if (context == nullptr) return goesOn;
  Guarded([&] {
    goesOn = context->context.KeepGoing() ? 1 : 0;
    return TMV_JOBS_OK;
  });
  return goesOn;
}

int32_t TmvJobIsCancelled(TmvJobContext* context) {
  // Cancelled, too, if the answer can't be had: the task ends instead of running on blindly.
  int32_t cancelled = 1;
  if (context == nullptr) return cancelled;
  Guarded([&] {
    cancelled = context->context.IsCancelled() ? 1 : 0;
    return TMV_JOBS_OK;
  });
  return cancelled;
}

int32_t TmvJobSetProgress(TmvJobContext* context, double fraction) {
  if (context == nullptr) return TMV_JOBS_INVALID_ARGUMENT;
  return Guarded([&] {
    context->context.SetProgress(fraction);
    return TMV_JOBS_OK;
  });
}

int32_t TmvJobSetError(TmvJobContext* context, const char* reason) {
  if (context == nullptr) return TMV_JOBS_INVALID_ARGUMENT;
  return Guarded([&] {
    context->error = TextOrEmpty(reason);
    return TMV_JOBS_OK;
  });
}
