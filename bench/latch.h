#ifndef BENCH_LATCH_H_
#define BENCH_LATCH_H_

#include <atomic>
#include <cstddef>

#include <temvar/handles.h>

namespace bench {

// Counts down from any thread. Reused from round to round.
class Latch {
 public:
  void Reset(int count) { left_.store(count); }
  void CountDown() {
    if (left_.fetch_sub(1) == 1) left_.notify_all();
  }
  void Wait() {
    for (int left = left_.load(); left > 0; left = left_.load()) left_.wait(left);
  }

 private:
  std::atomic<int> left_{0};
};

// Holds workers of the pool until it opens.
class Gate {
 public:
  void HoldWorkers(size_t count) {
    arrivals_.Reset(static_cast<int>(count));
    ends_.Reset(static_cast<int>(count));
    door_.Reset(1);
    for (size_t i = 0; i < count; ++i) {
      TmvTaskPool()->AddFunc(tmv::MakeFunc([this] {
        arrivals_.CountDown();
        door_.Wait();
        ends_.CountDown();
      }));
    }
    arrivals_.Wait();
  }
  void Open() { door_.CountDown(); }
  void AwaitEnd() { ends_.Wait(); }

 private:
  Latch arrivals_;
  Latch ends_;
  Latch door_;
};

}  // namespace bench

#endif  // BENCH_LATCH_H_
