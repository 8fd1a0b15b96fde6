// Adds, pauses, resumes, cancels and removes jobs as the input's bytes say, from two threads of the
// host and from the tasks themselves, on three workers. However the calls meet: each returns, no
// task runs twice, and once all is resumed the pool becomes idle. A job that nobody cancelled or
// removed has then run all its tasks and has ended once, and nothing of any job is left.
//
// A hang is a finding. The watchdog counts its own turns and not the time, so that a machine that
// is slow or stopped has no hangs.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "temvar/handles.h"

namespace {

constexpr uint32_t kWorkers = 3;
constexpr size_t kMostJobs = 8;
constexpr int kTurnsOfAHang = 600;  // Of 100 ms.

RkTaskSchedular* const scheduler = TmvTaskSchedular();
RkTaskPool* const pool = TmvTaskPool();

std::atomic<int> turnsLeft{kTurnsOfAHang};
std::atomic<bool> isEnding{false};
std::atomic<int> livePlans{0};

void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

void Watch() {
  while (--turnsLeft > 0) std::this_thread::sleep_for(std::chrono::milliseconds(100));
  Require(false, "a hang: the input has not ended");
}

void WaitAMoment() { std::this_thread::sleep_for(std::chrono::microseconds(20)); }

// A byte of the input at a time, and zeros after its end.
class Bytes {
 public:
  Bytes(const uint8_t* data, size_t size) : data_(data, data + size) {}
  bool IsEmpty() const { return place_ >= data_.size(); }
  uint8_t Next() { return IsEmpty() ? 0 : data_[place_++]; }

 private:
  std::vector<uint8_t> data_;
  size_t place_ = 0;
};

std::string NameOf(size_t job) { return "job" + std::to_string(job % kMostJobs); }

// What happened to the job of each number.
struct Record {
  std::atomic<bool> isDisturbed{false};  // It was cancelled or removed, and may do less.
  std::atomic<bool> mayEndTwice{false};  // It was cancelled while it stays registered.
  std::atomic<int> tasks{0};
  std::atomic<int> runs{0};
  std::atomic<int> ends{0};
};
Record records[kMostJobs];

// What threads and tasks do with the job of a number.
void Act(uint8_t action, size_t number) {
  const size_t index = number % kMostJobs;
  const std::string name = NameOf(index);
  switch (action % 12) {
    case 0:
    case 1:
    case 2:
      return scheduler->PauseEvent(name.c_str());
    case 3:
    case 4:
    case 5:
      return scheduler->ResumeEvent(name.c_str());
    case 6:
      records[index].isDisturbed = true;
      return scheduler->CancelEvent(name.c_str());
    case 7:
      records[index].isDisturbed = true;
      scheduler->CancelEventOfTask((name + ".0.0").c_str());
      return;
    case 8:
      records[index].isDisturbed = true;
      records[index].mayEndTwice = true;
      return scheduler->CancelEventEx(name.c_str(), false);
    case 9:
      records[index].isDisturbed = true;
      return scheduler->RemoveEvent(name.c_str());
    case 10: {
      const tmv::Task event = tmv::Task::Adopt(scheduler->FindEvent(name.c_str()));
      for (RkTask* task : tmv::TaskList(scheduler->ListCurrentTasks(event))) task->GetState();
      uint32_t count = 0;
      const tmv::TaskList running(pool->ListRunning(name.c_str(), count));
      tmv::Task::Adopt(scheduler->FindTask((name + ".0.1").c_str()));
      tmv::Package::Adopt(scheduler->FindPackageOfTask((name + ".1.0").c_str()));
      scheduler->IsTaskCancelled((name + ".0.0").c_str());
      scheduler->GetEventCount();
      return;
    }
    default:
      WaitAMoment();
  }
}

// What one task does before it reports.
struct Plan {
  Plan(size_t jobNumber, uint8_t what, size_t whose) : job(jobNumber), action(what), other(whose) {
    ++livePlans;
    ++records[job].tasks;
  }
  Plan(const Plan&) = delete;
  ~Plan() { --livePlans; }

  const size_t job;
  const uint8_t action;
  const size_t other;
  std::atomic<bool> hasRun{false};
};

void RunTask(RkTask* task, RkTaskData* data);

tmv::Task NewTask(const std::string& name, std::unique_ptr<Plan> plan) {
  tmv::Task task = tmv::MakeTask(name);
  const tmv::Func func = tmv::Func::Adopt(CreateRkTaskFunc());
  func->Bind(plan.release(), RunTask, [](void* payload) { delete static_cast<Plan*>(payload); });
  task->SetFunc(func);
  return task;
}

void Follow(const Plan& plan, RkTask* task) {
  switch (plan.action % 8) {
    case 0:
    case 1:
      return;
    case 2:
      for (size_t i = 0; i < plan.other; ++i) scheduler->CheckPause(task);
      return;
    case 3:  // Goes on for as long as the host wants.
      while (!isEnding && tmv::KeepGoing(task)) WaitAMoment();
      return;
    case 4: {
      const tmv::Task next =
          NewTask(task->GetName() + std::string("+"), std::make_unique<Plan>(plan.job, 0, 0));
      if (!scheduler->InsertTaskAfter(next, task)) --records[plan.job].tasks;
      return;
    }
    case 5:
      return Act(plan.action / 8, plan.job);
    default:
      return Act(plan.action / 8, plan.other);
  }
}

void RunTask(RkTask* task, RkTaskData* data) {
  Plan& plan = *static_cast<Plan*>(data->GetPayload());
  Require(!plan.hasRun.exchange(true), "a task runs twice");
  ++records[plan.job].runs;
  Follow(plan, task);
  tmv::ReportEnd(task, plan.other % 8 == 7 ? kTaskStateFailed : kTaskStateSucceeded);
}

tmv::Event NewJob(size_t number, Bytes& bytes) {
  tmv::Event event = tmv::Event::Adopt(CreateRkTaskEvent());
  event->SetName(NameOf(number).c_str());
  const uint8_t shape = bytes.Next();
  for (int package = 0; package <= shape % 3; ++package) {
    const tmv::Package tasks = tmv::MakePackage();
    for (int task = 0; task <= shape / 3 % 3; ++task) {
      const uint8_t action = bytes.Next();
      tasks->AddTask(
          NewTask(NameOf(number) + "." + std::to_string(package) + "." + std::to_string(task),
                  std::make_unique<Plan>(number, action, bytes.Next() % 16)));
    }
    event->AddPackage(tasks);
  }
  const tmv::Func end = tmv::Func::Adopt(CreateRkTaskFunc());
  end->Bind(
      &records[number],
      [](RkTask* task, RkTaskData* data) {
        ++static_cast<Record*>(data->GetPayload())->ends;
        task->ReportState(task, kTaskStateSucceeded);
      },
      nullptr);
  event->SetFunc(end);
  return event;
}

// One run: jobs, and a second thread of the host with the operations that are not the first's.
class Run {
 public:
  explicit Run(Bytes bytes) {
    for (Record& record : records) {
      record.isDisturbed = record.mayEndTwice = false;
      record.tasks = record.runs = record.ends = 0;
    }
    isEnding = false;
    std::vector<std::pair<uint8_t, size_t>> others;
    while (!bytes.IsEmpty()) {
      const uint8_t action = bytes.Next();
      if (action % 4 == 0) {
        if (jobs_.size() == kMostJobs) continue;
        jobs_.push_back(NewJob(jobs_.size(), bytes));
        if (action % 8 == 0) Start(others);
        scheduler->AddEvent(jobs_.back());
      } else if (action % 4 == 1) {
        others.emplace_back(action / 4, bytes.Next());
      } else {
        Act(action / 4, bytes.Next());
      }
    }
    Start(others);
  }

  void End() {
    isEnding = true;
    std::vector<bool> wasRescued(jobs_.size());
    for (int round = 0; !IsIdle(); ++round) {
      for (size_t i = 0; i < jobs_.size(); ++i) {
        if (round > 50 && Rescue(i)) wasRescued[i] = true;
        scheduler->ResumeEvent(NameOf(i).c_str());
      }
      WaitAMoment();
    }
    for (std::thread& thread : threads_) thread.join();
    for (size_t i = 0; i < jobs_.size(); ++i) Check(records[i], wasRescued[i]);
    for (size_t i = 0; i < jobs_.size(); ++i) scheduler->RemoveEvent(NameOf(i).c_str());
    Require(scheduler->GetEventCount() == 0, "an event stays registered");
    jobs_.clear();
    // A worker is idle shortly before it has dropped its references.
    while (livePlans != 0) WaitAMoment();
  }

 private:
  void Start(std::vector<std::pair<uint8_t, size_t>>& actions) {
    if (actions.empty() || threads_.size() == 2) return;
    ++threadsRunning_;
    threads_.emplace_back([this, list = std::move(actions)] {
      for (const auto& [action, number] : list) Act(action, number);
      --threadsRunning_;
    });
    actions.clear();
  }

  bool IsIdle() const {
    if (threadsRunning_ != 0) return false;
    uint32_t pending = 0;
    uint32_t idle = 0;
    pool->DispatchOne(pending, idle);
    return idle == kWorkers && pool->GetQueuedCount() == 0;
  }

  // A job that was removed while it was paused can't be resumed by its name, unless it is entered
  // once more.
  bool Rescue(size_t number) {
    const std::string name = NameOf(number);
    if (!records[number].isDisturbed || tmv::FindEvent(name.c_str()) != nullptr) return false;
    scheduler->RegisterEvent(jobs_[number]);
    scheduler->ResumeEvent(name.c_str());
    scheduler->RemoveEvent(name.c_str());
    return true;
  }

  static void Check(const Record& record, bool wasRescued) {
    if (!record.isDisturbed) {
      Require(record.ends == 1, "a job that nobody ended has not ended once");
      Require(record.runs == record.tasks, "a job that nobody ended has not run all tasks");
    }
    Require(record.ends <= 1 || record.mayEndTwice || wasRescued, "a job has ended twice");
  }

  std::vector<tmv::Event> jobs_;
  std::vector<std::thread> threads_;
  std::atomic<int> threadsRunning_{0};
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // What isn't paired at once would wait for this bound, and be a hang.
  pool->SetPollInterval(1 << 30);
  pool->Start(kWorkers);
  std::thread(Watch).detach();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  turnsLeft = kTurnsOfAHang;
  Run run(Bytes(data, size));
  run.End();
  return 0;
}
