// The pool as its clients see it: the order of tasks and of workers, what it does with odd ones,
// the searches for the tasks of an event, and start and stop. Each TEST is a process: the pool
// lives once.
#include <gmock/gmock.h>

#include <system_error>

#include "support/host_job.h"

namespace {

using namespace test;
using ::testing::ElementsAre;

TEST(Pool, WorkersAreReusedInTheOrderInWhichTheyBecameIdle) {
  RunningPool pool(3);
  Eventually([] { return IdleWorkers() == 3; });
  // Holds a worker at the gate, and returns by its thread which one it is.
  const auto hold = [](Gate& gate) {
    std::thread::id worker;
    const Body wait = [&gate, &worker](RkTask*) {
      worker = std::this_thread::get_id();
      gate.Wait();
    };
    Pool().AddFunc(MakeFunc(wait).get());
    gate.WaitForArrivals(1);
    return worker;
  };
  Gate gates[3];
  std::thread::id first[3];
  for (int i = 0; i < 3; ++i) first[i] = hold(gates[i]);
  const int order[] = {2, 0, 1};
  for (uint32_t i = 0; i < 3; ++i) {
    gates[order[i]].Open();
    Eventually([i] { return IdleWorkers() == i + 1; });
  }
  for (const int i : order) {
    Gate gate;
    EXPECT_EQ(hold(gate), first[i]) << "worker " << i;
    gate.Open();
    Eventually([] { return IdleWorkers() == 3; });
  }
}

TEST(Pool, WhatIsQueuedBeforeStartRunsInOrderWithTheFunctionsThatItHadThen) {
  EXPECT_EQ(Pool().GetThreadCount(), 2u);
  Log log;
  const TaskPtr task = MakeTask("t", [&log](RkTask*) { log.Add("first"); });
  Pool().AddTask(task.get());
  task->SetFunc(MakeFunc([&log](RkTask*) { log.Add("second"); }).get());
  Pool().AddTask(task.get());
  task->ClearFunc();
  EXPECT_EQ(Pool().GetQueuedCount(), 2u);
  RunningPool pool(1);
  EXPECT_EQ(Pool().GetThreadCount(), 1u);
  log.WaitFor("second");
  EXPECT_THAT(log.Entries(), ElementsAre("first", "second"));
}

TEST(Pool, ATaskWithoutAFunctionIsPassedByAndReleased) {
  std::atomic<int> released{0};
  {
    const TaskPtr empty(CreateRkTask());
    const DataPtr data(CreateRkTaskData());
    data->SetPayload(&released);
    data->SetReleaser([](void* payload) { ++*static_cast<std::atomic<int>*>(payload); });
    empty->SetData(data.get());
    Pool().AddTask(empty.get());
  }
  EXPECT_EQ(released, 0);
  Gate next;
  RunningPool pool(1);
  Eventually([&released] { return released == 1; });
  next.HoldWorker();
  next.Open();
}

TEST(Pool, AddFuncRunsNewTasksAtAnyPollIntervalWhichDieAfterwards) {
  EXPECT_EQ(Pool().GetPollInterval(), 500);
  RunningPool pool(2);
  std::atomic<int> ran{0};
  FuncPtr func = MakeFunc([&ran](RkTask* task) {
    EXPECT_STREQ(task->GetName(), "0");
    EXPECT_EQ(task->GetState(), kTaskStateCreated);
    EXPECT_EQ(task->GetType(), kTaskTypePlain);
    ++ran;
  });
  for (const int32_t interval : {-5, 0, 1, 1'000'000}) {
    Pool().SetPollInterval(interval);
    EXPECT_EQ(Pool().GetPollInterval(), interval);
    ran = 0;
    for (int i = 0; i < 200; ++i) Pool().AddFunc(func.get());
    Eventually([&ran] { return ran == 200; });
  }
  func = {};
  Eventually([] { return LiveBodies() == 0; });
}

// Without Start, what is queued stays queued.
TEST(PoolQueue, RemoveQueuedTakesOutAnEventsEntriesAndThoseOfNone) {
  EXPECT_EQ(Pool().RemoveQueued("x"), 0u);
  for (int i = 0; i < 2; ++i) Pool().AddFunc(MakeFunc([](RkTask*) {}).get());
  EXPECT_EQ(LiveBodies(), 2);
  EXPECT_EQ(Pool().RemoveQueued("any"), 2u);
  EXPECT_EQ(LiveBodies(), 0) << "the queue's references";

  Log log;
  const Body note = [&log](RkTask* task) { log.Add(task->GetName()); };
  const TaskPtr stray = MakeTask("stray", note);
  const Job x("x", {{"x1", note}, {"x2", note}});
  const Job y("y", {{"y1", note}, {"y2", note}}, note);
  y.package->SetName("py");
  y.package->SetFunc(MakeFunc(note).get());
  for (const Job* job : {&x, &y}) Schedular().RegisterEvent(job->event.get());
  RkTask* const queue[] = {
      y[1],          x[0],          stray.get(), y.package.get(), x.package.get(),
      y.event.get(), x.event.get(), x[1],        stray.get(),     y[0]};
  uint32_t strays = 0;
  for (RkTask* task : queue) {
    Pool().AddTask(task);
    if (task == x.package.get() || task == x[1]) strays += Pool().RemoveQueued("nothing");
  }
  EXPECT_EQ(strays, 1u);
  EXPECT_EQ(Pool().GetQueuedCount(), 9u);
  EXPECT_EQ(Pool().RemoveQueued("x"), 5u);
  EXPECT_EQ(Pool().GetQueuedCount(), 4u);
  EXPECT_EQ(x[0]->GetState(), kTaskStateCreated);
  RunningPool pool(1);
  log.WaitFor("y1");
  EXPECT_THAT(log.Entries(), ElementsAre("y2", "py", "y", "y1"));
}

TEST(PoolQueue, ListRunningReturnsThePlainTasksOfAnEventInTheOrderOfTheirStart) {
  Pool().FreeTaskList(nullptr);
  uint32_t count = 77;
  EXPECT_EQ(Pool().ListRunning("a", count), nullptr);
  EXPECT_EQ(count, 0u);

  RunningPool pool(5);
  Gate gates[5];
  const auto wait = [](Gate& gate) { return [&gate](RkTask*) { gate.Wait(); }; };
  const std::vector<Step> steps = {{"a1", wait(gates[0])}, {"a2", wait(gates[2])}};
  auto a = std::make_unique<Job>("a", steps, wait(gates[4]));
  const Job b("b", {{"b1", wait(gates[1])}});
  const TaskPtr stray = MakeTask("stray", wait(gates[3]));
  for (const EventPtr* event : {&a->event, &b.event}) Schedular().RegisterEvent(event->get());
  RkTask* const order[] = {(*a)[0], b[0], (*a)[1], stray.get(), a->event.get()};
  for (size_t i = 0; i < 5; ++i) {
    Pool().AddTask(order[i]);
    gates[i].WaitForArrivals(1);
  }

  // No worker is idle: a pass of pairing leaves the number of queued tasks unwritten.
  uint32_t pending = 77;
  uint32_t idle = 77;
  Pool().DispatchOne(pending, idle);
  EXPECT_EQ(pending, 77u);
  EXPECT_EQ(idle, 0u);
  ListPtr list(Pool().ListRunning("a", count));
  EXPECT_EQ(count, 2u);
  EXPECT_THAT(NamesOf(list.get()), ElementsAre("a1", "a2"));
  EXPECT_EQ(Pool().ListRunning("none", count), nullptr);
  EXPECT_EQ(count, 0u);

  // The list keeps its tasks alive on its own.
  for (Gate& gate : gates) gate.Open();
  Eventually([] { return IdleWorkers() == 5; });
  pool.Stop();
  a.reset();
  EXPECT_EQ(LiveBodies(), 4);
  EXPECT_THAT(NamesOf(list.get()), ElementsAre("a1", "a2"));
  list.reset();
  EXPECT_EQ(LiveBodies(), 2);
}

// Stop waits for the functions that run; they stand at the gate.
void StopAndOpen(Gate& gate) {
  Call stop([] { Pool().Stop(); });
  BeQuiet();
  EXPECT_FALSE(stop.IsDone());
  gate.Open();
  stop.WaitForReturn();
}

// What comes too late is dropped, not kept: it may be a report of a task that Stop waited for.
TEST(PoolLife, StopWaitsForRunningFunctionsAndDropsWhatIsQueuedOrAddedMeanwhile) {
  Pool().Start(2);
  Gate gate;
  std::atomic<int> returned{0};
  std::atomic<int> late{0};
  const Body count = [&late](RkTask*) { ++late; };
  const auto addLate = [&count] { Pool().AddFunc(MakeFunc(count).get()); };
  Pool().AddFunc(MakeFunc([&](RkTask*) {
                   gate.Wait();
                   addLate();
                   ++returned;
                 }).get());
  const Job job("cut off", {{"first", gate.Then(Succeed)}, {"second", count}});
  job.Add();
  gate.WaitForArrivals(2);
  for (int i = 0; i < 20; ++i) addLate();
  StopAndOpen(gate);
  EXPECT_EQ(returned, 1);
  EXPECT_EQ(late, 0);
  EXPECT_EQ(LiveBodies(), 2) << "those of the job alone";
  EXPECT_EQ(job[0]->GetState(), kTaskStateSucceeded);
  EXPECT_EQ(Schedular().GetEventCount(), 1u);
}

TEST(PoolLife, StopOfAPoolThatWasNotStartedAndByAWorkerThrows) {
  EXPECT_THROW(Pool().Stop(), std::system_error);
  Pool().Start(1);
  Gate gate;
  Pool().AddFunc(MakeFunc([&gate](RkTask*) {
                   EXPECT_THROW(Pool().Stop(), std::system_error);
                   gate.Wait();
                 }).get());
  gate.WaitForArrivals(1);
  StopAndOpen(gate);
}

}  // namespace
