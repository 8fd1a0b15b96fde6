#ifndef TESTS_SOAK_WATCHDOG_H_
#define TESTS_SOAK_WATCHDOG_H_

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

namespace soak {

// Ends the process with a message: a promise of the library was broken.
[[noreturn]] void Fail(const std::string& message);

// Fails when a thread stays in one operation for too long, and tells what each of them was doing.
class Watchdog {
 public:
  // What one thread does at this moment.
  class Activity {
   public:
    explicit Activity(std::string thread) : thread_(std::move(thread)) {}
    void Begin(const char* what, const std::string& subject);
    void End() { Begin("between two operations", ""); }
    // The thread has nothing more to do, or waits for others that are watched.
    void Rest(const char* what);

   private:
    friend class Watchdog;
    std::mutex mutex_;
    std::string thread_;
    const char* what_ = "not started";
    std::string subject_;
    bool resting_ = true;
    std::chrono::steady_clock::time_point since_ = std::chrono::steady_clock::now();
  };

  explicit Watchdog(std::chrono::seconds limit);
  ~Watchdog();

  // The activity lives as long as the watchdog.
  Activity& Watch(const std::string& thread);

 private:
  void Run();
  bool IsOverdue();
  void Report();

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
  Doing(Watchdog::Activity& activity, const char* what, const std::string& subject)
      : activity_(activity) {
    activity_.Begin(what, subject);
  }
  ~Doing() { activity_.End(); }
  Doing(const Doing&) = delete;
  Doing& operator=(const Doing&) = delete;

 private:
  Watchdog::Activity& activity_;
};

}  // namespace soak

#endif  // TESTS_SOAK_WATCHDOG_H_
