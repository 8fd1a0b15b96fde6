#ifndef BENCH_LATCH_H_
#define BENCH_LATCH_H_

#include <atomic>

namespace bench {

// Counts down from any thread; one thread waits. Reused from round to round.
class Latch {
 public:
  void Reset(int count) { left_.store(count); }
  void CountDown() {
    if (left_.fetch_sub(1) == 1) left_.notify_one();
  }
  void Wait() {
    for (int left = left_.load(); left > 0; left = left_.load()) left_.wait(left);
  }

 private:
  std::atomic<int> left_{0};
};

}  // namespace bench

#endif  // BENCH_LATCH_H_
