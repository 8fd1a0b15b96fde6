#ifndef BENCH_PLAIN_POOL_H_
#define BENCH_PLAIN_POOL_H_

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace bench {

// What a host would write without the library: one mutex, one queue, one condition variable. The
// library's pool is measured against it. Work items are made beforehand and belong to the caller.
class PlainPool {
 public:
  struct Work {
    void (*run)(void* data) = nullptr;
    void* data = nullptr;
  };

  explicit PlainPool(size_t workers) {
    for (size_t i = 0; i < workers; ++i) threads_.emplace_back([this] { Run(); });
  }
  ~PlainPool() {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      stop_ = true;
    }
    wake_.notify_all();
    for (std::thread& thread : threads_) thread.join();
  }
  PlainPool(const PlainPool&) = delete;
  PlainPool& operator=(const PlainPool&) = delete;

  void Add(const Work* work) {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      queue_.push_back(work);
    }
    wake_.notify_one();
  }

 private:
  void Run() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
      wake_.wait(lock, [this] { return stop_ || !queue_.empty(); });
      if (stop_) return;
      const Work* const work = queue_.front();
      queue_.pop_front();
      lock.unlock();
      work->run(work->data);
      lock.lock();
    }
  }

  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<const Work*> queue_;
  bool stop_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace bench

#endif  // BENCH_PLAIN_POOL_H_
