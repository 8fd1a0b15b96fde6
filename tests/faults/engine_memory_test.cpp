// Memory that runs out in tasks, the scheduler and the pool.
#include <atomic>
#include <memory>
#include <system_error>

#include "faults/out_of_memory.h"
#include "support/host_job.h"

namespace {

using namespace test;

std::string Described(RkTask* task) {
  return std::string(task->GetName()) + "=" + std::to_string(task->GetState()) + " ";
}

TEST(EngineOutOfMemory, Tasks) {
  TaskPtr task;
  PackagePtr package;
  EventPtr event;
  FuncPtr func;
  DataPtr data;
  const auto renew = [&] {
    task = MakeTask("task");
    package = MakePackage({task.get()});
    event = MakeEvent("event", {package.get()});
    func.reset(CreateRkTaskFunc());
    data.reset(CreateRkTaskData());
  };
  const auto state = [&] {
    return Described(task.get()) + Described(event.get()) + std::to_string(package->GetCount()) +
           (func->GetData() == nullptr ? " unbound" : " bound");
  };
  TMVLock* const lock = TmvLock();
  int key = 0;
  OutOfMemory memory{renew, state};

  DO(task->SetName(kLongText));
  DO(task->SetNameNumber(-1'234'567'890'123'456'789));
  DO(task->SetFunc(func.get()); task->SetData(data.get()); task->ClearFunc(); task->ClearData();
     task->SetType(task->GetType()); task->SetState(0), kNever);
  TRY(task->GetState() + task->GetName()[0] + (task->GetFunc() == nullptr) +
          (task->GetData() == nullptr),
      kNever);
  DO(data->SetPayload(&key); data->SetReleaser(nullptr), kNever);
  TRY(data->GetPayload() == &key, kNever);
  DO(func->Bind(&key, nullptr, nullptr));
  DO(func->SetCallback(nullptr, data.get()), kNever);
  TRY((func->GetCallback() == nullptr) + (func->GetData() == nullptr), kNever);
  DO(package->AddTask(task.get()));
  // More than there is room for.
  DO(for (int i = 0; i < 20; ++i) package->InsertTask(task.get(), 0), kKeepsPart);
  TRY(package->GetCount() + package->GetCurrentIndex());
  DO(package->SetContinueOnFailure(true); DestroyRkTask(package->GetFirst());
     DestroyRkTask(package->GetLast()); DestroyRkTask(package->GetPrevious());
     DestroyRkTask(package->GetNext()));
  DO(event->AddPackage(package.get()));
  DO(DestroyRkTask(CreateRkTask()); DestroyRkTask(CreateRkTaskEvent());
     DestroyRkTask(CreateRkTaskPackage()); DestroyRkTaskFunc(CreateRkTaskFunc());
     DestroyRkTaskData(CreateRkTaskData()));
  DO(DestroyRkTask(DuplicateRkTask(task.get())); DuplicateRkTaskFunc(func.get());
     DestroyRkTaskFunc(func.get()); DuplicateRkTaskData(data.get());
     DestroyRkTaskData(data.get()), kNever);
  DO(lock->Lock(&key); lock->Unlock(&key));
}

// A job whose tasks nobody runs: the pool has not been started.
class QueueOutOfMemory : public testing::Test {
 protected:
  ~QueueOutOfMemory() override { Renew(); }

  void Renew() {
    job_.reset();
    pool.RemoveQueued("none");
    inner_ = MakeTask("inner");
    nested_ = MakePackage({inner_.get()});
    job_ = std::make_unique<Job>("event", std::vector<Step>{{"a"}, {"b"}});
    job_->package->AddTask(nested_.get());
    task = (*job_)[0];
    event = job_->event.get();
    filled_ = pool.GetQueuedCount();
  }

  // Until the queue needs memory for the next task.
  void Fill() {
    const TaskPtr stray = MakeTask("stray");
    try {
      const Failing failing(0, true, Failing::kThisThread);
      for (;;) pool.AddTask(stray.get());
    } catch (const std::bad_alloc&) {
    }
    filled_ = pool.GetQueuedCount();
  }

  // All locks of scheduler and pool are free, too. The queue has more than it was filled with, or
  // fewer.
  std::string State() const {
    uint32_t running = 0;
    scheduler.FreeTaskList(pool.ListRunning("event", running));
    return Described(event) + Described(task) + Described((*job_)[1]) + Described(inner_.get()) +
           std::to_string(job_->package->GetCurrentIndex()) + "/" +
           std::to_string(job_->package->GetCount()) + " queued " +
           std::to_string(std::max(-1, static_cast<int>(pool.GetQueuedCount() - filled_))) +
           " events " + std::to_string(scheduler.GetEventCount()) + " running " +
           std::to_string(running) + (scheduler.IsTaskCancelled("a") ? " cancelled" : "");
  }

  RkTaskSchedular& scheduler = Schedular();
  RkTaskPool& pool = Pool();
  RkTask* task = nullptr;
  RkTask* event = nullptr;
  uint32_t filled_ = 0;
  std::unique_ptr<Job> job_;
  TaskPtr inner_;
  PackagePtr nested_;
  OutOfMemory memory{[this] { Renew(); }, [this] { return State(); }};
};

TEST_F(QueueOutOfMemory, SchedulerAndQueue) {
  const FuncPtr func = MakeFunc([](RkTask*) {});
  const TaskPtr added = MakeTask("added");
  const auto start = [&] { job_->Add(); };
  const auto pause = [&] { start(), scheduler.PauseEvent("event"); };
  const auto fill = [&] { Fill(); };
  const auto full = [&] { start(), Fill(); };
  // In the other part of the queue.
  const auto moved = [&] { start(), pool.RemoveQueued("nothing"), Fill(); };

  DO(task->ReportState(task, kTaskStateSucceeded), 0, full);
  DO(task->ReportState(task, kTaskStateFailed), 0, full);
  DO(scheduler.TaskFinished(task), 0, full);
  DO(scheduler.TaskFailed(task), 0, full);
  DO(scheduler.TaskFinished(job_->package.get()), 0, full);
  DO(scheduler.CancelEvent("event"), 0, full);
  DO(scheduler.CancelEventEx("event", false), 0, full);
  TRY(scheduler.CancelEventOfTask("b"), 0, full);
  DO(scheduler.PauseEvent("event"), kKeepsPart, start);
  DO(scheduler.ResumeEvent("event"), kNever, pause);
  DO(scheduler.RegisterEvent(event));
  DO(scheduler.AddEvent(event), kKeepsPart, fill);
  DO(scheduler.ScheduleTask(task), 0, fill);
  DO(scheduler.RemoveEvent("event"), kNever, start);
  DO(scheduler.RemoveEventLocked("event"), kNever, start);
  TRY(scheduler.CheckPause(task) + scheduler.PausePoint(task) + scheduler.PausePointLocked(task) +
          scheduler.IsTaskCancelled("a"),
      kNever, start);
  TRY(scheduler.GetEventCount(), kNever, start);
  DO(DestroyRkTask(scheduler.FindTask("inner")); DestroyRkTask(scheduler.FindEvent("event"));
     DestroyRkTask(scheduler.FindEventOfTask("b"));
     DestroyRkTask(scheduler.FindEventOfPackage(job_->package.get()));
     DestroyRkTask(scheduler.FindPackageOfTask("inner")), kNever, start);
  DO(scheduler.FreeTaskList(scheduler.ListCurrentTasks(event)));
  DO(for (int i = 0; i < 8; ++i) scheduler.InsertTaskAfter(added.get(), task), kKeepsPart, start);
  TRY(scheduler.InsertTaskAfterName(nested_.get(), "a"), 0, start);
  DO(pool.AddTask(task), 0, fill);
  DO(pool.AddFunc(func.get()), 0, fill);
  TRY(pool.RemoveQueued("event") > 0, kKeepsMemory, moved);
  DO(pool.SetPollInterval(pool.GetPollInterval()); pool.ReservedOperation();
     pool.WaitForWork(), kNever, fill);
  TRY(pool.GetQueuedCount() + pool.GetThreadCount(), kNever, fill);
  // After the operations a whole job runs, and what they have left in the queue does no harm.
  Renew();
  const RunningPool running(2);
  Log log;
  const Job whole("whole", {{"first", log.Note()}, {"second", log.Note()}}, log.Note());
  whole.Add();
  EXPECT_TRUE(log.WaitFor("whole"));
  EXPECT_EQ(log.Entries(), std::vector<std::string>({"first", "second", "whole"}));
}

// With a worker that has no thread, whose steps the test takes. It stays in the pool.
TEST_F(QueueOutOfMemory, StepsOfAWorker) {
  static RkTaskThread& worker = *CreateRkTaskThread();
  worker.SetPool(&pool);
  uint32_t count = 0;
  uint32_t idle = 0;
  const auto queue = [&] {
    if (IdleWorkers() == 0) pool.ThreadIdle(&worker);
    job_->Add();
  };
  const auto assign = [&] { queue(), pool.DispatchOne(count, idle); };
  const auto run = [&] { assign(), pool.MarkRunning(&worker); };

  DO(pool.DispatchOne(count, idle), kNever, queue);
  DO(pool.MarkRunning(&worker), 0, assign);
  DO(pool.FreeTaskList(pool.ListRunning("event", count)), 0, run);
  DO(pool.ThreadIdle(&worker), 0, run);
}

// Threads that the test starts and ends itself, without a pool.
TEST(EngineOutOfMemory, Threads) {
  std::unique_ptr<RkTaskThread, void (*)(RkTaskThread*)> thread(nullptr, DestroyRkTaskThread);
  bool isStarted = false;
  const auto renew = [&] {
    if (std::exchange(isStarted, false)) thread->Stop();
    thread.reset(CreateRkTaskThread());
  };
  const auto start = [&] { thread->Start(), isStarted = true; };
  OutOfMemory memory{.setUp = renew, .threads = Failing::kThisThread};

  DO(thread->Start(); isStarted = true);
  DO(isStarted = false; thread->Stop(), 0, start);
  DO(try { thread->Join(); } catch (const std::system_error&){});  // There is no thread.
  DO(thread->SetPool(nullptr); thread->ReportIdle(); thread->Lock(); thread->Wake(); thread->Wait();
     thread->Unlock(); thread->ReservedValue());
  DO(DestroyRkTaskThread(CreateRkTaskThread()));
  renew();
}

// Each start in a process of its own, since a pool starts once. The last ones find all memory.
TEST(EngineOutOfMemory, StartAndStopOfThePool) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const auto run = [](int successes) {
    const size_t threads = CountThreads();
    try {
      const Failing failing(successes, true, Failing::kThisThread);
      Pool().Start(2);
    } catch (const std::bad_alloc&) {
    } catch (const std::system_error&) {
    }
    {
      const Failing failing(0, true, Failing::kThisThread);
      Pool().Stop();
    }
    std::exit(CountThreads() == threads ? 0 : 1);
  };
  for (int i = 0; i < 16; ++i) EXPECT_EXIT(run(i), testing::ExitedWithCode(0), "") << i;
}

// A worker finds its next task, runs it and waits again without memory.
TEST(EngineOutOfMemory, WorkersNeedNoMemory) {
  const RunningPool pool(2);
  std::atomic<int> ran{0};
  const FuncPtr func = MakeFunc([&ran](RkTask*) { ++ran; });
  Eventually([] { return IdleWorkers() == 2; });
  const Failing failing(0, true, Failing::kOthers);
  for (int i = 1; i <= 500; ++i) {
    Pool().AddFunc(func.get());
    ASSERT_TRUE(Eventually([&ran, i] { return ran == i; }));
  }
  EXPECT_EQ(failing.Count(), 0);
}

}  // namespace
