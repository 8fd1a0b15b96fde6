// Unusual ends of the pool, each in a process of its own:
//   start_stop leave   leaves the process with idle and running workers, without Stop
//   start_stop refuse  starts more workers than the system has room for, and stops what it has made
// Prints nothing; the exit status is 0 if it went well.
#include <temvar/temvar.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <system_error>
#include <thread>

namespace {

std::atomic<int> ran{0};

void Sleep(RkTask*, RkTaskData*) {
  ++ran;
  std::this_thread::sleep_for(std::chrono::hours(1));
}

int LeaveAtWork() {
  TmvTaskPool()->Start(3);
  RkTaskFunc* const func = CreateRkTaskFunc();
  func->SetCallback(Sleep, nullptr);
  for (int i = 0; i < 2; ++i) TmvTaskPool()->AddFunc(func);
  DestroyRkTaskFunc(func);
  while (ran < 2) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  // Wine 8 ends some processes by a segmentation fault that have just started a thread (2 of 300
  // runs of a program without this library): the third worker and the dispatcher get time to wait.
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  return 0;
}

int StopWhatStartMade() {
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
  if (std::strcmp(argv[1], "leave") == 0) return LeaveAtWork();
  if (std::strcmp(argv[1], "refuse") == 0) return StopWhatStartMade();
  return 2;
}
