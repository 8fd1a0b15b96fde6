// Cancelling events: what stops, what is called, what is forgotten.
#include <deque>

#include "pausable.h"

namespace {

using namespace test;

// On a pool of two workers, one of them blocked: an event called "event" whose first package runs
// (its second task waits at the gate, with another after it), and whose second one is queued. A
// cancel takes its turn after that.
class Cancelled : public testing::Test {
 protected:
  void StartJob() {
    blocker_.HoldWorker();
    job_.event->AddPackage(second_.package.get());
    job_.Add();
    gate_.WaitForArrivals(1);
  }

  void TearDown() override {
    blocker_.Open();
    gate_.Open();
  }

  Gate gate_;
  Gate blocker_;
  std::atomic<bool> waitingRan_{false};
  std::atomic<int> calls_{0};
  std::atomic<int32_t> stateAtCall_{-1};

  const Job job_{"event",
                 {{"done", Succeed},
                  {"running", gate_.Then(Succeed)},
                  {"waiting", [this](RkTask*) { waitingRan_ = true; }}},
                 [this](RkTask* event) {
                   stateAtCall_ = event->GetState();
                   Succeed(event);
                   ++calls_;
                 }};
  const Job second_{"second", {{"queued", [](RkTask*) {}}}};
  RkTask* const running_ = job_[1];
  RkTask* const waiting_ = job_[2];
  RunningPool pool_{2};
};

TEST_F(Cancelled, WithRemovalTheEventIsForgottenAtOnceAndCalledOnce) {
  StartJob();
  Schedular().CancelEvent("event");
  EXPECT_EQ(Schedular().GetEventCount(), 0u);
  EXPECT_EQ(TaskPtr(Schedular().FindEvent("event")), nullptr);
  EXPECT_EQ(calls_, 0);  // No worker is free.
  Schedular().CancelEvent("event");
  blocker_.Open();
  Eventually([this] { return calls_ == 1; });
  EXPECT_EQ(stateAtCall_, kTaskStateCancelled);
  EXPECT_EQ(job_.event->GetState(), kTaskStateCancelled);
  EXPECT_EQ(running_->GetState(), kTaskStateCancelled);
  EXPECT_EQ(waiting_->GetState(), kTaskStateCreated);
  EXPECT_EQ(second_[0]->GetState(), kTaskStateCancelled);
  gate_.Open();
  Eventually([] { return IdleWorkers() == 2; });
  EXPECT_EQ(running_->GetState(), kTaskStateCancelled);
  EXPECT_EQ(job_.package->GetState(), kTaskStateCreated);
  EXPECT_EQ(job_.package->GetCurrentIndex(), 1u);
  EXPECT_EQ(calls_, 1);

  EXPECT_TRUE(Schedular().IsTaskCancelled("running"));
  EXPECT_TRUE(Schedular().IsTaskCancelled("queued"));
  for (const char* name : {"done", "waiting", "event", "never used"}) {
    EXPECT_FALSE(Schedular().IsTaskCancelled(name)) << name;
  }
}

TEST_F(Cancelled, WithoutRemovalTheCallWaitsForRunningTasks) {
  running_->SetName("0");  // Like the cancel itself, which waits for this task alone.
  StartJob();
  Schedular().CancelEventEx("event", false);
  Schedular().ScheduleTask(waiting_);  // Queued after the cancel, which takes it out.
  blocker_.Open();
  Eventually([this] { return running_->GetState() == kTaskStateCancelled; });
  BeQuiet();
  EXPECT_EQ(calls_, 0);
  gate_.Open();
  Eventually([this] { return calls_ == 1; });
  EXPECT_EQ(stateAtCall_, kTaskStateCancelled);
  EXPECT_FALSE(waitingRan_);
  EXPECT_EQ(waiting_->GetState(), kTaskStateCancelled);
  EXPECT_EQ(Schedular().GetEventCount(), 1u);
  EXPECT_EQ(TaskPtr(Schedular().FindEvent("event")).get(), job_.event.get());

  Schedular().CancelEventEx("event", false);
  Eventually([this] { return calls_ == 2; });
  Schedular().RemoveEvent("event");
  EXPECT_EQ(Schedular().GetEventCount(), 0u);
}

// A paused task is not active: the cancel passes it by, and a resume lets it end.
TEST(CancelEvent, AParkedTaskIsPassedByAndWakesOnResume) {
  Pausable event("event");
  event.silent = true;
  RunningPool pool(2);
  event.Start();
  event.PauseWhole();
  Schedular().CancelEventEx("event", false);
  BeQuiet();
  EXPECT_EQ(event.State(), kTaskStatePaused);
  EXPECT_EQ(event.event()->GetState(), kTaskStateCreated);  // The cancel waits for it.
  event.Resume();
  Eventually([&event] { return event.event()->GetState() == kTaskStateCancelled; });
  EXPECT_EQ(event.passed, 1);
}

// In every second round the event may end by itself meanwhile.
TEST(CancelEvent, CallsItsEventOnceWhenItsEntryHasGone) {
  {
    std::deque<Job> jobs;
    RunningPool pool(2);
    for (int round = 0; round < 400 && !HasFailure(); ++round) {
      std::atomic<int> calls{0};
      std::atomic<int> found{0};
      const Body end = [&calls, &found](RkTask*) {
        if (TaskPtr(Schedular().FindEvent("event")) != nullptr) ++found;
        ++calls;
      };
      const Step step{"task " + std::to_string(round), round % 2 == 0 ? Succeed : [](RkTask*) {}};
      jobs.emplace_back("event", std::vector<Step>{step}, end).Add();
      Schedular().CancelEvent("event");
      Eventually([&calls] { return calls > 0; });
      // The next event of the name is added while the cancel returns, and costs no reference.
      if (round % 10 == 0) Eventually([] { return IdleWorkers() == 2; });
      EXPECT_EQ(found, 0);
      EXPECT_EQ(calls, 1);
    }
  }
  EXPECT_EQ(LiveBodies(), 0);
}

TEST(CancelEventOfTask, FindsTheEventOfANestedTask) {
  RunningPool pool(1);
  const TaskPtr leaf = MakeTask("leaf");
  const PackagePtr inner = MakePackage({leaf.get()});
  std::atomic<int> calls{0};
  const Job job("event", MakePackage({inner.get()}), [&calls](RkTask*) { ++calls; });
  Schedular().RegisterEvent(job.event.get());
  EXPECT_FALSE(Schedular().CancelEventOfTask("none"));
  EXPECT_FALSE(Schedular().CancelEventOfTask("event"));
  EXPECT_TRUE(Schedular().CancelEventOfTask("leaf"));
  EXPECT_FALSE(Schedular().CancelEventOfTask("leaf"));
  Eventually([&calls] { return calls == 1; });
  EXPECT_EQ(job.event->GetState(), kTaskStateCancelled);
  EXPECT_EQ(leaf->GetState(), kTaskStateCreated);
}

// A cancel that Stop keeps from running lets go of its event all the same.
TEST(CancelEvent, DropsItsReferenceWhenItNeverRuns) {
  Pool().Start(0);
  {
    const Job job("event", {{"task", Succeed}}, Succeed);
    job.Add();
    Schedular().CancelEvent("event");
  }
  EXPECT_EQ(LiveBodies(), 2);
  Pool().Stop();
  EXPECT_EQ(LiveBodies(), 0);
}

}  // namespace
