#include "job.h"

#include <temvar/temvar.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "support/owners.h"
#include "support/report.h"

namespace crash_host {
namespace {

constexpr int kPackages = 2;
constexpr int kTasks = 3;  // In each package.

void (*fault)() = nullptr;
std::atomic<int> started{0};
std::atomic<bool> ended{false};

void DoTask(RkTask* task, RkTaskData*) {
  if (++started == 3) fault();
  support::ReportResult(task, kTaskStateSucceeded);
}

void EndJob(RkTask* event, RkTaskData*) {
  ended = true;
  event->ReportState(event, kTaskStateSucceeded);
}

support::FuncOwner MakeFunc(RkTaskCallback callback) {
  support::FuncOwner func(CreateRkTaskFunc());
  func->Bind(nullptr, callback, nullptr);
  return func;
}

}  // namespace

void RunJob(void (*crash)()) {
  fault = crash;
  support::PoolLife pool(2);
  support::EventOwner event(CreateRkTaskEvent());
  event->SetName("crash_host");
  event->SetFunc(MakeFunc(EndJob).get());
  for (int i = 0; i < kPackages * kTasks; i += kTasks) {
    support::PackageOwner package(CreateRkTaskPackage());
    package->SetName(("package " + std::to_string(i)).c_str());
    for (int number = i; number < i + kTasks; ++number) {
      support::TaskOwner task(CreateRkTask());
      task->SetName(("task " + std::to_string(number)).c_str());
      task->SetFunc(MakeFunc(DoTask).get());
      package->AddTask(task.get());
    }
    event->AddPackage(package.get());
  }
  TmvTaskSchedular()->AddEvent(event.get());
  while (!ended) std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

}  // namespace crash_host
