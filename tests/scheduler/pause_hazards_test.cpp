// Pauses and cancels that meet at awkward moments. Each of these once could have waited for ever;
// each TEST runs in a process of its own, since the pool starts once.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include "support/gate.h"
#include "support/task_tree.h"
#include "temvar/task_pool.h"
#include "temvar/task_schedular.h"

namespace temvar {
namespace {

using temvar_tests::Eventually;
using temvar_tests::Gate;
using temvar_tests::LetOthersRun;
using temvar_tests::MakeEvent;
using temvar_tests::MakePackage;
using temvar_tests::MakeTask;

class PauseHazards : public testing::Test {
 public:
  ~PauseHazards() override { Pool()->Stop(); }

  static RkTaskPool* Pool() { return TmvTaskPool(); }
  static RkTaskSchedular* Schedular() { return TmvTaskSchedular(); }

  // An event called `name` of one package of one task, called `name` + "1".
  static Ref<RkTaskEventImpl> MakeJob(const std::string& name, BoundCall body) {
    const auto task = MakeTask(name + "1", kTaskStateCreated, std::move(body));
    const auto package = MakePackage({task.get()});
    return MakeEvent(name, {package.get()});
  }

  // Reports until the report counts: one that meets a pause is lost.
  static void ReportSuccess(RkTask* task) {
    do {
      task->ReportState(task, kTaskStateSucceeded);
    } while (task->GetState() == kTaskStateActive);
  }

  static std::thread PauseInBackground(const char* name, Gate& paused) {
    return std::thread([name, &paused] {
      Schedular()->PauseEvent(name);
      paused.Open();
    });
  }

  Gate inside;
  Gate leave;
};

TEST_F(PauseHazards, PauseWaitsForTheTaskAndSurvivesASecondPause) {
  Pool()->Start(1);
  auto event = MakeJob("e", [this](RkTask* task) {
    inside.Open();
    EXPECT_TRUE(leave.Wait());
    ReportSuccess(task);
  });
  Schedular()->AddEvent(event.get());
  ASSERT_TRUE(inside.Wait());
  Gate paused;
  std::thread pauser = PauseInBackground("e", paused);
  LetOthersRun();
  EXPECT_FALSE(paused.IsOpen());
  leave.Open();
  EXPECT_TRUE(paused.Wait());
  pauser.join();
  Schedular()->PauseEvent("e");  // Its task is parked already and arrives nowhere.
  Schedular()->ResumeEvent("e");
  EXPECT_TRUE(Eventually([] { return Schedular()->GetEventCount() == 0; }));
  EXPECT_EQ(event->GetState(), kTaskStateSucceeded);
}

TEST_F(PauseHazards, AWaitingPauseEndsWithTheTaskAndWithTheEvent) {
  using Ending = void (*)(PauseHazards&);
  const struct {
    const char* what;
    Ending end;
  } endings[] = {
      {"resume", [](PauseHazards&) { Schedular()->ResumeEvent("e"); }},
      {"remove", [](PauseHazards&) { Schedular()->RemoveEvent("e"); }},
      {"cancel", [](PauseHazards&) { Schedular()->CancelEvent("e"); }},
      {"cancel, kept", [](PauseHazards&) { Schedular()->CancelEventEx("e", false); }},
      {"task returns without a report", [](PauseHazards& test) { test.leave.Open(); }},
  };
  Pool()->Start(2);
  for (const auto& ending : endings) {
    SCOPED_TRACE(ending.what);
    Gate started;
    Gate finish;
    std::atomic<bool> returned{false};
    auto event = MakeJob("e", [&](RkTask*) {
      started.Open();
      Eventually([&] { return finish.IsOpen() || leave.IsOpen(); });
      returned = true;
    });
    Schedular()->AddEvent(event.get());
    ASSERT_TRUE(started.Wait());
    Gate paused;
    std::thread pauser = PauseInBackground("e", paused);
    LetOthersRun();
    EXPECT_FALSE(paused.IsOpen());
    ending.end(*this);
    EXPECT_TRUE(paused.Wait());
    pauser.join();
    finish.Open();
    EXPECT_TRUE(Eventually([&] { return returned.load(); }));
    EXPECT_TRUE(Eventually([] {
      uint32_t count = 0;
      Pool()->FreeTaskList(Pool()->ListRunning("e", count));
      return count == 0;
    }));
    Schedular()->RemoveEvent("e");
  }
}

TEST_F(PauseHazards, ATaskMayPauseItsOwnEvent) {
  Pool()->Start(1);
  auto event = MakeJob("e", [this](RkTask* task) {
    Schedular()->PauseEvent("e");
    inside.Open();
    ReportSuccess(task);
  });
  Schedular()->AddEvent(event.get());
  ASSERT_TRUE(inside.Wait());
  EXPECT_EQ(Schedular()->GetEventCount(), 1u);
  Schedular()->ResumeEvent("e");
  EXPECT_TRUE(Eventually([] { return Schedular()->GetEventCount() == 0; }));
}

// A report may pass the look of ReportState and meet the pause inside the completion step.
TEST_F(PauseHazards, CompletionThatMeetsAPauseParksAndDoesNotBlockTheResume) {
  Pool()->Start(1);
  auto event = MakeJob("e", [](RkTask*) {});
  const auto task = Ref<RkTaskImpl>::Adopt(event->FindTask(TaskName("e1")));
  task->AddRef();
  Schedular()->RegisterEvent(event.get());
  task->SetState(kTaskStatePaused);
  Gate finished;
  std::thread reporter([&] {
    Schedular()->TaskFinished(task.get());
    finished.Open();
  });
  LetOthersRun();
  EXPECT_FALSE(finished.IsOpen());
  EXPECT_EQ(Schedular()->GetEventCount(), 1u);  // The registry is free meanwhile.
  Schedular()->ResumeEvent("e");
  EXPECT_TRUE(finished.Wait());
  reporter.join();
  EXPECT_EQ(task->State(), kTaskStateSucceeded);
}

// The first cancel takes queued tasks without an event out of the queue, but not the cancels behind
// it.
TEST_F(PauseHazards, CancelsInARowAllCallTheirEvents) {
  Pool()->Start(1);
  std::atomic<int> calls{0};
  Ref<RkTaskEventImpl> events[3];
  for (int i = 0; i < 3; ++i) {
    events[i] = MakeJob(std::string(1, static_cast<char>('a' + i)), [this](RkTask*) {
      inside.Open();
      EXPECT_TRUE(leave.Wait());
    });
    events[i]->SetFunc(MakeBoundFunc([&calls](RkTask*) { ++calls; }).get());
    Schedular()->AddEvent(events[i].get());
  }
  ASSERT_TRUE(inside.Wait());
  for (const char* name : {"a", "b", "c"}) Schedular()->CancelEvent(name);
  leave.Open();
  EXPECT_TRUE(Eventually([&] { return calls == 3; }));
  for (const auto& event : events) EXPECT_EQ(event->State(), kTaskStateCancelled);
}

}  // namespace
}  // namespace temvar
