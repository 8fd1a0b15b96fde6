// Pause and resume of running events, and what ends a pause that waits.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <temvar/temvar.h>

#include "support/host_job.h"

namespace {

using test::BeQuiet;
using test::Call;
using test::EventPtr;
using test::Eventually;
using test::Gate;
using test::MakeEvent;
using test::MakePackage;
using test::MakeTask;
using test::PackagePtr;
using test::RunningPool;
using test::TaskPtr;

RkTaskSchedular& Schedular() { return *TmvTaskSchedular(); }

// One event with one task that waits at its gate, goes to a pause point, and then reports until it
// is heard. `passed` counts its pause points.
class Pausable {
 public:
  explicit Pausable(const std::string& name)
      : name_(name),
        task_(MakeTask(name + " task",
                       [this](RkTask* task) {
                         gate.Wait();
                         task->ReportState(task, kTaskStateCreated);
                         ++passed;
                         while (task->GetState() == kTaskStateActive && !abandoned) {
                           task->ReportState(task, kTaskStateSucceeded);
                         }
                       })),
        package_(MakePackage({task_.get()})),
        event_(MakeEvent(name, {package_.get()}, [this](RkTask*) { ended = true; })) {}

  void Start() {
    Schedular().AddEvent(event_.get());
    gate.WaitForArrivals(1);
  }
  void Pause() const { Schedular().PauseEvent(name_.c_str()); }
  void Resume() const { Schedular().ResumeEvent(name_.c_str()); }
  int32_t State() const { return task_->GetState(); }
  RkTask* task() const { return task_.get(); }

  Gate gate;
  std::atomic<int> passed{0};
  std::atomic<bool> ended{false};
  std::atomic<bool> abandoned{false};

 private:
  std::string name_;
  TaskPtr task_;
  PackagePtr package_;
  EventPtr event_;
};

TEST(Pause, ReturnsWhenTheRunningTasksHaveReachedAPausePoint) {
  Pausable first("first");
  RunningPool pool(2);
  first.Start();
  {
    Call pause([&first] { first.Pause(); });
    BeQuiet();
    EXPECT_FALSE(pause.IsDone());
    EXPECT_EQ(first.State(), kTaskStatePaused);
    first.gate.Open();
    pause.WaitForReturn();
  }
  BeQuiet();
  EXPECT_EQ(first.passed, 0);
  EXPECT_FALSE(first.ended);
  first.Resume();
  Eventually([&first] { return first.ended.load(); });
  EXPECT_EQ(first.passed, 1);
}

TEST(Pause, OfAnUnknownOrIdleEventReturnsAtOnce) {
  Schedular().PauseEvent("nothing");
  Schedular().ResumeEvent("nothing");
  Schedular().CancelEvent("nothing");
  Schedular().CancelEventEx("nothing", false);
  // Queued, with no worker to run it: swept, and nothing to wait for.
  const TaskPtr task = MakeTask("task", [](RkTask*) {});
  const TaskPtr behind = MakeTask("behind");
  const PackagePtr package = MakePackage({task.get(), behind.get()});
  const EventPtr event = MakeEvent("event", {package.get()});
  Schedular().AddEvent(event.get());
  Schedular().PauseEvent("event");
  EXPECT_EQ(task->GetState(), kTaskStatePaused);
  EXPECT_EQ(behind->GetState(), kTaskStateCreated);
  Schedular().ResumeEvent("event");
  EXPECT_EQ(task->GetState(), kTaskStateActive);
  Schedular().RemoveEvent("event");
}

TEST(Pause, AQueuedTaskParksWhenItsTurnComes) {
  RunningPool pool(1);
  Gate gate;
  const TaskPtr blocker = MakeTask("blocker", [&gate](RkTask*) { gate.Wait(); });
  TmvTaskPool()->AddTask(blocker.get());
  gate.WaitForArrivals(1);
  std::atomic<int> stage{0};
  const TaskPtr task = MakeTask("task", [&stage](RkTask* self) {
    stage = 1;
    self->ReportState(self, kTaskStateCreated);
    stage = 2;
  });
  const PackagePtr package = MakePackage({task.get()});
  const EventPtr event = MakeEvent("event", {package.get()});
  Schedular().AddEvent(event.get());
  Schedular().PauseEvent("event");
  gate.Open();
  Eventually([&stage] { return stage == 1; });
  BeQuiet();
  EXPECT_EQ(stage, 1);
  // Parked already: it runs, but there is nothing to wait for.
  Call second([] { Schedular().PauseEvent("event"); });
  second.WaitForReturn();
  Schedular().ResumeEvent("event");
  Eventually([&stage] { return stage == 2; });
  Schedular().RemoveEvent("event");
}

TEST(Pause, AReportDuringAPauseIsLost) {
  RunningPool pool(2);
  Gate gate;
  std::atomic<int> reported{0};
  std::atomic<bool> nextRan{false};
  const TaskPtr task = MakeTask("task", [&](RkTask* self) {
    gate.Wait();
    self->ReportState(self, kTaskStateSucceeded);
    reported = 1;
  });
  const TaskPtr next = MakeTask("next", [&nextRan](RkTask*) { nextRan = true; });
  const PackagePtr package = MakePackage({task.get(), next.get()});
  const EventPtr event = MakeEvent("event", {package.get()});
  Schedular().AddEvent(event.get());
  gate.WaitForArrivals(1);
  {
    Call pause([] { Schedular().PauseEvent("event"); });
    Eventually([&task] { return task->GetState() == kTaskStatePaused; });
    gate.Open();
    pause.WaitForReturn();
  }
  Schedular().ResumeEvent("event");
  Eventually([&reported] { return reported == 1; });
  BeQuiet();
  EXPECT_EQ(task->GetState(), kTaskStateActive);
  EXPECT_FALSE(nextRan);
  task->ReportState(task.get(), kTaskStateSucceeded);
  Eventually([&nextRan] { return nextRan.load(); });
  Schedular().RemoveEvent("event");
}

TEST(Pause, AResumeOfAnotherEventLeavesATaskParked) {
  Pausable first("first");
  Pausable second("second");
  RunningPool pool(2);
  first.Start();
  second.Start();
  {
    Call pauseFirst([&first] { first.Pause(); });
    Call pauseSecond([&second] { second.Pause(); });
    Eventually(
        [&] { return first.State() == kTaskStatePaused && second.State() == kTaskStatePaused; });
    // One drains after the other; neither wait may sleep through the arrival of its own task.
    second.gate.Open();
    pauseSecond.WaitForReturn();
    EXPECT_FALSE(pauseFirst.IsDone());
    first.gate.Open();
    pauseFirst.WaitForReturn();
  }
  second.Resume();
  Eventually([&second] { return second.ended.load(); });
  BeQuiet();
  EXPECT_EQ(first.passed, 0);
  EXPECT_EQ(first.State(), kTaskStatePaused);
  first.Resume();
  Eventually([&first] { return first.ended.load(); });
}

// What ends a PauseEvent whose task doesn't come to a pause point.
struct EndOfWait {
  const char* name;
  void (*act)(Pausable& event);
};

class PauseWait : public testing::TestWithParam<EndOfWait> {};

void PrintTo(const EndOfWait& row, std::ostream* out) { *out << row.name; }

TEST_P(PauseWait, EndsWithoutAPausePoint) {
  Pausable event("event");
  RunningPool pool(2);
  event.Start();
  {
    Call pause([&event] { event.Pause(); });
    Eventually([&event] { return event.State() == kTaskStatePaused; });
    BeQuiet();
    EXPECT_FALSE(pause.IsDone());
    GetParam().act(event);
    pause.WaitForReturn();
  }
  event.abandoned = true;
  event.Resume();
  event.task()->SetState(kTaskStateActive);  // Where nothing is registered, nothing resumes.
  event.gate.Open();
  Eventually([] { return test::IdleWorkers() == 2; });
  Schedular().RemoveEvent("event");
}

INSTANTIATE_TEST_SUITE_P(
    By, PauseWait,
    testing::Values(EndOfWait{"resume", [](Pausable& event) { event.Resume(); }},
                    EndOfWait{"removal", [](Pausable&) { Schedular().RemoveEvent("event"); }},
                    EndOfWait{"cancel", [](Pausable&) { Schedular().CancelEvent("event"); }},
                    EndOfWait{"kept_cancel",
                              [](Pausable&) { Schedular().CancelEventEx("event", false); }}),
    [](const testing::TestParamInfo<EndOfWait>& row) { return std::string(row.param.name); });

TEST(Pause, EndsWhenTheRunningTaskEndsWithoutAReport) {
  RunningPool pool(2);
  Gate gate;
  const TaskPtr silent = MakeTask("silent", [&gate](RkTask*) { gate.Wait(); });
  const PackagePtr package = MakePackage({silent.get()});
  const EventPtr event = MakeEvent("event", {package.get()});
  Schedular().AddEvent(event.get());
  gate.WaitForArrivals(1);
  {
    Call pause([] { Schedular().PauseEvent("event"); });
    BeQuiet();
    EXPECT_FALSE(pause.IsDone());
    gate.Open();
    pause.WaitForReturn();
  }
  Schedular().RemoveEvent("event");
}

TEST(CheckPause, TellsWhetherTheTaskHasLeftTheStateCreated) {
  const TaskPtr task = MakeTask("task");
  const struct {
    int32_t state;
    bool result;
  } kRows[] = {{kTaskStateCreated, false},  {kTaskStateSucceeded, true}, {kTaskStateActive, true},
               {kTaskStateCancelled, true}, {kTaskStateFailed, true},    {3, true}};
  for (const auto& row : kRows) {
    task->SetState(row.state);
    EXPECT_EQ(Schedular().CheckPause(task.get()), row.result) << row.state;
    EXPECT_EQ(Schedular().PausePoint(task.get()), row.state);
  }
  // Without a registered event there is nothing to park on.
  task->SetState(kTaskStatePaused);
  EXPECT_TRUE(Schedular().CheckPause(task.get()));
  EXPECT_EQ(Schedular().PausePoint(task.get()), kTaskStatePaused);
}

TEST(CheckPause, BlocksWhileTheTaskIsPaused) {
  RunningPool pool(2);
  Gate gate;
  std::atomic<int> stage{0};
  const TaskPtr task = MakeTask("task", [&](RkTask* self) {
    gate.Wait();
    EXPECT_TRUE(Schedular().CheckPause(self));
    stage = 1;
  });
  const PackagePtr package = MakePackage({task.get()});
  const EventPtr event = MakeEvent("event", {package.get()});
  Schedular().AddEvent(event.get());
  gate.WaitForArrivals(1);
  {
    Call pause([] { Schedular().PauseEvent("event"); });
    Eventually([&task] { return task->GetState() == kTaskStatePaused; });
    gate.Open();
    pause.WaitForReturn();
  }
  BeQuiet();
  EXPECT_EQ(stage, 0);
  Schedular().ResumeEvent("event");
  Eventually([&stage] { return stage == 1; });
  Schedular().RemoveEvent("event");
}

// A report and a pause that meet: whichever comes first, the job goes on to its end.
TEST(Pause, MeetsReportsAtAnyMoment) {
  RunningPool pool(2);
  std::vector<TaskPtr> tasks;
  const PackagePtr package(CreateRkTaskPackage());
  for (int i = 0; i < 500; ++i) {
    tasks.push_back(MakeTask("task " + std::to_string(i), [](RkTask* task) {
      do task->ReportState(task, kTaskStateSucceeded);
      while (task->GetState() == kTaskStateActive || task->GetState() == kTaskStatePaused);
    }));
    package->AddTask(tasks.back().get());
  }
  std::atomic<bool> ended{false};
  const EventPtr event = MakeEvent("event", {package.get()}, [&ended](RkTask*) { ended = true; });
  Schedular().AddEvent(event.get());
  while (!ended) {
    Schedular().PauseEvent("event");
    Schedular().ResumeEvent("event");
  }
  for (const TaskPtr& task : tasks) EXPECT_EQ(task->GetState(), kTaskStateSucceeded);
}

}  // namespace
