// Workers of a host's own.
#include <gmock/gmock.h>
#include <temvar/handles.h>

#include <algorithm>

#include "support/host_job.h"

namespace {

using namespace test;

// A worker of the host's own that serves the pool.
tmv::Thread MakeStarted() {
  tmv::Thread thread = tmv::MakeThread();
  thread->SetPool(TmvTaskPool());
  thread->Start();
  return thread;
}

// For a call that throws this error of the system.
auto ThrowsError(std::errc error) {
  return testing::Throws<std::system_error>(
      testing::Property(&std::system_error::code, std::make_error_code(error)));
}

// A wake-up without an assignment must not enter the worker a second time.
TEST(TaskThread, EntersTheIdleQueueOnceAndStopsWhileAsleep) {
  const tmv::Thread thread = MakeStarted();
  Eventually([] { return IdleWorkers() == 1; });
  for (int i = 0; i < 20; ++i) thread->Wake();
  BeQuiet();
  EXPECT_EQ(IdleWorkers(), 1u);
  EXPECT_EQ(thread->ReservedValue(), 0);
  thread->Stop();
  EXPECT_EQ(IdleWorkers(), 0u);
  EXPECT_THAT([&thread] { thread->Join(); }, ThrowsError(std::errc::invalid_argument));
  DestroyRkTaskThread(nullptr);
}

// Before Start tasks wait, and only a pass by hand pairs one; from Start on they need none.
TEST(TaskThread, BeforeStartItIsAssignedWhatAPassByHandPairs) {
  const tmv::Thread thread = MakeStarted();
  Eventually([] { return IdleWorkers() == 1; });
  std::atomic<int> ran{0};
  for (int i = 0; i < 3; ++i) Pool().AddFunc(MakeFunc([&ran](RkTask*) { ++ran; }).get());
  BeQuiet();
  EXPECT_EQ(ran, 0);
  uint32_t pending = 0;
  uint32_t idle = 0;
  Pool().DispatchOne(pending, idle);
  EXPECT_EQ(pending, 2u);
  Eventually([&ran] { return ran == 1; });
  BeQuiet();
  EXPECT_EQ(ran, 1);
  EXPECT_EQ(Pool().GetQueuedCount(), 2u);
  const RunningPool pool(0);
  EXPECT_EQ(Pool().GetThreadCount(), 0u);
  Eventually([&ran] { return ran == 3; });
  thread->Stop();
}

TEST(TaskThread, BeginsNothingOnceItsStopHasAsked) {
  const RunningPool pool(0);
  const tmv::Thread thread = MakeStarted();
  Gate gate;
  std::atomic<int> late{0};
  Pool().AddFunc(MakeFunc([&gate, &thread](RkTask*) {
                   const auto deadlock = ThrowsError(std::errc::resource_deadlock_would_occur);
                   EXPECT_THAT([&thread] { thread->Join(); }, deadlock);
                   gate.Wait();
                   EXPECT_THAT([&thread] { thread->Stop(); }, deadlock);
                 }).get());
  gate.WaitForArrivals(1);
  for (int i = 0; i < 200; ++i) Pool().AddFunc(MakeFunc([&late](RkTask*) { ++late; }).get());
  Call stop([&thread] { thread->Stop(); });
  BeQuiet();
  EXPECT_FALSE(stop.IsDone());
  gate.Open();
  stop.WaitForReturn();
  EXPECT_EQ(late, 0);
  EXPECT_EQ(Pool().GetQueuedCount(), 200u);
}

TEST(TaskThread, LetsAHostLockItBetweenTwoCallbacksThoughItNeverSleeps) {
  const RunningPool pool(0);
  const tmv::Thread thread = MakeStarted();
  int inside = 0;  // The worker's mutex guards it.
  const Body again = [&inside](RkTask* task) {
    EXPECT_EQ(++inside, 1);
    Pool().AddTask(task);
    --inside;
  };
  Pool().AddFunc(MakeFunc(again).get());
  thread->Lock();
  EXPECT_EQ(++inside, 1);
  BeQuiet();
  --inside;
  thread->Unlock();
  thread->Stop();
}

// A worker may have its next task already when Stop comes to it.
TEST(TaskThread, ATaskThatItsStopKeptFromBeginningGoesBackToItsPlace) {
  const RunningPool pool(0);
  std::vector<size_t> begun;
  std::vector<Step> steps;
  for (size_t i = 0; i < 500; ++i) {
    steps.push_back({"task " + std::to_string(i), [&begun, i](RkTask*) { begun.push_back(i); }});
  }
  const Job job("event", steps);
  Schedular().RegisterEvent(job.event.get());
  for (int round = 0; round < 100 && !HasFailure(); ++round) {
    begun.clear();
    for (size_t i = 0; i < steps.size(); ++i) Pool().AddTask(job[i]);
    while (Pool().GetQueuedCount() > 0) {
      const uint32_t before = Pool().GetQueuedCount();
      const tmv::Thread thread = MakeStarted();
      Eventually([before] { return Pool().GetQueuedCount() < before; });
      thread->Stop();
      uint32_t running = 0;
      Pool().FreeTaskList(Pool().ListRunning("event", running));
      ASSERT_EQ(running, 0u);
    }
    ASSERT_EQ(begun.size(), steps.size());
    EXPECT_TRUE(std::is_sorted(begun.begin(), begun.end()));
  }
}

// The pool's own worker is idle when one that leaves returns the job's only queued task.
TEST(TaskThread, AJobEndsWhileWorkersComeAndGo) {
  const RunningPool pool(1);
  for (int round = 0; round < 20 && !HasFailure(); ++round) {
    std::atomic<bool> ended{false};
    const Job job("event", std::vector<Step>(200, Step{"task", Succeed}),
                  [&ended](RkTask*) { ended = true; });
    for (size_t i = 0; i < 200; ++i) job[i]->SetNameNumber(static_cast<int64_t>(i + 1));
    job.Add();
    for (int worker = 0; worker < 10; ++worker) {
      const tmv::Thread thread = MakeStarted();
      std::this_thread::yield();
      thread->Stop();
    }
    EXPECT_TRUE(Eventually([&ended] { return ended.load(); })) << "round " << round;
  }
}

}  // namespace
