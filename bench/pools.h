#ifndef BENCH_POOLS_H_
#define BENCH_POOLS_H_

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// The pools that the library's own is measured against. Each takes work items that are made
// beforehand and belong to the caller.
namespace bench {

struct Work {
  void (*run)(void* data) = nullptr;
  void* data = nullptr;
};

class Pool {
 public:
  virtual ~Pool() = default;
  virtual void Add(const Work* work) = 0;
};

// What a host would write without the library: one mutex, one queue, one condition variable.
class PlainPool : public Pool {
 public:
  explicit PlainPool(size_t workers) {
    for (size_t i = 0; i < workers; ++i) threads_.emplace_back([this] { Run(); });
  }
  ~PlainPool() override {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      stop_ = true;
    }
    wake_.notify_all();
    for (std::thread& thread : threads_) thread.join();
  }
  PlainPool(const PlainPool&) = delete;
  PlainPool& operator=(const PlainPool&) = delete;

  void Add(const Work* work) override {
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

struct NamedPool {
  std::string name;
  std::unique_ptr<Pool> pool;
};

// The plain pool, and those of other libraries that were there when the program was built: "glib"
// is GThreadPool, "tbb" a task arena of oneTBB.
std::vector<NamedPool> MakePools(size_t workers);

}  // namespace bench

#endif  // BENCH_POOLS_H_
