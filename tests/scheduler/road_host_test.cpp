// The road of an event: what runs, in which order, and in which states it ends.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <temvar/temvar.h>

#include <stdexcept>

#include "support/host_job.h"

namespace {

using test::BeQuiet;
using test::Call;
using test::EventPtr;
using test::Eventually;
using test::Gate;
using test::Log;
using test::MakeEvent;
using test::MakePackage;
using test::MakeTask;
using test::PackagePtr;
using test::RunningPool;
using test::TaskPtr;
using ::testing::ElementsAre;

RkTaskSchedular& Schedular() { return *TmvTaskSchedular(); }

void Succeed(RkTask* task) { task->ReportState(task, kTaskStateSucceeded); }
void Fail(RkTask* task) { task->ReportState(task, kTaskStateFailed); }

TEST(Road, PackagesRunSideBySideAndTheirTasksOneAfterTheOther) {
  EXPECT_EQ(TmvTaskSchedular(), TmvTaskSchedular());
  EXPECT_EQ(Schedular().GetEventCount(), 0u);
  Log log;
  Gate gate;
  const auto wait = [&](RkTask* task) {
    log.Add(task->GetName());
    gate.Wait();
    Succeed(task);
  };
  const auto note = [&log](RkTask* task) {
    log.Add(task->GetName());
    Succeed(task);
  };
  const TaskPtr a1 = MakeTask("a1", wait);
  const TaskPtr a2 = MakeTask("a2", note);
  const TaskPtr b1 = MakeTask("b1", wait);
  const TaskPtr b2 = MakeTask("b2", note);
  const PackagePtr a = MakePackage({a1.get(), a2.get()});
  const PackagePtr b = MakePackage({b1.get(), b2.get()});
  for (const PackagePtr* package : {&a, &b}) (*package)->SetFunc(test::MakeFunc(note).get());
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

  const std::vector<std::string> entries = log.Entries();
  EXPECT_EQ(entries.size(), 7u);
  const auto place = [&entries](const char* name) {
    return std::find(entries.begin(), entries.end(), name) - entries.begin();
  };
  EXPECT_LT(place("a1"), place("a2"));
  EXPECT_LT(place("a2"), place("a"));
  EXPECT_LT(place("b1"), place("b2"));
  EXPECT_LT(place("b2"), place("b"));
  EXPECT_EQ(entries.back(), "event");
  EXPECT_EQ(countAtEnd, 0u);
  for (RkTask* task : {a1.get(), a2.get(), b1.get(), b2.get()}) {
    EXPECT_EQ(task->GetState(), kTaskStateSucceeded) << task->GetName();
  }
  EXPECT_EQ(event->GetState(), kTaskStateSucceeded);
}

// Reports of the tasks of one package ('s' success, 'f' failure), and how it ends.
struct PackageCase {
  const char* reports;
  bool continueOnFailure;
  const char* states;
  int32_t packageState;
};

// For the name of the test, which must not change from run to run.
void PrintTo(const PackageCase& row, std::ostream* out) { *out << row.reports; }

class PackageEnd : public testing::TestWithParam<PackageCase> {};

TEST_P(PackageEnd, FollowsFromTheReports) {
  const PackageCase& row = GetParam();
  RunningPool pool(2);
  std::vector<TaskPtr> tasks;
  const PackagePtr package(CreateRkTaskPackage());
  package->SetContinueOnFailure(row.continueOnFailure);
  for (const char* report = row.reports; *report != '\0'; ++report) {
    const std::string name = "task " + std::to_string(tasks.size());
    tasks.push_back(MakeTask(name, *report == 's' ? Succeed : Fail));
    package->AddTask(tasks.back().get());
  }
  std::atomic<bool> ended{false};
  const EventPtr event = MakeEvent("event", {package.get()}, [&ended](RkTask* task) {
    Succeed(task);
    ended = true;
  });
  Schedular().AddEvent(event.get());
  Eventually([&ended] { return ended.load(); });
  std::string states;
  for (const TaskPtr& task : tasks) states += static_cast<char>('0' + task->GetState());
  EXPECT_EQ(states, row.states);
  EXPECT_EQ(package->GetState(), row.packageState);
  EXPECT_EQ(event->GetState(), row.packageState);
}

INSTANTIATE_TEST_SUITE_P(
    Reports, PackageEnd,
    testing::Values(PackageCase{"sss", true, "111", 1}, PackageCase{"sfs", true, "161", 1},
                    PackageCase{"ssf", true, "116", 6}, PackageCase{"f", true, "6", 6},
                    PackageCase{"fss", false, "600", 6}, PackageCase{"sfs", false, "160", 6}),
    [](const testing::TestParamInfo<PackageCase>& row) {
      return std::string(row.param.reports) + (row.param.continueOnFailure ? "_goes_on" : "_stops");
    });

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
    Eventually([] { return test::IdleWorkers() == 1; });
    gate.Open();
    Eventually([&ended] { return ended.load(); });
    EXPECT_EQ(event->GetState(), failedLast ? kTaskStateFailed : kTaskStateSucceeded);
  }
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

TEST(Road, AnEventWithoutPackagesOnlyStandsInTheRegistry) {
  RunningPool pool(1);
  std::atomic<bool> ran{false};
  const EventPtr event = MakeEvent("event", {}, [&ran](RkTask*) { ran = true; });
  Schedular().AddEvent(event.get());
  BeQuiet();
  EXPECT_FALSE(ran);
  EXPECT_EQ(Schedular().GetEventCount(), 1u);
  Schedular().RemoveEvent("event");
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
  const PackagePtr package = MakePackage({silent.get(), next.get()});
  const EventPtr event = MakeEvent("event", {package.get()});
  Schedular().AddEvent(event.get());
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
  const auto note = [&log](RkTask* task) { log.Add(task->GetName()); };
  const TaskPtr twice = MakeTask("twice", [](RkTask* task) {
    Succeed(task);
    Succeed(task);
  });
  const TaskPtr second = MakeTask("second", note);
  const TaskPtr third = MakeTask("third", note);
  const TaskPtr fourth = MakeTask("fourth", note);
  const PackagePtr package = MakePackage({twice.get(), second.get(), third.get(), fourth.get()});
  const EventPtr event = MakeEvent("event", {package.get()});
  Schedular().AddEvent(event.get());
  log.WaitFor("third");
  EXPECT_THAT(log.Entries(), ElementsAre("second", "third"));
  EXPECT_EQ(package->GetCurrentIndex(), 2u);
  Schedular().RemoveEvent("event");
}

TEST(Road, ANestedPackageIsQueuedButItsChildrenNeverStart) {
  RunningPool pool(2);
  std::atomic<bool> innerRan{false};
  std::atomic<bool> behindRan{false};
  const TaskPtr leaf = MakeTask("leaf", [&innerRan](RkTask*) { innerRan = true; });
  const PackagePtr inner = MakePackage({leaf.get()});
  const TaskPtr before = MakeTask("before", Succeed);
  const TaskPtr behind = MakeTask("behind", [&behindRan](RkTask*) { behindRan = true; });
  const PackagePtr outer = MakePackage({before.get(), inner.get(), behind.get()});
  const EventPtr event = MakeEvent("event", {outer.get()});
  Schedular().AddEvent(event.get());
  Eventually([&inner] { return inner->GetState() == kTaskStateActive; });
  BeQuiet();
  EXPECT_FALSE(innerRan);
  EXPECT_FALSE(behindRan);
  EXPECT_EQ(outer->GetCurrentIndex(), 1u);
  Schedular().RemoveEvent("event");
}

TEST(Road, ALaterEventOfTheSameNameTakesTheEntry) {
  RunningPool pool(2);
  Gate gate;
  const TaskPtr old = MakeTask("old", [&gate](RkTask* task) {
    gate.Wait();
    Succeed(task);
  });
  const TaskPtr fresh = MakeTask("fresh", [](RkTask*) {});
  const PackagePtr oldPackage = MakePackage({old.get()});
  const PackagePtr freshPackage = MakePackage({fresh.get()});
  const EventPtr oldEvent = MakeEvent("same", {oldPackage.get()});
  const EventPtr freshEvent = MakeEvent("same", {freshPackage.get()});
  Schedular().AddEvent(oldEvent.get());
  gate.WaitForArrivals(1);
  Schedular().AddEvent(freshEvent.get());
  EXPECT_EQ(Schedular().GetEventCount(), 1u);
  EXPECT_EQ(TaskPtr(Schedular().FindEvent("same")).get(), freshEvent.get());
  EXPECT_EQ(TaskPtr(Schedular().FindTask("old")), nullptr);
  gate.Open();
  Eventually([] { return test::IdleWorkers() == 2; });
  EXPECT_EQ(old->GetState(), kTaskStateActive);
  EXPECT_EQ(oldPackage->GetState(), kTaskStateCreated);
  Schedular().RemoveEvent("same");
  // The registry never gave back its reference on the entry that it overwrote.
  DestroyRkTask(oldEvent.get());
}

TEST(Road, AnEventThatIsAddedTwiceRunsItsFirstTasksTwice) {
  std::atomic<int> runs{0};
  const TaskPtr first = MakeTask("first", [&runs](RkTask*) { ++runs; });
  first->SetState(kTaskStateFailed);
  const PackagePtr package = MakePackage({first.get()});
  const EventPtr event = MakeEvent("event", {package.get()});
  Schedular().AddEvent(event.get());
  Schedular().AddEvent(event.get());
  EXPECT_EQ(first->GetState(), kTaskStateActive);
  EXPECT_EQ(TmvTaskPool()->GetQueuedCount(), 2u);
  RunningPool pool(1);
  Eventually([&runs] { return runs == 2; });
  Schedular().RemoveEvent("event");
  DestroyRkTask(event.get());  // The reference of the first entry.
}

// A function that throws is turned into a failure by the host, and the package goes on.
TEST(Road, AFailureMayComeFromAnException) {
  RunningPool pool(1);
  const TaskPtr bad = MakeTask("bad", [](RkTask* task) {
    try {
      throw std::runtime_error("no such file");
    } catch (...) {
      Fail(task);
    }
  });
  std::atomic<bool> ran{false};
  const TaskPtr good = MakeTask("good", [&ran](RkTask* task) {
    Succeed(task);
    ran = true;
  });
  const PackagePtr package = MakePackage({bad.get(), good.get()});
  const EventPtr event = MakeEvent("event", {package.get()});
  Schedular().AddEvent(event.get());
  Eventually([&ran] { return ran.load(); });
  EXPECT_EQ(bad->GetState(), kTaskStateFailed);
}

}  // namespace
