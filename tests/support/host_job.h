#ifndef TESTS_SUPPORT_HOST_JOB_H_
#define TESTS_SUPPORT_HOST_JOB_H_

#include <gtest/gtest.h>
#include <temvar/temvar.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// What the tests of jobs share: tasks with a C++ callable as their function, and waits that end
// with a failure instead of hanging.
namespace test {

inline constexpr std::chrono::seconds kPatience{30};
// Long enough for something wrong to happen, where a test has to show that nothing does.
inline constexpr std::chrono::milliseconds kQuiet{100};

struct Drop {
  void operator()(RkTask* task) const { DestroyRkTask(task); }
  void operator()(RkTaskFunc* func) const { DestroyRkTaskFunc(func); }
  void operator()(RkTaskData* data) const { DestroyRkTaskData(data); }
  void operator()(TaskListNode* list) const { TmvTaskSchedular()->FreeTaskList(list); }
};
using TaskPtr = std::unique_ptr<RkTask, Drop>;
using EventPtr = std::unique_ptr<RkTaskEvent, Drop>;
using PackagePtr = std::unique_ptr<RkTaskPackage, Drop>;
using FuncPtr = std::unique_ptr<RkTaskFunc, Drop>;
using DataPtr = std::unique_ptr<RkTaskData, Drop>;
using ListPtr = std::unique_ptr<TaskListNode, Drop>;

inline RkTaskSchedular& Schedular() { return *TmvTaskSchedular(); }
inline RkTaskPool& Pool() { return *TmvTaskPool(); }

using Body = std::function<void(RkTask*)>;

// Number of bodies that were bound and are not yet released.
inline std::atomic<int64_t>& LiveBodies() {
  static std::atomic<int64_t> count{0};
  return count;
}

inline FuncPtr MakeFunc(Body body) {
  ++LiveBodies();
  FuncPtr func(CreateRkTaskFunc());
  func->Bind(
      new Body(std::move(body)),
      [](RkTask* task, RkTaskData* data) { (*static_cast<Body*>(data->GetPayload()))(task); },
      [](void* payload) {
        delete static_cast<Body*>(payload);
        --LiveBodies();
      });
  return func;
}

inline TaskPtr MakeTask(const std::string& name, Body body = nullptr) {
  TaskPtr task(CreateRkTask());
  task->SetName(name.c_str());
  if (body) task->SetFunc(MakeFunc(std::move(body)).get());
  return task;
}

inline PackagePtr MakePackage(const std::vector<RkTask*>& tasks) {
  PackagePtr package(CreateRkTaskPackage());
  for (RkTask* task : tasks) package->AddTask(task);
  return package;
}

inline EventPtr MakeEvent(const std::string& name, const std::vector<RkTaskPackage*>& packages,
                          Body body = nullptr) {
  EventPtr event(CreateRkTaskEvent());
  event->SetName(name.c_str());
  for (RkTaskPackage* package : packages) event->AddPackage(package);
  if (body) event->SetFunc(MakeFunc(std::move(body)).get());
  return event;
}

struct Step {
  std::string name;
  Body body = nullptr;
};

// An event of one package, which leaves the registry with it.
class Job {
 public:
  Job(const std::string& name, PackagePtr tasks, Body end = nullptr)
      : package(std::move(tasks)), event(MakeEvent(name, {package.get()}, std::move(end))) {}
  Job(const std::string& name, const std::vector<Step>& steps, Body end = nullptr)
      : Job(name, PackagePtr(CreateRkTaskPackage()), std::move(end)) {
    for (const Step& step : steps) {
      package->AddTask(tasks_.emplace_back(MakeTask(step.name, step.body)).get());
    }
  }

  ~Job() { Schedular().RemoveEvent(event->GetName()); }
  Job(const Job&) = delete;
  Job& operator=(const Job&) = delete;

  void Add() const { Schedular().AddEvent(event.get()); }
  RkTask* operator[](size_t index) const { return tasks_[index].get(); }

  const PackagePtr package;
  const EventPtr event;

 private:
  std::vector<TaskPtr> tasks_;
};

inline void Succeed(RkTask* task) { task->ReportState(task, kTaskStateSucceeded); }
inline void Fail(RkTask* task) { task->ReportState(task, kTaskStateFailed); }

inline std::vector<std::string> NamesOf(const TaskListNode* list) {
  std::vector<std::string> names;
  for (; list != nullptr; list = list->next) names.push_back(list->task->GetName());
  return names;
}

// Waits until `condition` holds; false, with a failure, if it doesn't within the test's patience.
template <typename Condition>
bool Eventually(Condition&& condition) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      ADD_FAILURE() << "what was waited for did not happen";
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

inline void BeQuiet() { std::this_thread::sleep_for(kQuiet); }

// A door that tasks wait at.
class Gate {
 public:
  void Open() {
    const std::lock_guard<std::mutex> lock(mutex_);
    open_ = true;
    opened_.notify_all();
  }

  void Wait() {
    std::unique_lock<std::mutex> lock(mutex_);
    ++arrived_;
    EXPECT_TRUE(opened_.wait_for(lock, kPatience, [this] { return open_; }));
  }

  // A function that waits first.
  Body Then(Body body) {
    return [this, body = std::move(body)](RkTask* task) {
      Wait();
      body(task);
    };
  }

  void WaitForArrivals(int count) {
    Eventually([this, count] { return arrived_ >= count; });
  }

  // Lets a worker of the pool wait.
  void HoldWorker() {
    const int before = arrived_;
    Pool().AddFunc(MakeFunc([this](RkTask*) { Wait(); }).get());
    WaitForArrivals(before + 1);
  }

 private:
  std::mutex mutex_;
  std::condition_variable opened_;
  bool open_ = false;
  std::atomic<int> arrived_{0};
};

// What happened, in order.
class Log {
 public:
  void Add(const std::string& entry) {
    const std::lock_guard<std::mutex> lock(mutex_);
    entries_.push_back(entry);
  }

  std::vector<std::string> Entries() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return entries_;
  }

  // A function that notes the name of its task and reports success.
  Body Note() {
    return [this](RkTask* task) {
      Add(task->GetName());
      Succeed(task);
    };
  }

  bool WaitFor(const std::string& entry) const {
    return Eventually([this, &entry] {
      const std::vector<std::string> entries = Entries();
      return std::count(entries.begin(), entries.end(), entry) > 0;
    });
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> entries_;
};

// The pool's one life in this process. A test that fails must let its tasks go all the same.
class RunningPool {
 public:
  explicit RunningPool(uint32_t workers) { Pool().Start(workers); }
  ~RunningPool() { Stop(); }
  void Stop() {
    if (!std::exchange(stopped_, true)) Pool().Stop();
  }

 private:
  bool stopped_ = false;
};

// Number of idle workers. With nothing queued a pass of pairing changes nothing and reports it.
inline uint32_t IdleWorkers() {
  uint32_t pending = 0;
  uint32_t idle = 0;
  Pool().DispatchOne(pending, idle);
  return idle;
}

// A call on a thread of its own, to see whether it comes back.
class Call {
 public:
  explicit Call(std::function<void()> call)
      : thread_([this, call = std::move(call)] {
          call();
          done_ = true;
        }) {}
  ~Call() { thread_.join(); }
  bool IsDone() const { return done_; }
  bool WaitForReturn() const {
    return Eventually([this] { return done_.load(); });
  }

 private:
  std::atomic<bool> done_{false};
  std::thread thread_;
};

}  // namespace test

#endif  // TESTS_SUPPORT_HOST_JOB_H_
