// How often a waiting pause or cancel is woken: by what concerns it, not by each completion.
#include "pausable.h"
#include "scheduler/task_schedular_impl.h"

namespace {

using namespace test;

// Waits beside the operation that is watched, and counts its wake-ups: all waits share a condition.
class Watch {
 public:
  Watch() {
    Eventually([this] { return looks_ > 0; });
  }
  ~Watch() {
    over_ = true;
    temvar::drainCondition.NotifyAll();
  }
  int WakeUps() const { return looks_ - 1; }

 private:
  std::atomic<int> looks_{0};
  std::atomic<bool> over_{false};
  const Call wait_{[this] {
    temvar::drainCondition.Await([this] {
      ++looks_;
      return over_.load();
    });
  }};
};

// An event of 500 tasks and 500 functions, from begin to end.
void RunOthers() {
  constexpr int kEach = 500;
  std::atomic<int> left{kEach + 1};
  std::vector<Step> steps;
  for (int i = 0; i < kEach; ++i) steps.push_back({"other task " + std::to_string(i), Succeed});
  const Job others("others", steps, [&left](RkTask*) { --left; });
  others.Add();
  for (int i = 0; i < kEach; ++i) Pool().AddFunc(MakeFunc([&left](RkTask*) { --left; }).get());
  Eventually([&left] { return left == 0; });
}

TEST(WakeUps, AWaitIsWokenByWhatConcernsIt) {
  RunningPool pool(3);
  const std::pair<const char*, void (*)()> waits[] = {
      {"pause", [] { Schedular().PauseEvent("event"); }},
      {"cancel", [] { Schedular().CancelEventEx("event", false); }},
  };
  for (const auto& [what, act] : waits) {
    SCOPED_TRACE(what);
    Pausable event("event");
    event.silent = true;
    event.Start();
    const Call wait(act);
    Eventually([&event] { return event.State() != kTaskStateActive; });
    BeQuiet();  // Until the wait has begun.
    const Watch watch;
    RunOthers();
    const int wakeUps = watch.WakeUps();
    EXPECT_LE(wakeUps, 1);  // The end of the other event changes the registry.
    event.gate.Open();
    Eventually([&] { return watch.WakeUps() > wakeUps; });
    wait.WaitForReturn();
    event.Resume();
    Eventually([] { return IdleWorkers() == 3; });
  }
}

}  // namespace
