// The pool as its clients see it: the order of tasks and of workers, and what it does with odd
// ones.
#include <gmock/gmock.h>

#include <map>
#include <thread>

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

}  // namespace
