// The worker against a pool of the test's own, which sees each step.
#include "execution/task_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <system_error>

#include "support/gate.h"
#include "support/task_tree.h"
#include "temvar/task_pool.h"

namespace temvar {
namespace {

using temvar_tests::Eventually;
using temvar_tests::Gate;
using temvar_tests::LetOthersRun;
using temvar_tests::MakeTask;

class FakePool final : public RkTaskPool {
 public:
  std::function<void(RkTaskThreadImpl&)> onIdle = [](RkTaskThreadImpl&) {};
  std::atomic<int> idleReports{0};
  std::atomic<int> marks{0};

  void MarkRunning(RkTaskThread*) override { ++marks; }
  void ThreadIdle(RkTaskThread* thread) override {
    ++idleReports;
    Ref<RkTaskImpl> task;
    Ref<RkTaskFuncImpl> func;
    ToImpl(thread)->TakeAssignment(task, func);
    onIdle(*ToImpl(thread));
  }

  void AddTask(RkTask*) override {}
  void AddFunc(RkTaskFunc*) override {}
  void Start(uint32_t) override {}
  void ReservedOperation() override {}
  void Stop() override {}
  void SetPollInterval(int32_t) override {}
  int32_t GetPollInterval() override { return 0; }
  uint32_t GetThreadCount() override { return 0; }
  void DispatchOne(uint32_t&, uint32_t&) override {}
  uint32_t GetQueuedCount() override { return 0; }
  void WaitForWork() override {}
  uint32_t RemoveQueued(const char*) override { return 0; }
  TaskListNode* ListRunning(const char*, uint32_t&) override { return nullptr; }
  void FreeTaskList(TaskListNode*) override {}
};

class TaskThread : public testing::Test {
 protected:
  TaskThread() { worker->SetPool(&pool); }
  ~TaskThread() override { DestroyRkTaskThread(worker); }

  void Assign(const Ref<RkTaskImpl>& task) {
    worker->Assign(task, task->Func());
    worker->Wake();
  }

  FakePool pool;
  RkTaskThreadImpl* worker = ToImpl(CreateRkTaskThread());
};

TEST_F(TaskThread, ReportsIdleOnceHoweverOftenItIsWoken) {
  worker->Start();
  ASSERT_TRUE(Eventually([this] { return pool.idleReports == 1; }));
  for (int i = 0; i < 10; ++i) worker->Wake();
  LetOthersRun();
  worker->Stop();
  EXPECT_EQ(pool.idleReports, 1);
  EXPECT_EQ(worker->ReservedValue(), 0);
}

TEST_F(TaskThread, AnAssignmentBeforeTheWaitIsNotLost) {
  std::atomic<int> runs{0};
  Gate done;
  const auto task = MakeTask("t", kTaskStateActive, [&](RkTask*) {
    if (++runs == 1000) done.Open();
  });
  pool.onIdle = [&](RkTaskThreadImpl&) {
    if (pool.idleReports <= 1000) Assign(task);
  };
  worker->Start();
  EXPECT_TRUE(done.Wait());
  worker->Stop();
  EXPECT_EQ(runs, 1000);
  EXPECT_EQ(pool.marks, 1000);
}

TEST_F(TaskThread, PassesByATaskWithoutFunction) {
  worker->Start();
  ASSERT_TRUE(Eventually([this] { return pool.idleReports == 1; }));
  Assign(MakeTask("bare"));
  ASSERT_TRUE(Eventually([this] { return pool.idleReports == 2; }));
  worker->Stop();
  EXPECT_EQ(pool.marks, 0);
}

TEST_F(TaskThread, StopWaitsForARunningCallbackAndLooksAtNothingElse) {
  Gate inside;
  Gate leave;
  Gate stopped;
  const auto task = MakeTask("t", kTaskStateActive, [&](RkTask*) {
    inside.Open();
    EXPECT_TRUE(leave.Wait());
    EXPECT_THROW(worker->Stop(), std::system_error);
  });
  worker->Start();
  ASSERT_TRUE(Eventually([this] { return pool.idleReports == 1; }));
  Assign(task);
  ASSERT_TRUE(inside.Wait());
  std::thread stopper([&] {
    worker->Stop();
    stopped.Open();
  });
  LetOthersRun();
  EXPECT_FALSE(stopped.IsOpen());
  leave.Open();
  EXPECT_TRUE(stopped.Wait());
  stopper.join();
}

}  // namespace
}  // namespace temvar
