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

// What one thread does at this moment.
class Activity {
 public:
  using Clock = std::chrono::steady_clock;

  explicit Activity(std::string thread) : thread_(std::move(thread)) {}

  // A thread that rests has nothing more to do, or waits for others that are watched.
  void Begin(const std::string& what, bool resting = false) {
    const std::lock_guard<std::mutex> lock(mutex_);
    what_ = what;
    resting_ = resting;
    since_ = Clock::now();
  }

  std::chrono::duration<double> Age() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return resting_ ? Clock::duration(0) : Clock::now() - since_;
  }

  std::string Text() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return thread_ + ": " + what_;
  }

 private:
  std::mutex mutex_;
  const std::string thread_;
  std::string what_ = "not started";
  bool resting_ = true;
  Clock::time_point since_ = Clock::now();
};

// Fails when a thread stays in one operation for too long, and tells what each of them was doing.
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
    return activities_.emplace_back(thread);
  }

 private:
  void Run() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!ended_.wait_for(lock, std::chrono::seconds(1), [this] { return end_; })) {
      for (Activity& late : activities_) {
        if (late.Age() <= limit_) continue;
        for (Activity& each : activities_) {
          std::fprintf(stderr, "%s for %.1f s\n", each.Text().c_str(), each.Age().count());
        }
        std::fprintf(stderr, "queued tasks: %u\n", TmvTaskPool()->GetQueuedCount());
        Fail("an operation didn't end within " + std::to_string(limit_.count()) + " s");
      }
    }
  }

  const std::chrono::seconds limit_;
  std::mutex mutex_;
  std::condition_variable ended_;
  bool end_ = false;
  std::deque<Activity> activities_;
  std::thread thread_;
};

// Marks an operation for the length of a scope.
class Doing {
 public:
  Doing(Activity& activity, const std::string& what, const std::string& subject)
      : activity_(activity) {
    activity_.Begin(what + " " + subject);
  }

  ~Doing() { activity_.Begin("between two operations"); }
  Doing(const Doing&) = delete;
  Doing& operator=(const Doing&) = delete;

 private:
  Activity& activity_;
};

}  // namespace soak

#endif  // TESTS_SOAK_WATCHDOG_H_
