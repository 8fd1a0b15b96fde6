// The road of an event: what runs, in which order, and in which states it ends.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <temvar/temvar.h>

#include <map>
#include <stdexcept>

#include "support/host_job.h"

namespace {

using namespace test;
using ::testing::ElementsAre;

TEST(Road, PackagesRunSideBySideAndTheirTasksOneAfterTheOther) {
  EXPECT_EQ(Schedular().GetEventCount(), 0u);
  Log log;
  Gate gate;
  const Body note = log.Note();
  const Body wait = gate.Then(note);
  const TaskPtr a1 = MakeTask("a1", wait);
  const TaskPtr a2 = MakeTask("a2", note);
  const TaskPtr b1 = MakeTask("b1", wait);
  const TaskPtr b2 = MakeTask("b2", note);
  const PackagePtr a = MakePackage({a1.get(), a2.get()});
  const PackagePtr b = MakePackage({b1.get(), b2.get()});
  for (const PackagePtr* package : {&a, &b}) (*package)->SetFunc(MakeFunc(note).get());
  a->SetName("a");
  b->SetName("b");
  uint64_t countAtEnd = 77;
  const EventPtr event = MakeEvent("event", {a.get(), b.get()}, [&](RkTask* task) {
    countAtEnd = Schedular().GetEventCount();
    note(task);
  });

  RunningPool pool(2);
  Schedular().AddEvent(event.get());
  gate.WaitForArrivals(2);
  EXPECT_EQ(Schedular().GetEventCount(), 1u);
  EXPECT_EQ(a1->GetState(), kTaskStateActive);
  EXPECT_EQ(a2->GetState(), kTaskStateCreated);
  EXPECT_EQ(a->GetState(), kTaskStateCreated);
  gate.Open();
  log.WaitFor("event");
  pool.Stop();

  std::map<char, std::string> entries;
  for (const std::string& entry : log.Entries()) entries[entry[0]] += entry + " ";
  EXPECT_EQ(entries['a'], "a1 a2 a ");
  EXPECT_EQ(entries['b'], "b1 b2 b ");
  EXPECT_EQ(log.Entries().back(), "event");
  EXPECT_EQ(countAtEnd, 0u);
  for (RkTask* task : {a1.get(), a2.get(), b1.get(), b2.get()}) {
    EXPECT_EQ(task->GetState(), kTaskStateSucceeded) << task->GetName();
  }
  EXPECT_EQ(event->GetState(), kTaskStateSucceeded);
}

// By the reports of its tasks: 's' success, 'f' failure.
TEST(Road, APackageEndsAsItsReportsSay) {
  const struct {
    const char* reports;
    bool continueOnFailure;
    const char* states;
    int32_t packageState;
  } cases[] = {
      {"sss", true, "111", 1}, {"sfs", true, "161", 1},  {"ssf", true, "116", 6},
      {"f", true, "6", 6},     {"fss", false, "600", 6}, {"sfs", false, "160", 6},
  };
  RunningPool pool(2);
  for (const auto& row : cases) {
    SCOPED_TRACE(row.reports);
    std::vector<TaskPtr> tasks;
    const Job job("event", {}, Succeed);
    job.package->SetContinueOnFailure(row.continueOnFailure);
    for (const char report : std::string(row.reports)) {
      tasks.push_back(
          MakeTask("task " + std::to_string(tasks.size()), report == 's' ? Succeed : Fail));
      job.package->AddTask(tasks.back().get());
    }
    job.Add();
    Eventually([&job] { return job.event->GetState() != kTaskStateCreated; });
    Eventually([] { return IdleWorkers() == 2; });
    std::string states;
    for (const TaskPtr& task : tasks) states += static_cast<char>('0' + task->GetState());
    EXPECT_EQ(states, row.states);
    EXPECT_EQ(job.package->GetState(), row.packageState);
    EXPECT_EQ(job.event->GetState(), row.packageState);
  }
}

TEST(Road, AnEventTakesTheStateOfThePackageThatEndedLast) {
  RunningPool pool(2);
  for (const bool failedLast : {false, true}) {
    Gate gate;
    const TaskPtr early = MakeTask("early", failedLast ? Succeed : Fail);
    const TaskPtr late = MakeTask("late", [&gate, failedLast](RkTask* task) {
      gate.Wait();
      failedLast ? Fail(task) : Succeed(task);
    });
    const PackagePtr first = MakePackage({early.get()});
    const PackagePtr second = MakePackage({late.get()});
    std::atomic<bool> ended{false};
    const EventPtr event =
        MakeEvent("event", {first.get(), second.get()}, [&ended](RkTask*) { ended = true; });
    Schedular().AddEvent(event.get());
    Eventually([&first] { return first->GetState() != kTaskStateCreated; });
    Eventually([] { return IdleWorkers() == 1; });
    gate.Open();
    Eventually([&ended] { return ended.load(); });
    EXPECT_EQ(event->GetState(), failedLast ? kTaskStateFailed : kTaskStateSucceeded);
  }
}

TEST(Road, AnEventWithoutPackagesOnlyStandsInTheRegistry) {
  const EventPtr event = MakeEvent("event", {});
  Schedular().AddEvent(event.get());
  EXPECT_EQ(Schedular().GetEventCount(), 1u);
  EXPECT_EQ(Pool().GetQueuedCount(), 0u);
  Schedular().RemoveEvent("event");
}

TEST(Road, APackageWithoutTasksIsRefusedAndLeavesEverythingUsable) {
  RunningPool pool(1);
  std::atomic<bool> ran{false};
  const TaskPtr task = MakeTask("t", [&ran](RkTask* self) {
    Succeed(self);
    ran = true;
  });
  const PackagePtr good = MakePackage({task.get()});
  const PackagePtr empty(CreateRkTaskPackage());
  const EventPtr event = MakeEvent("event", {good.get(), empty.get()});
  try {
    Schedular().AddEvent(event.get());
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "invalid vector<T> subscript");
  }
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
  const TaskPtr silent = MakeTask("silent", [&silentRuns](RkTask* task) {
    for (const int32_t nothing : {0, 2, 3, 4, 5, 7, -1, 100}) task->ReportState(task, nothing);
    ++silentRuns;
  });
  const TaskPtr next = MakeTask("next", [&nextRan](RkTask*) { nextRan = true; });
  const Job job("event", {silent.get(), next.get()});
  job.Add();
  Eventually([&silentRuns] { return silentRuns == 1; });
  BeQuiet();
  EXPECT_FALSE(nextRan);
  EXPECT_EQ(silent->GetState(), kTaskStateActive);
  EXPECT_EQ(Schedular().GetEventCount(), 1u);
  // The report may come from any thread, and later.
  Succeed(silent.get());
  Eventually([&nextRan] { return nextRan.load(); });
  Schedular().RemoveEvent("event");
}

TEST(Road, ATaskThatReportsTwiceMovesItsPackageOnTwice) {
  RunningPool pool(1);
  Log log;
  // Reports nothing.
  const auto note = [&log](RkTask* task) { log.Add(task->GetName()); };
  const TaskPtr twice = MakeTask("twice", [](RkTask* task) {
    Succeed(task);
    Succeed(task);
  });
  const TaskPtr second = MakeTask("second", note);
  const TaskPtr third = MakeTask("third", note);
  const TaskPtr fourth = MakeTask("fourth", note);
  const Job job("event", {twice.get(), second.get(), third.get(), fourth.get()});
  job.Add();
  log.WaitFor("third");
  EXPECT_THAT(log.Entries(), ElementsAre("second", "third"));
  EXPECT_EQ(job.package->GetCurrentIndex(), 2u);
  Schedular().RemoveEvent("event");
}

TEST(Road, ANestedPackageIsQueuedButItsChildrenNeverStart) {
  RunningPool pool(2);
  Log log;
  const TaskPtr leaf = MakeTask("leaf", log.Note());
  const PackagePtr inner = MakePackage({leaf.get()});
  const TaskPtr before = MakeTask("before", log.Note());
  const TaskPtr behind = MakeTask("behind", log.Note());
  const Job job("event", {before.get(), inner.get(), behind.get()});
  job.Add();
  Eventually([&inner] { return inner->GetState() == kTaskStateActive; });
  BeQuiet();
  EXPECT_THAT(log.Entries(), ElementsAre("before"));
  EXPECT_EQ(job.package->GetCurrentIndex(), 1u);
  Schedular().RemoveEvent("event");
}

TEST(Road, ALaterEventOfTheSameNameTakesTheEntry) {
  RunningPool pool(2);
  Gate gate;
  const TaskPtr old = MakeTask("old", gate.Then(Succeed));
  const TaskPtr fresh = MakeTask("fresh");
  const Job oldJob("same", {old.get()});
  const Job freshJob("same", {fresh.get()});
  oldJob.Add();
  gate.WaitForArrivals(1);
  freshJob.Add();
  EXPECT_EQ(Schedular().GetEventCount(), 1u);
  EXPECT_EQ(TaskPtr(Schedular().FindEvent("same")).get(), freshJob.event.get());
  EXPECT_EQ(TaskPtr(Schedular().FindTask("old")), nullptr);
  gate.Open();
  Eventually([] { return IdleWorkers() == 2; });
  EXPECT_EQ(old->GetState(), kTaskStateActive);
  EXPECT_EQ(oldJob.package->GetState(), kTaskStateCreated);
  Schedular().RemoveEvent("same");
  // The registry never gave back its reference on the entry that it overwrote.
  DestroyRkTask(oldJob.event.get());
}

TEST(Road, AnEventThatIsAddedTwiceRunsItsFirstTasksTwice) {
  std::atomic<int> runs{0};
  const TaskPtr first = MakeTask("first", [&runs](RkTask*) { ++runs; });
  first->SetState(kTaskStateFailed);
  const Job job("event", {first.get()});
  job.Add();
  job.Add();
  EXPECT_EQ(first->GetState(), kTaskStateActive);
  EXPECT_EQ(Pool().GetQueuedCount(), 2u);
  RunningPool pool(1);
  Eventually([&runs] { return runs == 2; });
  Schedular().RemoveEvent("event");
  DestroyRkTask(job.event.get());  // The reference of the first entry.
}

}  // namespace
