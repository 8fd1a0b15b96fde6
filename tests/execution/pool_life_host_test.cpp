// Start and stop of the pool. Each TEST is a process: the pool lives once.
#include <system_error>

#include "support/host_job.h"

namespace {

using namespace test;

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
