// Pause and resume of running events, and what ends a pause that waits.
#include <gtest/gtest.h>

#include "pausable.h"

namespace {

using namespace test;

TEST(Pause, ReturnsWhenTheRunningTasksHaveReachedAPausePoint) {
  RunningPool pool(2);
  for (const bool asks : {false, true}) {
    Pausable first("first", asks);
    first.Start();
    {
      Call pause([&first] { first.Pause(); });
      BeQuiet();
      EXPECT_FALSE(pause.IsDone());
      EXPECT_EQ(first.State(), kTaskStatePaused);
      first.gate.Open();
      pause.WaitForReturn();
    }
    first.Pause();  // Its task is parked already and arrives nowhere.
    BeQuiet();
    EXPECT_EQ(first.passed, 0);
    EXPECT_FALSE(first.ended);
    first.Resume();
    Eventually([&first] { return first.ended.load(); });
    EXPECT_EQ(first.passed, 1);
    Eventually([] { return IdleWorkers() == 2; });
  }
}

TEST(Pause, OfAnUnknownOrIdleEventReturnsAtOnce) {
  Schedular().PauseEvent("nothing");
  Schedular().ResumeEvent("nothing");
  Schedular().CancelEvent("nothing");
  Schedular().CancelEventEx("nothing", false);
  // Queued, with no worker to run it: swept, and nothing to wait for.
  const TaskPtr task = MakeTask("task", Succeed);
  const TaskPtr behind = MakeTask("behind");
  const Job job("event", {task.get(), behind.get()});
  job.Add();
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
  Pool().AddTask(blocker.get());
  gate.WaitForArrivals(1);
  std::atomic<int> stage{0};
  const TaskPtr task = MakeTask("task", [&stage](RkTask* self) {
    stage = 1;
    self->ReportState(self, kTaskStateCreated);
    stage = 2;
  });
  const Job job("event", {task.get()});
  job.Add();
  Schedular().PauseEvent("event");
  gate.Open();
  Eventually([&stage] { return stage == 1; });
  BeQuiet();
  EXPECT_EQ(stage, 1);
  Schedular().ResumeEvent("event");
  Eventually([&stage] { return stage == 2; });
  Schedular().RemoveEvent("event");
}

TEST(Pause, AReportDuringAPauseIsLost) {
  RunningPool pool(2);
  Gate gate;
  std::atomic<bool> reported{false};
  std::atomic<bool> nextRan{false};
  const TaskPtr task = MakeTask("task", [&](RkTask* self) {
    gate.Wait();
    Succeed(self);
    reported = true;
  });
  const TaskPtr next = MakeTask("next", [&nextRan](RkTask*) { nextRan = true; });
  const Job job("event", {task.get(), next.get()});
  job.Add();
  gate.WaitForArrivals(1);
  {
    Call pause([] { Schedular().PauseEvent("event"); });
    Eventually([&task] { return task->GetState() == kTaskStatePaused; });
    gate.Open();
    pause.WaitForReturn();
  }
  Schedular().ResumeEvent("event");
  Eventually([&reported] { return reported.load(); });
  BeQuiet();
  EXPECT_EQ(task->GetState(), kTaskStateActive);
  EXPECT_FALSE(nextRan);
  Succeed(task.get());
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
    Eventually([&first] { return first.State() == kTaskStatePaused; });
    // One drains after the other; neither wait may sleep through the arrival of its own task.
    second.PauseWhole();
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

// Each of these once could have left it waiting for ever.
TEST(Pause, EndsWithoutAPausePointWhenTheEventOrTheTaskGoes) {
  const struct {
    const char* what;
    void (*act)(Pausable& event);
  } endings[] = {
      {"resume", [](Pausable& event) { event.Resume(); }},
      {"removal", [](Pausable&) { Schedular().RemoveEvent("event"); }},
      {"cancel", [](Pausable&) { Schedular().CancelEvent("event"); }},
      {"kept cancel", [](Pausable&) { Schedular().CancelEventEx("event", false); }},
      {"return without a report",
       [](Pausable& event) {
         event.task()->SetState(kTaskStateActive);  // So that it doesn't park.
         event.gate.Open();
       }},
  };
  RunningPool pool(1);  // Held by the task: no cancel runs meanwhile.
  for (const auto& [what, act] : endings) {
    SCOPED_TRACE(what);
    Pausable event("event");
    event.silent = true;
    event.Start();
    {
      Call pause([&event] { event.Pause(); });
      Eventually([&event] { return event.State() == kTaskStatePaused; });
      BeQuiet();
      EXPECT_FALSE(pause.IsDone());
      act(event);
      pause.WaitForReturn();
    }
    event.Resume();
    event.task()->SetState(kTaskStateActive);  // Where nothing is registered, nothing resumes.
    event.gate.Open();
    Eventually([] { return IdleWorkers() == 1; });
    Schedular().RemoveEvent("event");
  }
}

TEST(Pause, ATaskMayPauseItsOwnEvent) {
  RunningPool pool(1);
  std::atomic<bool> paused{false};
  const TaskPtr task = MakeTask("task", [&paused](RkTask* self) {
    Schedular().PauseEvent("event");
    paused = true;
    do Succeed(self);
    while (self->GetState() == kTaskStateActive);
  });
  const Job job("event", {task.get()});
  job.Add();
  Eventually([&paused] { return paused.load(); });
  EXPECT_EQ(Schedular().GetEventCount(), 1u);
  Schedular().ResumeEvent("event");
  Eventually([] { return Schedular().GetEventCount() == 0; });
}

// The worker has its next task already when it lets go of what ran before.
TEST(Pause, FromAReleaserDoesNotWaitForTheTaskBehindIt) {
  RunningPool pool(1);
  Gate gate;
  std::atomic<bool> paused{false};
  std::shared_ptr<void> released(nullptr, [&paused](void*) {
    Schedular().PauseEvent("event");
    paused = true;
  });
  Pool().AddFunc(MakeFunc([&gate, released](RkTask*) { gate.Wait(); }).get());
  released.reset();
  gate.WaitForArrivals(1);
  const TaskPtr task = MakeTask("task", [](RkTask* self) {
    do Succeed(self);
    while (self->GetState() == kTaskStateActive);
  });
  const Job job("event", {task.get()});
  job.Add();
  gate.Open();
  Eventually([&paused] { return paused.load(); });
  Eventually([&task] {
    Schedular().ResumeEvent("event");
    return task->GetState() == kTaskStateSucceeded;
  });
}

// A report may pass the look of ReportState and meet the pause inside the completion step.
TEST(Pause, ACompletionThatMeetsItParksAndDoesNotBlockTheResume) {
  RunningPool pool(1);
  const TaskPtr task = MakeTask("task");
  const Job job("event", {task.get()});
  Schedular().RegisterEvent(job.event.get());
  task->SetState(kTaskStatePaused);
  Call completion([&task] { Schedular().TaskFinished(task.get()); });
  BeQuiet();
  EXPECT_FALSE(completion.IsDone());
  EXPECT_EQ(Schedular().GetEventCount(), 1u);  // The registry is free meanwhile.
  Schedular().ResumeEvent("event");
  completion.WaitForReturn();
  EXPECT_EQ(task->GetState(), kTaskStateSucceeded);
}

TEST(CheckPause, TellsWhetherTheTaskHasLeftTheStateCreated) {
  const TaskPtr task = MakeTask("task");
  // Without a registered event there is nothing to park on.
  for (int32_t state = kTaskStateCreated; state <= kTaskStatePaused; ++state) {
    task->SetState(state);
    EXPECT_EQ(Schedular().CheckPause(task.get()), state != kTaskStateCreated) << state;
    EXPECT_EQ(Schedular().PausePoint(task.get()), state);
  }
}

// A report and a pause that meet: whichever comes first, the job goes on to its end.
TEST(Pause, MeetsReportsAtAnyMoment) {
  RunningPool pool(2);
  std::vector<TaskPtr> tasks;
  const PackagePtr package(CreateRkTaskPackage());
  for (int i = 0; i < 500; ++i) {
    tasks.push_back(MakeTask("task " + std::to_string(i), [](RkTask* task) {
      do Succeed(task);
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
