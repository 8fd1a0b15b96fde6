// A host that links the installed library: it runs a job and looks at the result.
#include <temvar/temvar.h>

#include <atomic>
#include <cstdio>
#include <future>

namespace {

std::atomic<int> tasksRun{0};
std::promise<int> eventState;

void CountAndReport(RkTask* task, RkTaskData*) {
  ++tasksRun;
  task->ReportState(task, kTaskStateSucceeded);
}

void TellEnd(RkTask* event, RkTaskData*) {
  eventState.set_value(event->GetState());
  event->ReportState(event, kTaskStateSucceeded);
}

void SetCallback(RkTask* task, RkTaskCallback callback) {
  RkTaskFunc* func = CreateRkTaskFunc();
  func->SetCallback(callback, nullptr);
  task->SetFunc(func);
  DestroyRkTaskFunc(func);
}

}  // namespace

int main() {
  RkTaskEvent* event = CreateRkTaskEvent();
  event->SetName("consumer");
  SetCallback(event, TellEnd);
  RkTaskPackage* package = CreateRkTaskPackage();
  for (int number = 0; number < 3; ++number) {
    RkTask* task = CreateRkTask();
    task->SetNameNumber(number);
    SetCallback(task, CountAndReport);
    package->AddTask(task);
    DestroyRkTask(task);
  }
  event->AddPackage(package);
  DestroyRkTask(package);

  TmvTaskPool()->Start(2);
  TmvTaskSchedular()->AddEvent(event);
  DestroyRkTask(event);
  const int state = eventState.get_future().get();
  TmvTaskPool()->Stop();

  std::printf("tasks %d, state %d\n", tasksRun.load(), state);
  return tasksRun == 3 && state == kTaskStateSucceeded ? 0 : 1;
}
