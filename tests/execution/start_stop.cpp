// Unusual ends of the pool, each in a process of its own:
//   start_stop PHASE   leaves the process, without more ado, in the given phase of the library's
//   life start_stop refuse  starts more workers than the system has room for, and stops what it has
//   made
// Prints nothing; the exit status is 0 if it went well.
#include <temvar/handles.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <system_error>
#include <thread>
#include <tuple>

namespace {

std::atomic<bool> runs{false};

void SleepUntil(const std::atomic<bool>& flag) {
  while (!flag) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

// Starts a job of one task and comes back when it runs.
void StartJob(void (*task)(RkTask*)) {
  const tmv::Event event = tmv::MakeEvent("job");
  const tmv::Package package = tmv::MakePackage();
  package->AddTask(tmv::MakeTask("task", task));
  event->AddPackage(package);
  TmvTaskSchedular()->AddEvent(event);
  SleepUntil(runs);
}

void Sleep(RkTask*) {
  runs = true;
  std::this_thread::sleep_for(std::chrono::hours(1));
}

void PauseWhenAsked(RkTask* task) {
  runs = true;
  for (;;) TmvTaskSchedular()->CheckPause(task);
}

// Waits for the task of the job, which sleeps, on a thread that nobody joins.
void WaitOnAThread(void (*wait)()) {
  StartJob(Sleep);
  std::thread(wait).detach();
}

const std::tuple<const char*, uint32_t, void (*)()> kPhases[] = {
    {"loaded", 0, [] {}},
    {"idle", 3, [] {}},
    {"working", 3, [] { StartJob(Sleep); }},
    {"parked", 3,
     [] {
       StartJob(PauseWhenAsked);
       TmvTaskSchedular()->PauseEvent("job");
     }},
    {"pausing", 3, [] { WaitOnAThread([] { TmvTaskSchedular()->PauseEvent("job"); }); }},
    {"cancelling", 3,
     [] { WaitOnAThread([] { TmvTaskSchedular()->CancelEventEx("job", false); }); }},
    {"stopping", 3, [] { WaitOnAThread([] { TmvTaskPool()->Stop(); }); }},
    {"stopped", 3, [] { TmvTaskPool()->Stop(); }},
};

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
  if (std::strcmp(argv[1], "refuse") == 0) return StopWhatStartMade();
  for (const auto& [name, workers, enter] : kPhases) {
    if (std::strcmp(argv[1], name) != 0) continue;
    if (workers > 0) TmvTaskPool()->Start(workers);
    enter();
    // Wine 8 ends some processes by a segmentation fault that have just started a thread (2 of 300
    // runs of a program without this library), so those that are new get time to wait.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    return 0;
  }
  return 2;
}
