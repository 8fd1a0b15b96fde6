#include "job.h"

#include <temvar/handles.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "support/job_control.h"

namespace crash_host {
namespace {

constexpr int kPackages = 2;
constexpr int kTasks = 3;  // In each package.

}  // namespace

void RunJob(void (*crash)()) {
  std::atomic<int> started{0};
  tmv::Event event = tmv::MakeEvent("crash_host");
  for (int first = 0; first < kPackages * kTasks; first += kTasks) {
    tmv::Package package = tmv::MakePackage();
    for (int number = first; number < first + kTasks; ++number) {
      package->AddTask(tmv::MakeTask(("task " + std::to_string(number)).c_str(), [&, crash] {
        if (++started == 3) crash();
      }));
    }
    event->AddPackage(package);
  }
  support::JobControl job(event);
  tmv::RunningPool pool(2);
  job.Start();
  while (!job.HasEnded()) std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

}  // namespace crash_host
