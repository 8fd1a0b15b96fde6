// Workers that stand alone.
#include <gtest/gtest.h>
#include <temvar/temvar.h>

#include <atomic>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "support/host_job.h"

namespace {

using namespace test;

using ThreadPtr = std::unique_ptr<RkTaskThread, decltype(&DestroyRkTaskThread)>;

ThreadPtr MakeThread() { return {CreateRkTaskThread(), &DestroyRkTaskThread}; }

// Whether the call throws this error of the system.
template <typename Call>
void ExpectError(std::errc expected, Call call) {
  try {
    call();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code(), expected);
  }
}

TEST(TaskThread, IsFreedBeforeItWasStarted) {
  DestroyRkTaskThread(nullptr);
  const ThreadPtr thread = MakeThread();
  EXPECT_EQ(thread->ReservedValue(), 0);
  thread->Lock();
  thread->Unlock();
  thread->Wake();
}

TEST(TaskThread, JoinWithoutAThreadThrows) {
  const ThreadPtr thread = MakeThread();
  ExpectError(std::errc::invalid_argument, [&thread] { thread->Join(); });
}

// A wake-up without an assignment must not enter the worker a second time.
TEST(TaskThread, EntersTheIdleQueueOnceAndStopsWhileAsleep) {
  const ThreadPtr thread = MakeThread();
  thread->SetPool(TmvTaskPool());
  thread->Start();
  Eventually([] { return IdleWorkers() == 1; });
  for (int i = 0; i < 20; ++i) thread->Wake();
  BeQuiet();
  EXPECT_EQ(IdleWorkers(), 1u);
  EXPECT_EQ(thread->ReservedValue(), 0);
  thread->Stop();
  EXPECT_EQ(IdleWorkers(), 0u);
  EXPECT_THROW(thread->Join(), std::system_error);
}

TEST(TaskThread, RunsWhatThePoolAssignsAndStopWaitsForIt) {
  const ThreadPtr thread = MakeThread();
  thread->SetPool(TmvTaskPool());
  thread->Start();
  Eventually([] { return IdleWorkers() == 1; });
  Gate gate;
  Pool().AddFunc(MakeFunc([&gate, &thread](RkTask*) {
                   const auto deadlock = std::errc::resource_deadlock_would_occur;
                   ExpectError(deadlock, [&thread] { thread->Join(); });
                   gate.Wait();
                   ExpectError(deadlock, [&thread] { thread->Stop(); });
                 }).get());
  uint32_t pending = 0;
  uint32_t idle = 0;
  Pool().DispatchOne(pending, idle);
  gate.WaitForArrivals(1);
  Call stop([&thread] { thread->Stop(); });
  BeQuiet();
  EXPECT_FALSE(stop.IsDone());
  gate.Open();
  stop.WaitForReturn();
}

// A worker has its next task already when it comes to the gap in which Stop gets it.
TEST(TaskThread, ATaskThatItsStopKeptFromBeginningIsNotAmongTheRunning) {
  std::atomic<int> begun{0};
  std::vector<Step> steps;
  for (int i = 0; i < 500; ++i) {
    steps.push_back({"task " + std::to_string(i), [&begun](RkTask*) { ++begun; }});
  }
  const Job job("event", steps);
  Schedular().RegisterEvent(job.event.get());
  for (int round = 0; round < 100; ++round) {
    const ThreadPtr thread = MakeThread();
    thread->SetPool(TmvTaskPool());
    for (size_t i = 0; i < steps.size(); ++i) Pool().AddTask(job[i]);
    begun = 0;
    thread->Start();
    while (begun == 0) std::this_thread::yield();
    thread->Stop();
    uint32_t running = 0;
    Pool().FreeTaskList(Pool().ListRunning("event", running));
    ASSERT_EQ(running, 0u);
  }
  Pool().RemoveQueued("event");
}

}  // namespace
