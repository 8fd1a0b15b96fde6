#ifndef TESTS_SOAK_MODEL_H_
#define TESTS_SOAK_MODEL_H_

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <temvar/handles.h>

// A generated event and what is known about how it must go. Its tasks check the promises of the
// scheduler as they run.
namespace soak {

// Ends the process with a message, and with a core where the system writes one: a promise of the
// library was broken.
[[noreturn]] inline void Fail(const std::string& message) {
  std::fprintf(stderr, "soak failed: %s\n", message.c_str());
  std::abort();
}

enum class Kind {
  kPlain,      // Paused and resumed only: must run to its end.
  kCancelled,  // Cancelled at some moment, and taken out at once.
  kKept,       // Cancelled at some moment, the entry kept.
  kRemoved,    // Taken out of the registry while it runs.
  kWild,       // Tasks are inserted anywhere by anybody; nothing is promised about their order.
};

// Payloads that the library has to release: none at the end. Each holds the model of its event.
inline std::atomic<int64_t> livePayloads{0};
// For the summary.
inline std::atomic<uint64_t> startedTasks{0};

// The name of an event that some driver runs now, for tasks to pause.
inline std::function<std::string()> someEvent;

inline RkTaskSchedular& Schedular() { return *TmvTaskSchedular(); }

inline bool Chance(std::mt19937_64& random, unsigned percent) { return random() % 100 < percent; }

inline int Number(std::mt19937_64& random, int from, int to) {
  return from + static_cast<int>(random() % static_cast<uint64_t>(to - from + 1));
}

struct TaskModel {
  std::string name;
  size_t package = 0;
  int32_t result = kTaskStateSucceeded;
  int pausePoints = 0;
  int sleepMicroseconds = 0;
  bool silent = false;       // Never reports.
  bool insertsNext = false;  // Inserts a task after itself before it reports.
  bool cancelsItself = false;
  bool asks = false;  // Looks things up from within.
  bool pausesItsEvent = false;
  bool pausesAnother = false;
  TaskModel* next = nullptr;
  std::atomic<int> starts{0};
};

class EventModel : public std::enable_shared_from_this<EventModel> {
 public:
  EventModel(Kind theKind, std::string theName) : kind(theKind), name(std::move(theName)) {}

  // Makes its packages and tasks, which hold the model.
  void Build(std::mt19937_64& random) {
    event_->SetName(name.c_str());
    event_->SetFunc(MakeFunc([this](RkTask* task) { RunEvent(task); }));
    const int packages = Number(random, 1, 5);
    for (int i = 0; i < packages; ++i) BuildPackage(random);
  }

  RkTask* task() const { return event_; }
  std::string SomeTaskName(std::mt19937_64& random) {
    return name + " task " + std::to_string(1 + random() % lastTask_);
  }

  // Inserts a new task after any other one, as the scheduler finds it by name.
  void InsertAnywhere(std::mt19937_64& random) {
    const size_t index = static_cast<size_t>(random() % packages_.size());
    PackageModel& package = *packages_[index];
    tmv::Task task;
    {
      const std::lock_guard<std::mutex> lock(package.mutex);
      task = MakeTask(MakeTaskModel(package, index));
    }
    const std::string after = SomeTaskName(random);
    if (Chance(random, 50)) {
      Schedular().InsertTaskAfterName(task, after.c_str());
    } else {
      const tmv::Task existing = tmv::Task::Adopt(Schedular().FindTask(after.c_str()));
      if (existing) Schedular().InsertTaskAfter(task, existing);
    }
  }

  // Looks up a task of the event, from any thread.
  void AskAround(const std::string& taskName) const {
    const tmv::Task event = tmv::Task::Adopt(Schedular().FindEventOfTask(taskName.c_str()));
    if (event && name != event->GetName()) Broken("FindEventOfTask returned another event");
    const auto package = tmv::Package::Adopt(Schedular().FindPackageOfTask(taskName.c_str()));
    const tmv::Task owner = tmv::Task::Adopt(Schedular().FindEventOfPackage(package));
    if (owner && name != owner->GetName()) Broken("FindEventOfPackage returned another event");
  }

  // Sets paused tasks active: those whose event has left the registry can't be resumed.
  void FreeParkedTasks() {
    const std::lock_guard<std::mutex> lock(ownersMutex_);
    for (const tmv::Task& task : owners_) {
      if (task->GetState() == kTaskStatePaused) task->SetState(kTaskStateActive);
    }
  }

  // Drops the references that the model holds. Its tasks hold the model, so this ends it.
  void LetGo() {
    std::vector<tmv::Task> owners;
    const std::lock_guard<std::mutex> lock(ownersMutex_);
    letGo_ = true;
    owners.swap(owners_);
    event_.Reset();
  }

  const Kind kind;
  const std::string name;
  std::atomic<int> calls{0};        // Of its function.
  std::atomic<int> inside{0};       // Tasks that run.
  std::atomic<bool> closed{false};  // Its tasks do nothing from now on when they start.
  std::atomic<int64_t> starts{0};   // Of its tasks.

 private:
  struct PackageModel {
    std::mutex mutex;
    std::vector<std::unique_ptr<TaskModel>> tasks;  // In order of making.
    TaskModel* first = nullptr;
    TaskModel* expected = nullptr;  // Null: the package itself.
    bool continueOnFailure = true;
    bool ended = false;
    int32_t lastResult = 0;
  };

  // Holds the model for as long as the library holds the function.
  struct Payload {
    std::shared_ptr<EventModel> model;
    std::function<void(RkTask*)> run;
  };

  void BuildPackage(std::mt19937_64& random) {
    const size_t index = packages_.size();
    PackageModel& model = *packages_.emplace_back(std::make_unique<PackageModel>());
    model.continueOnFailure = Chance(random, 80);
    const tmv::Package package = tmv::MakePackage();
    package->SetContinueOnFailure(model.continueOnFailure);
    package->SetFunc(MakeFunc([this, &model](RkTask* task) { RunPackage(model, task); }));

    TaskModel* last = nullptr;
    const int tasks = Number(random, 1, 8);
    for (int i = 0; i < tasks; ++i) {
      TaskModel* const task = MakeTaskModel(model, index);
      task->result = Chance(random, 20) ? kTaskStateFailed : kTaskStateSucceeded;
      task->pausePoints = Number(random, 0, 4);
      task->sleepMicroseconds = Chance(random, 30) ? Number(random, 1, 300) : 0;
      task->insertsNext = kind != Kind::kWild && Chance(random, 15);
      task->silent = kind != Kind::kPlain && Chance(random, 5);
      task->cancelsItself = kind == Kind::kCancelled && Chance(random, 5);
      task->asks = Chance(random, 25);
      task->pausesItsEvent = Chance(random, 4);
      task->pausesAnother = Chance(random, 4);
      (last == nullptr ? model.first : last->next) = task;
      last = task;
      package->AddTask(MakeTask(task));
    }
    model.expected = model.first;
    event_->AddPackage(package);
  }

  TaskModel* MakeTaskModel(PackageModel& package, size_t index) {
    package.tasks.push_back(std::make_unique<TaskModel>());
    TaskModel* const task = package.tasks.back().get();
    task->package = index;
    task->name = name + " task " + std::to_string(++lastTask_);
    return task;
  }

  // The task also gets a payload of its own, which the library carries and releases.
  tmv::Task MakeTask(TaskModel* model) {
    tmv::Task task = tmv::MakeTask(model->name);
    task->SetFunc(MakeFunc([this, model](RkTask* self) { RunTask(*model, self); }));
    const tmv::Data data = tmv::Data::Adopt(CreateRkTaskData());
    data->SetPayload(new Payload{shared_from_this(), nullptr});
    data->SetReleaser(ReleasePayload);
    ++livePayloads;
    task->SetData(data);
    const std::lock_guard<std::mutex> lock(ownersMutex_);
    if (!letGo_) owners_.push_back(task);
    return task;
  }

  tmv::Func MakeFunc(std::function<void(RkTask*)> run) {
    tmv::Func func = tmv::Func::Adopt(CreateRkTaskFunc());
    ++livePayloads;
    const RkTaskCallback callback = [](RkTask* task, RkTaskData* data) {
      static_cast<Payload*>(data->GetPayload())->run(task);
    };
    func->Bind(new Payload{shared_from_this(), std::move(run)}, callback, ReleasePayload);
    return func;
  }

  void InsertNext(TaskModel& model, RkTask* task) {
    PackageModel& package = *packages_[model.package];
    TaskModel* inserted = nullptr;
    {
      const std::lock_guard<std::mutex> lock(package.mutex);
      inserted = MakeTaskModel(package, model.package);
    }
    const tmv::Task next = MakeTask(inserted);
    if (!Schedular().InsertTaskAfter(next, task)) return;  // The event has gone.
    const std::lock_guard<std::mutex> lock(package.mutex);
    inserted->next = model.next;
    model.next = inserted;
  }

  static void ReleasePayload(void* payload) {
    delete static_cast<Payload*>(payload);
    if (--livePayloads < 0) Fail("a payload was released twice");
  }

  void RunTask(TaskModel& model, RkTask* task) {
    ++inside;
    if (!closed) {
      Start(model);
      Work(model, task);
    }
    --inside;
  }

  void RunPackage(PackageModel& package, RkTask* task) {
    if (IsChecked()) {
      const std::lock_guard<std::mutex> lock(package.mutex);
      if (package.ended) Broken("a package ran twice");
      if (package.expected != nullptr) Broken("a package ran before its last task");
      package.ended = true;
      if (task->GetState() != package.lastResult) Broken("a package ended in a wrong state");
    }
    task->ReportState(task, kTaskStateSucceeded);
  }

  void RunEvent(RkTask* task) {
    const int call = ++calls;
    if (kind == Kind::kPlain) {
      if (call != 1) Broken("its function was called twice");
      CheckEnd(task);
    }
    task->ReportState(task, kTaskStateSucceeded);
  }

  void Start(TaskModel& model) {
    ++starts;
    ++startedTasks;
    const int runs = ++model.starts;
    if (!IsChecked()) return;
    if (runs != 1) Broken(model.name + " was started twice");
    PackageModel& package = *packages_[model.package];
    const std::lock_guard<std::mutex> lock(package.mutex);
    if (package.expected != &model) {
      Broken(model.name + " was started out of order, instead of " +
             (package.expected != nullptr ? package.expected->name : "its package"));
    }
  }

  void Work(TaskModel& model, RkTask* task) {
    for (int i = 0; i < model.pausePoints; ++i) {
      if (i % 2 == 0) {
        task->ReportState(task, kTaskStateCreated);
      } else {
        Schedular().CheckPause(task);
      }
      if (task->GetState() == kTaskStateCancelled) return;
    }
    if (model.sleepMicroseconds > 0) {
      std::this_thread::sleep_for(std::chrono::microseconds(model.sleepMicroseconds));
    }
    if (model.asks) AskAround(model.name);
    if (model.pausesItsEvent) Schedular().PauseEvent(name.c_str());
    if (model.pausesAnother) Schedular().PauseEvent(someEvent().c_str());
    if (model.cancelsItself) Schedular().CancelEventOfTask(model.name.c_str());
    if (model.insertsNext) InsertNext(model, task);
    if (!model.silent) Report(model, task);
  }

  // The report moves the package on at once, on another worker, so what is expected next is written
  // before it.
  void Report(TaskModel& model, RkTask* task) {
    if (IsChecked()) {
      PackageModel& package = *packages_[model.package];
      const std::lock_guard<std::mutex> lock(package.mutex);
      const bool goesOn = model.result == kTaskStateSucceeded || package.continueOnFailure;
      package.expected = goesOn ? model.next : nullptr;
      package.lastResult = model.result;
    }
    for (;;) {
      task->ReportState(task, model.result);
      const int32_t state = task->GetState();
      if (state != kTaskStateActive && state != kTaskStatePaused) break;
      if (!tmv::Task::Adopt(Schedular().FindEventOfTask(model.name.c_str()))) break;
    }
    if (kind == Kind::kPlain && task->GetState() != model.result) {
      Broken(model.name + " reported and has the state " + std::to_string(task->GetState()));
    }
  }

  void CheckEnd(RkTask* event) {
    bool stateSeen = false;
    for (const std::unique_ptr<PackageModel>& package : packages_) {
      const std::lock_guard<std::mutex> lock(package->mutex);
      if (!package->ended) Broken("its function was called before a package had ended");
      stateSeen = stateSeen || package->lastResult == event->GetState();
      const TaskModel* task = package->first;
      bool runs = true;
      for (; task != nullptr; task = task->next) {
        if ((task->starts == 1) != runs) Broken(task->name + " was left out or ran too far");
        runs = runs && (task->result == kTaskStateSucceeded || package->continueOnFailure);
      }
    }
    if (!stateSeen) Broken("it ended in a state of none of its packages");
    if (tmv::Task::Adopt(Schedular().FindEvent(name.c_str()))) {
      Broken("it ended and is registered still");
    }
  }

  bool IsChecked() const { return kind != Kind::kWild; }
  [[noreturn]] void Broken(const std::string& what) const { Fail("event " + name + ": " + what); }

  std::vector<std::unique_ptr<PackageModel>> packages_;
  std::atomic<uint64_t> lastTask_{0};

  std::mutex ownersMutex_;
  std::vector<tmv::Task> owners_;  // The references of the host, inserted tasks too.
  bool letGo_ = false;             // Another driver may still insert a task.
  tmv::Event event_ = tmv::Event::Adopt(CreateRkTaskEvent());
};

}  // namespace soak

#endif  // TESTS_SOAK_MODEL_H_
