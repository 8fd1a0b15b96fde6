#ifndef TESTS_SOAK_WATCHDOG_H_
#define TESTS_SOAK_WATCHDOG_H_

#include <temvar/task_pool.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

namespace soak {

// Ends the process with a message: a promise of the library was broken.
[[noreturn]] inline void Fail(const std::string& message) {
  std::fprintf(stderr, "soak failed: %s\n", message.c_str());
  std::fflush(stderr);
  std::abort();
}

// What one thread does at this moment. A mutex for each, so that the drivers don't meet here.
struct Activity {
  using Clock = std::chrono::steady_clock;

  // A thread that rests has nothing more to do, or waits for others that are watched.
  void Begin(const std::string& operation, bool rests = false) {
    const std::lock_guard<std::mutex> lock(mutex);
    what = operation;
    resting = rests;
    since = Clock::now();
  }

  std::mutex mutex;
  std::string thread;
  std::string what = "not started";
  bool resting = true;
  Clock::time_point since = Clock::now();
};

// Marks an operation for the length of a scope.
struct Doing {
  Doing(Activity& owner, const std::string& what, const std::string& subject) : activity(owner) {
    activity.Begin(what + " " + subject);
  }
  ~Doing() { activity.Begin("between two operations"); }
  Activity& activity;
};

// Fails when a thread stays in one operation for too long, and prints what each of them was doing.
class Watchdog {
 public:
  explicit Watchdog(std::chrono::seconds limit) : limit_(limit), thread_([this] { Run(); }) {}
  ~Watchdog() {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      end_ = true;
      ended_.notify_all();
    }
    thread_.join();
  }

  // The activity lives as long as the watchdog.
  Activity& Watch(const std::string& thread) {
    const std::lock_guard<std::mutex> lock(mutex_);
    activities_.emplace_back().thread = thread;
    return activities_.back();
  }

 private:
  void Run() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!ended_.wait_for(lock, std::chrono::seconds(1), [this] { return end_; })) {
      std::string report;
      bool late = false;
      for (Activity& each : activities_) {
        const std::lock_guard<std::mutex> hold(each.mutex);
        const std::chrono::duration<double> age = Activity::Clock::now() - each.since;
        late = late || (!each.resting && age > limit_);
        report +=
            "\n" + each.thread + ": " + each.what + " for " + std::to_string(age.count()) + " s";
      }
      if (late) Fail("an operation doesn't end" + report);
    }
  }

  const std::chrono::seconds limit_;
  std::mutex mutex_;
  std::condition_variable ended_;
  bool end_ = false;
  std::deque<Activity> activities_;
  std::thread thread_;
};

}  // namespace soak

#endif  // TESTS_SOAK_WATCHDOG_H_
