// Pause and resume of running events, and what ends a pause that waits.
#include "pausable.h"

namespace {

using namespace test;

// Reports until no pause swallows it.
void SucceedWhenHeard(RkTask* task) {
  do Succeed(task);
  while (task->GetState() == kTaskStateActive || task->GetState() == kTaskStatePaused);
}

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
  const Job job("event", {{"task", Succeed}, {"after"}});
  const TaskPtr leaf = MakeTask("leaf");
  const PackagePtr inner = MakePackage({leaf.get()});
  inner->SetState(kTaskStateActive);
  leaf->SetState(kTaskStateActive);
  job.package->AddTask(inner.get());
  job.package->AddTask(nullptr);
  job.Add();
  Schedular().PauseEvent("event");
  EXPECT_EQ(job[0]->GetState(), kTaskStatePaused);
  EXPECT_EQ(job[1]->GetState(), kTaskStateCreated);
  EXPECT_EQ(inner->GetState(), kTaskStateActive);  // Walked, not swept.
  EXPECT_EQ(leaf->GetState(), kTaskStatePaused);
  Schedular().ResumeEvent("event");
  EXPECT_EQ(job[0]->GetState(), kTaskStateActive);
  Pool().RemoveQueued("event");  // The end of the process would not release it.
}

TEST(Pause, AQueuedTaskParksWhenItsTurnComes) {
  RunningPool pool(1);
  Gate gate;
  Gate between;
  gate.HoldWorker();
  std::atomic<int> stage{0};
  const Job job("event", {{"task", [&stage, &between](RkTask* self) {
                             stage = 1;
                             self->ReportState(self, kTaskStateCreated);
                             stage = 2;
                             between.Wait();
                             self->ReportState(self, kTaskStateCreated);
                           }}});
  job.Add();
  Schedular().PauseEvent("event");
  gate.Open();
  Eventually([&stage] { return stage == 1; });
  BeQuiet();
  EXPECT_EQ(stage, 1);
  Schedular().ResumeEvent("event");
  Eventually([&stage] { return stage == 2; });
  {
    Call pause([] { Schedular().PauseEvent("event"); });
    BeQuiet();
    EXPECT_FALSE(pause.IsDone()) << "for a task that has parked before and runs again";
    between.Open();
    pause.WaitForReturn();
  }
  Schedular().ResumeEvent("event");
}

TEST(Pause, AReportDuringAPauseIsLost) {
  RunningPool pool(2);
  Gate gate;
  std::atomic<bool> reported{false};
  std::atomic<bool> nextRan{false};
  const Body report = gate.Then([&reported](RkTask* self) {
    Succeed(self);
    reported = true;
  });
  const Job job("event", {{"task", report}, {"next", [&nextRan](RkTask*) { nextRan = true; }}});
  job.Add();
  gate.WaitForArrivals(1);
  {
    Call pause([] { Schedular().PauseEvent("event"); });
    Eventually([&job] { return job[0]->GetState() == kTaskStatePaused; });
    gate.Open();
    pause.WaitForReturn();
  }
  Schedular().ResumeEvent("event");
  Eventually([&reported] { return reported.load(); });
  BeQuiet();
  EXPECT_EQ(job[0]->GetState(), kTaskStateActive);
  EXPECT_FALSE(nextRan);
  Succeed(job[0]);
  Eventually([&nextRan] { return nextRan.load(); });
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
  const std::pair<const char*, void (*)(Pausable&)> endings[] = {
      {"resume", [](Pausable& event) { event.Resume(); }},
      {"removal", [](Pausable&) { Schedular().RemoveEvent("event"); }},
      {"cancel", [](Pausable&) { Schedular().CancelEvent("event"); }},
      {"overwriting",
       [](Pausable& event) {
         Schedular().RegisterEvent(MakeEvent("event", {}).get());
         DestroyRkTask(event.event());  // The reference of the entry that was overwritten.
       }},
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
  }
}

// Two tasks that run, each inside a pause for which the other one counts, and a host on top.
TEST(Pause, TasksInsideAPauseAreWaitedForByNobody) {
  RunningPool pool(2);
  for (const bool crossed : {false, true}) {
    SCOPED_TRACE(crossed ? "each other's event" : "their own event");
    Gate gate;
    std::atomic<int> paused{0};
    const auto pauses = [&gate, &paused](const char* name) {
      return gate.Then([&paused, name](RkTask* self) {
        Schedular().PauseEvent(name);
        ++paused;
        SucceedWhenHeard(self);
      });
    };
    const Job first("first", {{"first task", pauses(crossed ? "second" : "first")}});
    const Job second("second", {{"second task", pauses("first")}});
    if (!crossed) first.event->AddPackage(second.package.get());
    first.Add();
    if (crossed) second.Add();
    gate.WaitForArrivals(2);
    gate.Open();
    Eventually([&paused] { return paused == 2; });
    Call([] { Schedular().PauseEvent("first"); }).WaitForReturn();
    Eventually([] {
      for (const char* name : {"first", "second"}) Schedular().ResumeEvent(name);
      return Schedular().GetEventCount() == 0 && IdleWorkers() == 2;
    });
  }
}

// The worker has its next task already when it lets go of what ran before.
TEST(Pause, FromAReleaserDoesNotWaitForTheNextTask) {
  RunningPool pool(1);
  Gate gate;
  std::atomic<uint32_t> paused{0};  // While the next task counted as running, once.
  std::shared_ptr<void> released(nullptr, [&paused](void*) {
    uint32_t running = 0;
    const ListPtr list(Pool().ListRunning("event", running));
    Schedular().PauseEvent("event");
    paused = running;
  });
  Pool().AddFunc(MakeFunc([&gate, released = std::move(released)](RkTask*) { gate.Wait(); }).get());
  gate.WaitForArrivals(1);
  const Job job("event", {{"task", SucceedWhenHeard}});
  job.Add();
  gate.Open();
  Eventually([&paused] { return paused == 1; });
  Eventually([&job] {
    Schedular().ResumeEvent("event");
    return job[0]->GetState() == kTaskStateSucceeded;
  });
}

// A report may pass the look of ReportState and meet the pause inside the completion step.
TEST(Pause, ACompletionThatMeetsItParksAndDoesNotBlockTheResume) {
  RunningPool pool(1);
  const Job job("event", {{"task"}});
  Schedular().RegisterEvent(job.event.get());
  job[0]->SetState(kTaskStatePaused);
  Call completion([&job] { Schedular().TaskFinished(job[0]); });
  BeQuiet();
  EXPECT_FALSE(completion.IsDone());
  EXPECT_EQ(Schedular().GetEventCount(), 1u);  // The registry is free meanwhile.
  Schedular().ResumeEvent("event");
  completion.WaitForReturn();
  EXPECT_EQ(job[0]->GetState(), kTaskStateSucceeded);
}

TEST(CheckPause, ReportsWhetherTheTaskHasLeftTheStateCreated) {
  const TaskPtr task = MakeTask("task");
  // Without a registered event there is nothing to park on.
  for (int32_t state = kTaskStateCreated; state <= kTaskStatePaused; ++state) {
    task->SetState(state);
    EXPECT_EQ(Schedular().CheckPause(task.get()), state != kTaskStateCreated) << state;
    EXPECT_EQ(Schedular().PausePoint(task.get()), state);
    EXPECT_EQ(Schedular().PausePointLocked(task.get()), state);
  }
  EXPECT_EQ(Schedular().PausePointLocked(nullptr), kTaskStateCreated);
}

}  // namespace
