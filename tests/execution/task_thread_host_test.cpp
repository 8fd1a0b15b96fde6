// Workers that stand alone.
#include <gtest/gtest.h>
#include <temvar/temvar.h>

#include <memory>
#include <system_error>

#include "support/host_job.h"

namespace {

using test::Eventually;
using test::IdleWorkers;

struct DestroyThread {
  void operator()(RkTaskThread* thread) const { DestroyRkTaskThread(thread); }
};
using ThreadPtr = std::unique_ptr<RkTaskThread, DestroyThread>;

TEST(TaskThread, IsFreedBeforeItWasStarted) {
  DestroyRkTaskThread(nullptr);
  const ThreadPtr thread(CreateRkTaskThread());
  EXPECT_EQ(thread->ReservedValue(), 0);
  thread->Lock();
  thread->Unlock();
  thread->Wake();
}

TEST(TaskThread, JoinWithoutAThreadThrows) {
  const ThreadPtr thread(CreateRkTaskThread());
  try {
    thread->Join();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code(), std::errc::invalid_argument);
  }
}

// A wake-up without an assignment must not enter the worker a second time.
TEST(TaskThread, EntersTheIdleQueueOnceAndStopsWhileAsleep) {
  const ThreadPtr thread(CreateRkTaskThread());
  thread->SetPool(TmvTaskPool());
  thread->Start();
  Eventually([] { return IdleWorkers() == 1; });
  for (int i = 0; i < 20; ++i) thread->Wake();
  test::BeQuiet();
  EXPECT_EQ(IdleWorkers(), 1u);
  EXPECT_EQ(thread->ReservedValue(), 0);
  thread->Stop();
  EXPECT_EQ(IdleWorkers(), 0u);
  EXPECT_THROW(thread->Join(), std::system_error);
}

TEST(TaskThread, RunsWhatThePoolAssignsAndStopWaitsForIt) {
  const ThreadPtr thread(CreateRkTaskThread());
  thread->SetPool(TmvTaskPool());
  thread->Start();
  Eventually([] { return IdleWorkers() == 1; });
  test::Gate gate;
  TmvTaskPool()->AddFunc(test::MakeFunc([&gate, &thread](RkTask*) {
                           try {
                             thread->Join();
                             ADD_FAILURE() << "nothing was thrown";
                           } catch (const std::system_error& error) {
                             EXPECT_EQ(error.code(), std::errc::resource_deadlock_would_occur);
                           }
                           gate.Wait();
                         }).get());
  uint32_t pending = 0;
  uint32_t idle = 0;
  TmvTaskPool()->DispatchOne(pending, idle);
  gate.WaitForArrivals(1);
  test::Call stop([&thread] { thread->Stop(); });
  test::BeQuiet();
  EXPECT_FALSE(stop.IsDone());
  gate.Open();
  stop.WaitForReturn();
}

}  // namespace
