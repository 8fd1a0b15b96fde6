#include "watchdog.h"

#include <temvar/temvar.h>

#include <cstdio>
#include <cstdlib>

namespace soak {

void Fail(const std::string& message) {
  std::fprintf(stderr, "soak failed: %s\n", message.c_str());
  std::fflush(stderr);
  std::abort();
}

void Watchdog::Activity::Begin(const char* what, const std::string& subject) {
  const std::lock_guard<std::mutex> lock(mutex_);
  what_ = what;
  subject_ = subject;
  resting_ = false;
  since_ = std::chrono::steady_clock::now();
}

void Watchdog::Activity::Rest(const char* what) {
  Begin(what, "");
  const std::lock_guard<std::mutex> lock(mutex_);
  resting_ = true;
}

Watchdog::Watchdog(std::chrono::seconds limit) : limit_(limit), thread_([this] { Run(); }) {}

Watchdog::~Watchdog() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    end_ = true;
    ended_.notify_all();
  }
  thread_.join();
}

Watchdog::Activity& Watchdog::Watch(const std::string& thread) {
  const std::lock_guard<std::mutex> lock(mutex_);
  return activities_.emplace_back(thread);
}

void Watchdog::Run() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!ended_.wait_for(lock, std::chrono::seconds(1), [this] { return end_; })) {
    if (!IsOverdue()) continue;
    Report();
    Fail("an operation didn't end within " + std::to_string(limit_.count()) + " s");
  }
}

bool Watchdog::IsOverdue() {
  const auto now = std::chrono::steady_clock::now();
  for (Activity& activity : activities_) {
    const std::lock_guard<std::mutex> lock(activity.mutex_);
    if (!activity.resting_ && now - activity.since_ > limit_) return true;
  }
  return false;
}

void Watchdog::Report() {
  const auto now = std::chrono::steady_clock::now();
  for (Activity& activity : activities_) {
    const std::lock_guard<std::mutex> lock(activity.mutex_);
    const std::chrono::duration<double> age = now - activity.since_;
    std::fprintf(stderr, "%s: %s %s for %.1f s\n", activity.thread_.c_str(), activity.what_,
                 activity.subject_.c_str(), age.count());
  }
  std::fprintf(stderr, "queued tasks: %u\n", TmvTaskPool()->GetQueuedCount());
}

}  // namespace soak
