#include "job.h"

#include <temvar/job.h>

#include <atomic>

namespace crash_host {

namespace {

constexpr int kLanes = 2;
constexpr int kSteps = 3;  // In each lane.

}  // namespace

void RunJob(void (*crash)()) {
  std::atomic<int> started{0};
  tmv::RunningPool pool(2);
  tmv::Job job("crash_host");
  for (int number = 0; number < kLanes; ++number) {
    tmv::JobLane lane = job.AddLane();
    for (int step = 0; step < kSteps; ++step) {
      lane.Then([&started, crash] {
        if (++started == 3) crash();
      });
    }
  }
  job.Start();
  job.Wait();
}

}  // namespace crash_host
