// A door that threads wait at until a test opens it. Every wait gives up after a minute, so that a
// fault shows as a failed test and not as one that hangs.
#ifndef TEMVAR_TESTS_SUPPORT_GATE_H_
#define TEMVAR_TESTS_SUPPORT_GATE_H_

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace temvar_tests {

class Gate {
 public:
  void Open() {
    std::lock_guard<std::mutex> lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }

  // True if the gate is open in time.
  bool Wait() {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, std::chrono::minutes(1), [this] { return open_; });
  }

  bool IsOpen() {
    std::lock_guard<std::mutex> lock(mutex_);
    return open_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool open_ = false;
};

// Looks until the condition holds; false after a minute.
inline bool Eventually(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

// Long enough for a thread that is not held up to get somewhere; used only to give a fault time to
// show.
inline void LetOthersRun() { std::this_thread::sleep_for(std::chrono::milliseconds(50)); }

}  // namespace temvar_tests

#endif  // TEMVAR_TESTS_SUPPORT_GATE_H_
