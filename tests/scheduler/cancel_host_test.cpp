// Cancelling events: what stops, what is called, what is forgotten.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <temvar/temvar.h>

#include "support/host_job.h"

namespace {

using test::BeQuiet;
using test::EventPtr;
using test::Eventually;
using test::Gate;
using test::MakeEvent;
using test::MakePackage;
using test::MakeTask;
using test::PackagePtr;
using test::RunningPool;
using test::TaskPtr;

RkTaskSchedular& Schedular() { return *TmvTaskSchedular(); }

// On a pool of two workers, one of them blocked: an event called "event" whose first package runs
// (its task waits at the gate, with another behind it), and whose second one is queued. A cancel
// takes its turn behind that.
class Cancelled : public testing::Test {
 protected:
  void StartJob() {
    TmvTaskPool()->AddTask(blocker_.get());
    blockerGate_.WaitForArrivals(1);
    Schedular().AddEvent(event_.get());
    gate_.WaitForArrivals(1);
  }
  void TearDown() override {
    blockerGate_.Open();
    gate_.Open();
    Schedular().RemoveEvent("event");
  }

  Gate gate_;
  Gate blockerGate_;
  std::atomic<bool> waitingRan_{false};
  std::atomic<int> calls_{0};
  std::atomic<int32_t> stateAtCall_{-1};

  TaskPtr blocker_ = MakeTask("blocker", [this](RkTask*) { blockerGate_.Wait(); });
  TaskPtr running_ = MakeTask("running", [this](RkTask* task) {
    gate_.Wait();
    task->ReportState(task, kTaskStateSucceeded);
  });
  TaskPtr waiting_ = MakeTask("waiting", [this](RkTask*) { waitingRan_ = true; });
  TaskPtr queued_ = MakeTask("queued", [](RkTask*) {});
  PackagePtr first_ = MakePackage({running_.get(), waiting_.get()});
  PackagePtr second_ = MakePackage({queued_.get()});
  EventPtr event_ = MakeEvent("event", {first_.get(), second_.get()}, [this](RkTask* event) {
    stateAtCall_ = event->GetState();
    event->ReportState(event, kTaskStateSucceeded);
    ++calls_;
  });
  RunningPool pool_{2};
};

TEST_F(Cancelled, WithRemovalTheEventIsForgottenAtOnceAndCalledOnce) {
  StartJob();
  Schedular().CancelEvent("event");
  EXPECT_EQ(Schedular().GetEventCount(), 0u);
  EXPECT_EQ(TaskPtr(Schedular().FindEvent("event")), nullptr);
  EXPECT_EQ(calls_, 0);  // No worker is free.
  Schedular().CancelEvent("event");
  blockerGate_.Open();
  Eventually([this] { return calls_ == 1; });
  EXPECT_EQ(stateAtCall_, kTaskStateCancelled);
  EXPECT_EQ(event_->GetState(), kTaskStateCancelled);
  EXPECT_EQ(running_->GetState(), kTaskStateCancelled);
  EXPECT_EQ(waiting_->GetState(), kTaskStateCreated);
  EXPECT_EQ(queued_->GetState(), kTaskStateCancelled);
  gate_.Open();
  Eventually([] { return test::IdleWorkers() == 2; });
  EXPECT_EQ(running_->GetState(), kTaskStateCancelled);
  EXPECT_EQ(first_->GetState(), kTaskStateCreated);
  EXPECT_EQ(first_->GetCurrentIndex(), 0u);
  EXPECT_EQ(calls_, 1);

  EXPECT_TRUE(Schedular().IsTaskCancelled("running"));
  EXPECT_TRUE(Schedular().IsTaskCancelled("queued"));
  EXPECT_FALSE(Schedular().IsTaskCancelled("waiting"));
  EXPECT_FALSE(Schedular().IsTaskCancelled("blocker"));
  EXPECT_FALSE(Schedular().IsTaskCancelled("event"));
  EXPECT_FALSE(Schedular().IsTaskCancelled("never used"));
}

TEST_F(Cancelled, WithoutRemovalTheCallWaitsForRunningTasks) {
  StartJob();
  Schedular().CancelEventEx("event", false);
  Schedular().ScheduleTask(waiting_.get());  // Queued behind the cancel, which takes it out.
  blockerGate_.Open();
  Eventually([this] { return running_->GetState() == kTaskStateCancelled; });
  BeQuiet();
  EXPECT_EQ(calls_, 0);
  gate_.Open();
  Eventually([this] { return calls_ == 1; });
  EXPECT_EQ(stateAtCall_, kTaskStateCancelled);
  EXPECT_FALSE(waitingRan_);
  EXPECT_EQ(waiting_->GetState(), kTaskStateCancelled);
  EXPECT_EQ(Schedular().GetEventCount(), 1u);
  EXPECT_EQ(TaskPtr(Schedular().FindEvent("event")).get(), event_.get());

  Schedular().CancelEventEx("event", false);
  Eventually([this] { return calls_ == 2; });
  Schedular().RemoveEvent("event");
  EXPECT_EQ(Schedular().GetEventCount(), 0u);
}

TEST_F(Cancelled, ATaskNamedLikeTheCancelItselfDoesNotHoldItUp) {
  running_->SetName("0");
  StartJob();
  Schedular().CancelEventEx("event", false);
  blockerGate_.Open();
  Eventually([this] { return running_->GetState() == kTaskStateCancelled; });
  gate_.Open();
  Eventually([this] { return calls_ == 1; });
}

TEST_F(Cancelled, ATaskThatEndedBeforeIsNotAmongTheCancelled) {
  gate_.Open();
  blockerGate_.Open();
  const PackagePtr package = MakePackage({running_.get()});
  Gate held;
  const TaskPtr other = MakeTask("other", [&held](RkTask*) { held.Wait(); });
  const PackagePtr second = MakePackage({other.get()});
  std::atomic<bool> done{false};
  const EventPtr event =
      MakeEvent("event", {package.get(), second.get()}, [&done](RkTask*) { done = true; });
  Schedular().AddEvent(event.get());
  Eventually([this] { return running_->GetState() == kTaskStateSucceeded; });
  held.WaitForArrivals(1);
  Schedular().CancelEvent("event");
  held.Open();
  Eventually([&done] { return done.load(); });
  EXPECT_FALSE(Schedular().IsTaskCancelled("running"));
  EXPECT_TRUE(Schedular().IsTaskCancelled("other"));
  Eventually([] { return test::IdleWorkers() == 2; });  // The cancel didn't wait for the task.
}

// A paused task is not active: the cancel passes it by, and a resume lets it end.
TEST_F(Cancelled, AParkedTaskIsPassedByAndWakesOnResume) {
  StartJob();
  gate_.Open();
  Eventually([this] { return running_->GetState() != kTaskStateActive; });
  Gate gate;
  std::atomic<int> stage{0};
  const TaskPtr task = MakeTask("parked", [&](RkTask* self) {
    gate.Wait();
    self->ReportState(self, kTaskStateCreated);
    ++stage;
  });
  const PackagePtr package = MakePackage({task.get()});
  const EventPtr event = MakeEvent("held", {package.get()});
  Schedular().AddEvent(event.get());
  gate.WaitForArrivals(1);
  {
    test::Call pause([] { Schedular().PauseEvent("held"); });
    Eventually([&task] { return task->GetState() == kTaskStatePaused; });
    gate.Open();
    pause.WaitForReturn();
  }
  blockerGate_.Open();  // A worker for the cancel.
  Schedular().CancelEventEx("held", false);
  BeQuiet();
  EXPECT_EQ(task->GetState(), kTaskStatePaused);
  EXPECT_EQ(event->GetState(), kTaskStateCreated);  // The cancel waits for it.
  Schedular().ResumeEvent("held");
  Eventually([&event] { return event->GetState() == kTaskStateCancelled; });
  EXPECT_EQ(stage, 1);
  Schedular().RemoveEvent("held");
}

TEST(CancelEventOfTask, FindsTheEventOfANestedTask) {
  RunningPool pool(1);
  const TaskPtr leaf = MakeTask("leaf");
  const PackagePtr inner = MakePackage({leaf.get()});
  const PackagePtr outer = MakePackage({MakeTask("first").get(), inner.get()});
  std::atomic<int> calls{0};
  const EventPtr event = MakeEvent("event", {outer.get()}, [&calls](RkTask*) { ++calls; });
  Schedular().RegisterEvent(event.get());
  EXPECT_FALSE(Schedular().CancelEventOfTask("none"));
  EXPECT_FALSE(Schedular().CancelEventOfTask("event"));
  EXPECT_TRUE(Schedular().CancelEventOfTask("leaf"));
  EXPECT_FALSE(Schedular().CancelEventOfTask("leaf"));
  Eventually([&calls] { return calls == 1; });
  EXPECT_EQ(event->GetState(), kTaskStateCancelled);
  EXPECT_EQ(leaf->GetState(), kTaskStateCreated);
}

// A cancel that Stop keeps from running lets go of its event all the same.
TEST(CancelEvent, DropsItsReferenceWhenItNeverRuns) {
  TmvTaskPool()->Start(0);
  {
    const TaskPtr task = MakeTask("task", [](RkTask*) {});
    const PackagePtr package = MakePackage({task.get()});
    const EventPtr event = MakeEvent("event", {package.get()}, [](RkTask*) {});
    Schedular().AddEvent(event.get());
    Schedular().CancelEvent("event");
  }
  EXPECT_EQ(test::LiveBodies(), 2);
  TmvTaskPool()->Stop();
  EXPECT_EQ(test::LiveBodies(), 0);
}

}  // namespace
