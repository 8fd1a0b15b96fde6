// The road of an event: what runs, in which order, and in which states it ends.
#include <gmock/gmock.h>

#include "support/host_job.h"

namespace {

using namespace test;
using ::testing::ElementsAre;

// By the reports of its tasks: 's' success, 'f' failure.
TEST(Road, APackageEndsAsItsReportsSay) {
  const std::tuple<const char*, bool, const char*, int32_t> cases[] = {
      {"sss", true, "111", 1}, {"sfs", true, "161", 1},  {"ssf", true, "116", 6},
      {"f", true, "6", 6},     {"fss", false, "600", 6}, {"sfs", false, "160", 6},
  };
  RunningPool pool(2);
  for (const auto& [reports, continueOnFailure, states, packageState] : cases) {
    SCOPED_TRACE(reports);
    std::vector<Step> steps;
    for (const char report : std::string(reports)) {
      steps.push_back({"task " + std::to_string(steps.size()), report == 's' ? Succeed : Fail});
    }
    const Job job("event", steps, Succeed);
    job.package->SetContinueOnFailure(continueOnFailure);
    job.Add();
    Eventually([&job] { return job.event->GetState() != kTaskStateCreated; });
    Eventually([] { return IdleWorkers() == 2; });
    std::string seen;
    for (size_t i = 0; i < steps.size(); ++i) seen += std::to_string(job[i]->GetState());
    EXPECT_EQ(seen, states);
    EXPECT_EQ(job.package->GetState(), packageState);
    EXPECT_EQ(job.event->GetState(), packageState);
  }
}

TEST(Road, AnEventTakesTheStateOfThePackageThatEndedLast) {
  RunningPool pool(2);
  for (const bool failedLast : {false, true}) {
    Gate gate;
    const TaskPtr late = MakeTask("late", gate.Then(failedLast ? Fail : Succeed));
    const PackagePtr second = MakePackage({late.get()});
    std::atomic<bool> ended{false};
    const Job job("event", {{"early", failedLast ? Succeed : Fail}},
                  [&ended](RkTask*) { ended = true; });
    job.event->AddPackage(second.get());
    job.Add();
    Eventually([&job] { return job.package->GetState() != kTaskStateCreated; });
    Eventually([] { return IdleWorkers() == 1; });
    gate.Open();
    Eventually([&ended] { return ended.load(); });
    EXPECT_EQ(job.event->GetState(), failedLast ? kTaskStateFailed : kTaskStateSucceeded);
  }
}

TEST(Road, APackageWithoutTasksIsRefusedAndLeavesEverythingUsable) {
  RunningPool pool(1);
  std::atomic<bool> ran{false};
  const Body run = [&ran](RkTask* self) {
    Succeed(self);
    ran = true;
  };
  const Job job("event", {{"t", run}});
  job.event->AddPackage(MakePackage({}).get());
  EXPECT_THAT([&job] { job.Add(); },
              testing::ThrowsMessage<std::out_of_range>("invalid vector<T> subscript"));
  Eventually([&ran] { return ran.load(); });
  // On a thread of its own: a mutex that was left locked would stop it here.
  Call useAll([] {
    EXPECT_EQ(Schedular().GetEventCount(), 1u);
    EXPECT_NE(TaskPtr(Schedular().FindTask("t")), nullptr);
    Schedular().PauseEvent("event");
    Schedular().ResumeEvent("event");
    EXPECT_FALSE(Schedular().IsTaskCancelled("t"));
    Schedular().RemoveEvent("event");
    EXPECT_EQ(Schedular().GetEventCount(), 0u);
  });
  useAll.WaitForReturn();
}

TEST(Road, ATaskWithoutAnEventRunsOnceAndReportsIntoNothing) {
  RunningPool pool(1);
  std::atomic<int> runs{0};
  const auto count = [&runs](RkTask* task) {
    Succeed(task);
    ++runs;
  };
  const TaskPtr fresh = MakeTask("fresh", count);
  Schedular().ScheduleTask(fresh.get());
  Eventually([&runs] { return runs == 1; });
  EXPECT_EQ(fresh->GetState(), kTaskStateActive);

  const TaskPtr ended = MakeTask("ended", count);
  ended->SetState(kTaskStateSucceeded);
  Schedular().ScheduleTask(ended.get());
  Eventually([&runs] { return runs == 2; });
  EXPECT_EQ(ended->GetState(), kTaskStateSucceeded);
}

TEST(Road, OnlyAReportMovesAPackageOn) {
  RunningPool pool(2);
  std::atomic<int> silentRuns{0};
  std::atomic<bool> nextRan{false};
  const Body reportNothing = [&silentRuns](RkTask* task) {
    for (const int32_t nothing : {0, 2, 3, 4, 5, 7, -1, 100}) task->ReportState(task, nothing);
    ++silentRuns;
  };
  const Job job("event",
                {{"silent", reportNothing}, {"next", [&nextRan](RkTask*) { nextRan = true; }}});
  job.Add();
  Eventually([&silentRuns] { return silentRuns == 1; });
  BeQuiet();
  EXPECT_FALSE(nextRan);
  EXPECT_EQ(job[0]->GetState(), kTaskStateActive);
  EXPECT_EQ(Schedular().GetEventCount(), 1u);
  // The report may come from any thread, and later.
  Succeed(job[0]);
  Eventually([&nextRan] { return nextRan.load(); });
}

TEST(Road, ATaskThatReportsTwiceMovesItsPackageOnTwice) {
  RunningPool pool(1);
  Log log;
  // Reports nothing.
  const Body note = [&log](RkTask* task) { log.Add(task->GetName()); };
  const Body twice = [](RkTask* task) {
    Succeed(task);
    Succeed(task);
  };
  const Job job("event", {{"twice", twice}, {"second", note}, {"third", note}, {"fourth", note}});
  job.Add();
  log.WaitFor("third");
  EXPECT_THAT(log.Entries(), ElementsAre("second", "third"));
  EXPECT_EQ(job.package->GetCurrentIndex(), 2u);
}

TEST(Road, ANestedPackageIsQueuedButItsChildrenNeverStart) {
  RunningPool pool(2);
  Log log;
  const TaskPtr leaf = MakeTask("leaf", log.Note());
  const PackagePtr inner = MakePackage({leaf.get()});
  const TaskPtr before = MakeTask("before", log.Note());
  const TaskPtr after = MakeTask("after", log.Note());
  const Job job("event", MakePackage({before.get(), inner.get(), after.get()}));
  job.Add();
  Eventually([&inner] { return inner->GetState() == kTaskStateActive; });
  BeQuiet();
  EXPECT_THAT(log.Entries(), ElementsAre("before"));
  EXPECT_EQ(job.package->GetCurrentIndex(), 1u);
}

TEST(Road, ALaterEventOfTheSameNameTakesTheEntry) {
  RunningPool pool(2);
  Gate gate;
  const Job oldJob("same", {{"old", gate.Then(Succeed)}});
  const Job freshJob("same", {{"fresh"}});
  oldJob.Add();
  gate.WaitForArrivals(1);
  freshJob.Add();
  EXPECT_EQ(Schedular().GetEventCount(), 1u);
  EXPECT_EQ(TaskPtr(Schedular().FindEvent("same")).get(), freshJob.event.get());
  EXPECT_EQ(TaskPtr(Schedular().FindTask("old")), nullptr);
  gate.Open();
  Eventually([] { return IdleWorkers() == 2; });
  EXPECT_EQ(oldJob[0]->GetState(), kTaskStateActive);
  EXPECT_EQ(oldJob.package->GetState(), kTaskStateCreated);
  // The registry never gave back its reference on the entry that it overwrote.
  DestroyRkTask(oldJob.event.get());
}

TEST(Road, AnEventThatIsAddedTwiceRunsItsFirstTasksTwice) {
  std::atomic<int> runs{0};
  const Job job("event", {{"first", [&runs](RkTask*) { ++runs; }}});
  job[0]->SetState(kTaskStateFailed);
  job.Add();
  job.Add();
  EXPECT_EQ(job[0]->GetState(), kTaskStateActive);
  EXPECT_EQ(Pool().GetQueuedCount(), 2u);
  RunningPool pool(1);
  Eventually([&runs] { return runs == 2; });
  DestroyRkTask(job.event.get());  // The reference of the first entry.
}

}  // namespace
