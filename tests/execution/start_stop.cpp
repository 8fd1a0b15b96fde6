// One life of the pool in one process, to be run many times:
//   start_stop stop    starts the pool, does a little work and stops it
//   start_stop leave   leaves the process with idle and running workers, without Stop
//   start_stop refuse  starts more workers than the system has room for, and stops what it has made
// Prints nothing; the exit status is 0 if the work was done.
#include <temvar/temvar.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <system_error>
#include <thread>

namespace {

std::atomic<int> ran{0};

void Work(RkTask* task, RkTaskData*) {
  ++ran;
  task->ReportState(task, kTaskStateSucceeded);
}

void Sleep(RkTask*, RkTaskData*) {
  ++ran;
  std::this_thread::sleep_for(std::chrono::hours(1));
}

void Queue(RkTaskCallback callback, int count) {
  RkTaskFunc* const func = CreateRkTaskFunc();
  func->SetCallback(callback, nullptr);
  for (int i = 0; i < count; ++i) TmvTaskPool()->AddFunc(func);
  DestroyRkTaskFunc(func);
}

bool WaitForRuns(int count) {
  for (int i = 0; i < 60'000 && ran < count; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return ran >= count;
}

// Some of the work is still queued when Stop comes, or it runs: both must do.
int StopAtWork() {
  Queue(Work, 3);
  TmvTaskPool()->Start(2);
  Queue(Work, 20);
  const bool worked = WaitForRuns(5);
  TmvTaskPool()->Stop();
  return worked ? 0 : 1;
}

int LeaveAtWork() {
  TmvTaskPool()->Start(3);
  Queue(Sleep, 2);
  return WaitForRuns(2) ? 0 : 1;
}

int StopWhatStartMade() {
  Queue(Work, 3);
  try {
    TmvTaskPool()->Start(20'000);
    return 1;
  } catch (const std::system_error&) {
  }
  TmvTaskPool()->Stop();
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  if (std::strcmp(argv[1], "stop") == 0) return StopAtWork();
  if (std::strcmp(argv[1], "leave") == 0) return LeaveAtWork();
  if (std::strcmp(argv[1], "refuse") == 0) return StopWhatStartMade();
  return 2;
}
