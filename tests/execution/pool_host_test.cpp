// The pool as its clients see it: the order of tasks and of workers, what it does with odd ones,
// the searches for the tasks of an event, and start and stop. Each TEST is a process: the pool
// lives once.
#include <gmock/gmock.h>

#include <map>
#include <system_error>

#include "support/host_job.h"

namespace {

using namespace test;
using ::testing::ElementsAre;

TEST(Pool, RunsAsManyTasksSideBySideAsItHasWorkers) {
  RunningPool pool(4);
  Eventually([] { return IdleWorkers() == 4; });
  Gate gate;
  std::atomic<bool> fifthRan{false};
  std::vector<TaskPtr> tasks;
  for (int i = 0; i < 4; ++i) tasks.push_back(MakeTask("busy", [&gate](RkTask*) { gate.Wait(); }));
  tasks.push_back(MakeTask("fifth", [&fifthRan](RkTask*) { fifthRan = true; }));
  for (const TaskPtr& task : tasks) Pool().AddTask(task.get());
  gate.WaitForArrivals(4);

  // No worker is idle: a pass of pairing leaves the number of queued tasks unwritten.
  uint32_t pending = 77;
  uint32_t idle = 77;
  Pool().DispatchOne(pending, idle);
  EXPECT_EQ(pending, 77u);
  EXPECT_EQ(idle, 0u);
  EXPECT_EQ(Pool().GetQueuedCount(), 1u);
  BeQuiet();
  EXPECT_FALSE(fifthRan);

  gate.Open();
  Eventually([&fifthRan] { return fifthRan.load(); });
  Eventually([] { return IdleWorkers() == 4; });
}

// Tasks report by their own thread which worker runs them.
TEST(Pool, WorkersAreReusedInTheOrderInWhichTheyBecameIdle) {
  RunningPool pool(3);
  Eventually([] { return IdleWorkers() == 3; });
  std::map<int, std::thread::id> first;
  std::mutex mutex;
  Gate gates[3];
  std::vector<TaskPtr> tasks;
  for (int i = 0; i < 3; ++i) {
    tasks.push_back(MakeTask("t", [&, i](RkTask*) {
      {
        const std::lock_guard<std::mutex> lock(mutex);
        first[i] = std::this_thread::get_id();
      }
      gates[i].Wait();
    }));
    Pool().AddTask(tasks.back().get());
    gates[i].WaitForArrivals(1);
  }
  const int order[] = {2, 0, 1};
  uint32_t idle = 0;
  for (const int i : order) {
    gates[i].Open();
    ++idle;
    Eventually([idle] { return IdleWorkers() == idle; });
  }
  for (const int i : order) {
    Gate gate;
    std::thread::id id;
    const TaskPtr task = MakeTask("again", [&](RkTask*) {
      id = std::this_thread::get_id();
      gate.Wait();
    });
    Pool().AddTask(task.get());
    gate.WaitForArrivals(1);
    gate.Open();
    Eventually([] { return IdleWorkers() == 3; });
    EXPECT_EQ(id, first[i]) << "worker " << i;
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
  RunningPool pool(1);
  Eventually([&released] { return released == 1; });
  Log log;
  const TaskPtr next = MakeTask("next", [&log](RkTask*) { log.Add("ran"); });
  Pool().AddTask(next.get());
  log.WaitFor("ran");
}

TEST(Pool, AddFuncRunsANewTaskThatDiesAfterItsRun) {
  RunningPool pool(2);
  Pool().ReservedOperation();
  std::string name;
  int32_t state = -1;
  std::atomic<bool> ran{false};
  {
    const FuncPtr func = MakeFunc([&](RkTask* task) {
      name = task->GetName();
      state = task->GetState();
      EXPECT_EQ(task->GetType(), kTaskTypePlain);
      ran = true;
    });
    Pool().AddFunc(func.get());
  }
  Eventually([] { return LiveBodies() == 0; });
  EXPECT_TRUE(ran);
  EXPECT_EQ(name, "0");
  EXPECT_EQ(state, kTaskStateCreated);
}

// No setting keeps queued work from starting.
TEST(Pool, TakesAnyPollInterval) {
  EXPECT_EQ(Pool().GetPollInterval(), 500);
  RunningPool pool(2);
  for (const int32_t interval : {-5, 0, 1, 1'000'000}) {
    Pool().SetPollInterval(interval);
    EXPECT_EQ(Pool().GetPollInterval(), interval);
    std::atomic<int> ran{0};
    for (int i = 0; i < 200; ++i) Pool().AddFunc(MakeFunc([&ran](RkTask*) { ++ran; }).get());
    Eventually([&ran] { return ran == 200; });
  }
}

// Without Start, what is queued stays queued.
TEST(PoolQueue, RemoveQueuedTakesOutAnEventsEntriesAndThoseOfNone) {
  EXPECT_EQ(Pool().RemoveQueued("x"), 0u);
  Log log;
  const Body note = [&log](RkTask* task) { log.Add(task->GetName()); };
  const TaskPtr x1 = MakeTask("x1", note);
  const TaskPtr x2 = MakeTask("x2", note);
  const TaskPtr y1 = MakeTask("y1", note);
  const TaskPtr y2 = MakeTask("y2", note);
  const TaskPtr stray = MakeTask("stray", note);
  const PackagePtr px = MakePackage({x1.get(), x2.get()});
  const PackagePtr py = MakePackage({y1.get(), y2.get()});
  py->SetName("py");
  py->SetFunc(MakeFunc(note).get());
  const EventPtr x = MakeEvent("x", {px.get()});
  const EventPtr y = MakeEvent("y", {py.get()}, note);
  Schedular().RegisterEvent(x.get());
  Schedular().RegisterEvent(y.get());
  RkTask* const queue[] = {y2.get(), x1.get(), stray.get(), py.get(),    px.get(),
                           y.get(),  x.get(),  x2.get(),    stray.get(), y1.get()};
  for (RkTask* task : queue) Pool().AddTask(task);

  EXPECT_EQ(Pool().RemoveQueued("x"), 6u);
  EXPECT_EQ(Pool().GetQueuedCount(), 4u);
  EXPECT_EQ(x1->GetState(), kTaskStateCreated);
  RunningPool pool(1);
  log.WaitFor("y1");
  EXPECT_THAT(log.Entries(), ElementsAre("y2", "py", "y", "y1"));
}

TEST(PoolQueue, RemoveQueuedDropsTheQueuesReferences) {
  {
    const TaskPtr task = MakeTask("stray", [](RkTask*) {});
    Pool().AddTask(task.get());
    Pool().AddTask(task.get());
  }
  EXPECT_EQ(LiveBodies(), 1);
  EXPECT_EQ(Pool().RemoveQueued("any"), 2u);
  EXPECT_EQ(LiveBodies(), 0);
}

TEST(PoolQueue, ListRunningReturnsThePlainTasksOfAnEventInTheOrderOfTheirStart) {
  Pool().FreeTaskList(nullptr);
  uint32_t count = 77;
  EXPECT_EQ(Pool().ListRunning("a", count), nullptr);
  EXPECT_EQ(count, 0u);

  RunningPool pool(5);
  Gate gates[5];
  const auto wait = [](Gate& gate) { return [&gate](RkTask*) { gate.Wait(); }; };
  TaskPtr a1 = MakeTask("a1", wait(gates[0]));
  const TaskPtr b1 = MakeTask("b1", wait(gates[1]));
  TaskPtr a2 = MakeTask("a2", wait(gates[2]));
  const TaskPtr stray = MakeTask("stray", wait(gates[3]));
  PackagePtr pa = MakePackage({a1.get(), a2.get()});
  const PackagePtr pb = MakePackage({b1.get()});
  EventPtr a = MakeEvent("a", {pa.get()}, wait(gates[4]));
  const EventPtr b = MakeEvent("b", {pb.get()});
  Schedular().RegisterEvent(a.get());
  Schedular().RegisterEvent(b.get());
  RkTask* const order[] = {a1.get(), b1.get(), a2.get(), stray.get(), a.get()};
  for (size_t i = 0; i < 5; ++i) {
    Pool().AddTask(order[i]);
    gates[i].WaitForArrivals(1);
  }

  ListPtr list(Pool().ListRunning("a", count));
  EXPECT_EQ(count, 2u);
  EXPECT_THAT(NamesOf(list.get()), ElementsAre("a1", "a2"));
  EXPECT_EQ(Pool().ListRunning("none", count), nullptr);
  EXPECT_EQ(count, 0u);

  // The list keeps its tasks alive on its own.
  Schedular().RemoveEvent("a");
  for (Gate& gate : gates) gate.Open();
  Eventually([] { return IdleWorkers() == 5; });
  pool.Stop();
  a1.reset();
  a2.reset();
  pa.reset();
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

TEST(PoolLife, WithoutWorkersNothingRunsAndStopReleasesIt) {
  Pool().Start(0);
  EXPECT_EQ(Pool().GetThreadCount(), 0u);
  std::atomic<bool> ran{false};
  for (int i = 0; i < 3; ++i) Pool().AddFunc(MakeFunc([&ran](RkTask*) { ran = true; }).get());
  BeQuiet();
  EXPECT_EQ(Pool().GetQueuedCount(), 3u);
  EXPECT_EQ(LiveBodies(), 3);
  Pool().Stop();
  EXPECT_FALSE(ran);
  EXPECT_EQ(LiveBodies(), 0);
}

TEST(PoolLife, StopWaitsForRunningFunctionsAndDropsQueuedTasks) {
  Pool().Start(2);
  Gate gate;
  std::atomic<int> returned{0};
  std::atomic<int> late{0};
  for (int i = 0; i < 2; ++i) {
    Pool().AddFunc(MakeFunc([&](RkTask*) {
                     gate.Wait();
                     ++returned;
                   }).get());
  }
  gate.WaitForArrivals(2);
  for (int i = 0; i < 20; ++i) Pool().AddFunc(MakeFunc([&late](RkTask*) { ++late; }).get());
  StopAndOpen(gate);
  EXPECT_EQ(returned, 2);
  EXPECT_EQ(late, 0);
  EXPECT_EQ(LiveBodies(), 0);
}

// What comes too late is dropped, not kept: it may be a report of a task that Stop waited for.
TEST(PoolLife, TasksAddedWhileItStopsNeverRun) {
  Pool().Start(1);
  Gate gate;
  std::atomic<bool> ran{false};
  Pool().AddFunc(MakeFunc([&](RkTask*) {
                   gate.Wait();
                   Pool().AddFunc(MakeFunc([&ran](RkTask*) { ran = true; }).get());
                 }).get());
  gate.WaitForArrivals(1);
  StopAndOpen(gate);
  EXPECT_FALSE(ran);
  EXPECT_EQ(LiveBodies(), 0);
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

TEST(PoolLife, AnEventThatStopCutOffStaysRegistered) {
  Pool().Start(1);
  Gate gate;
  std::atomic<bool> secondRan{false};
  const Job job("cut", {{"first", gate.Then(Succeed)},
                        {"second", [&secondRan](RkTask*) { secondRan = true; }}});
  job.Add();
  gate.WaitForArrivals(1);
  StopAndOpen(gate);
  EXPECT_FALSE(secondRan);
  EXPECT_EQ(job[0]->GetState(), kTaskStateSucceeded);
  EXPECT_EQ(Schedular().GetEventCount(), 1u);
}

}  // namespace
