#include "model.h"

#include <chrono>
#include <thread>

#include "watchdog.h"

namespace soak {
namespace {

RkTaskSchedular& Schedular() { return *TmvTaskSchedular(); }

bool Chance(std::mt19937_64& random, unsigned percent) { return random() % 100 < percent; }

int Number(std::mt19937_64& random, int from, int to) {
  return from + static_cast<int>(random() % static_cast<uint64_t>(to - from + 1));
}

void AskAround(const std::string& taskName, const std::string& eventName) {
  const tmv::Task task = tmv::Task::Adopt(Schedular().FindTask(taskName.c_str()));
  if (task && taskName != task->GetName()) Fail("FindTask gave " + std::string(task->GetName()));
  const tmv::Task event = tmv::Task::Adopt(Schedular().FindEventOfTask(taskName.c_str()));
  if (event && eventName != event->GetName()) Fail("FindEventOfTask gave another event");
  const tmv::Package package = tmv::Package::Adopt(Schedular().FindPackageOfTask(taskName.c_str()));
  if (package) {
    const tmv::Task owner = tmv::Task::Adopt(Schedular().FindEventOfPackage(package));
    if (owner && eventName != owner->GetName()) Fail("FindEventOfPackage gave another event");
  }
}

}  // namespace

size_t AnyIndex(std::mt19937_64& random, size_t count) {
  return std::uniform_int_distribution<size_t>(0, count - 1)(random);
}

Balance& Alive() {
  static Balance balance;
  return balance;
}

Counts& Count() {
  static Counts counts;
  return counts;
}

EventModel::EventModel(Kind kind, std::string name)
    : kind_(kind), name_(std::move(name)), event_(tmv::Event::Adopt(CreateRkTaskEvent())) {
  ++Alive().events;
  ++Count().events;
}

EventModel::~EventModel() { --Alive().events; }

std::shared_ptr<EventModel> EventModel::Make(Kind kind, const std::string& name,
                                             std::mt19937_64& random) {
  std::shared_ptr<EventModel> model(new EventModel(kind, name));
  model->Build(random);
  return model;
}

void EventModel::Build(std::mt19937_64& random) {
  event_->SetName(name_.c_str());
  event_->SetFunc(MakeFunc(RunEvent, nullptr, nullptr));
  const int packages = Number(random, 1, 5);
  for (int i = 0; i < packages; ++i) BuildPackage(random);
}

void EventModel::BuildPackage(std::mt19937_64& random) {
  const size_t index = packages_.size();
  PackageModel& model = *packages_.emplace_back(std::make_unique<PackageModel>());
  model.continueOnFailure = Chance(random, 80);
  tmv::Package package = tmv::Package::Adopt(CreateRkTaskPackage());
  package->SetContinueOnFailure(model.continueOnFailure);
  package->SetFunc(MakeFunc(RunPackage, nullptr, &model));

  TaskModel* last = nullptr;
  const int tasks = Number(random, 1, 8);
  for (int i = 0; i < tasks; ++i) {
    TaskModel* const task = MakeTaskModel(model, index);
    task->result = Chance(random, 20) ? kTaskStateFailed : kTaskStateSucceeded;
    task->pausePoints = Number(random, 0, 4);
    task->sleepMicroseconds = Chance(random, 30) ? Number(random, 1, 300) : 0;
    task->insertsNext = kind_ != Kind::kWild && Chance(random, 15);
    task->silent = kind_ != Kind::kPlain && Chance(random, 5);
    task->cancelsItself = kind_ == Kind::kCancelled && Chance(random, 5);
    task->asks = Chance(random, 25);
    (last == nullptr ? model.first : last->next) = task;
    last = task;
    package->AddTask(MakeTask(task));
  }
  model.expected = model.first;
  event_->AddPackage(package);
}

TaskModel* EventModel::MakeTaskModel(PackageModel& package, size_t index) {
  package.tasks.push_back(std::make_unique<TaskModel>());
  TaskModel* const task = package.tasks.back().get();
  task->package = index;
  task->name = name_ + " task " + std::to_string(++lastTask_);
  return task;
}

// Also gives the task a payload of its own, which the library carries and releases.
tmv::Task EventModel::MakeTask(TaskModel* model) {
  tmv::Task task = tmv::Task::Adopt(CreateRkTask());
  task->SetName(model->name.c_str());
  task->SetFunc(MakeFunc(RunTask, model, packages_[model->package].get()));
  RkTaskData* const data = CreateRkTaskData();
  data->SetPayload(new Payload{shared_from_this(), model, nullptr});
  data->SetReleaser(ReleasePayload);
  ++Alive().payloads;
  task->SetData(data);
  DestroyRkTaskData(data);

  const std::lock_guard<std::mutex> lock(ownersMutex_);
  if (!letGo_) owners_.push_back(task);
  return task;
}

tmv::Func EventModel::MakeFunc(RkTaskCallback callback, TaskModel* task, PackageModel* package) {
  tmv::Func func = tmv::Func::Adopt(CreateRkTaskFunc());
  ++Alive().payloads;
  func->Bind(new Payload{shared_from_this(), task, package}, callback, ReleasePayload);
  return func;
}

void EventModel::ReleasePayload(void* payload) {
  delete static_cast<Payload*>(payload);
  if (--Alive().payloads < 0) Fail("a payload was released twice");
}

std::string EventModel::SomeTaskName(std::mt19937_64& random) {
  return name_ + " task " + std::to_string(1 + random() % lastTask_);
}

void EventModel::InsertAnywhere(std::mt19937_64& random) {
  const size_t index = AnyIndex(random, packages_.size());
  PackageModel& package = *packages_[index];
  tmv::Task task;
  {
    const std::lock_guard<std::mutex> lock(package.mutex);
    task = MakeTask(MakeTaskModel(package, index));
  }
  const std::string behind = SomeTaskName(random);
  if (Chance(random, 50)) {
    Schedular().InsertTaskAfterName(task, behind.c_str());
  } else {
    const tmv::Task existing = tmv::Task::Adopt(Schedular().FindTask(behind.c_str()));
    if (existing) Schedular().InsertTaskAfter(task, existing);
  }
}

void EventModel::InsertNext(TaskModel& model, RkTask* task) {
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

void EventModel::RunTask(RkTask* task, RkTaskData* data) {
  const auto* const payload = static_cast<Payload*>(data->GetPayload());
  EventModel& event = *payload->model;
  ++event.inside_;
  event.Start(*payload->task);
  event.Work(*payload->task, task);
  --event.inside_;
}

void EventModel::Start(TaskModel& model) {
  ++starts_;
  ++Count().tasks;
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

void EventModel::Work(TaskModel& model, RkTask* task) {
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
  if (model.asks) AskAround(model.name, name_);
  if (model.cancelsItself) Schedular().CancelEventOfTask(model.name.c_str());
  if (model.insertsNext) InsertNext(model, task);
  if (!model.silent) Report(model, task);
}

// The report moves the package on at once, on another worker, so what is expected next is written
// before it.
void EventModel::Report(TaskModel& model, RkTask* task) {
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
  if (kind_ == Kind::kPlain && task->GetState() != model.result) {
    Broken(model.name + " reported and has the state " + std::to_string(task->GetState()));
  }
}

void EventModel::RunPackage(RkTask* task, RkTaskData* data) {
  const auto* const payload = static_cast<Payload*>(data->GetPayload());
  EventModel& event = *payload->model;
  if (event.IsChecked()) {
    PackageModel& package = *payload->package;
    const std::lock_guard<std::mutex> lock(package.mutex);
    if (package.ended) event.Broken("a package ran twice");
    if (package.expected != nullptr) event.Broken("a package ran before its last task");
    package.ended = true;
    if (task->GetState() != package.lastResult) event.Broken("a package ended in a wrong state");
  }
  task->ReportState(task, kTaskStateSucceeded);
}

void EventModel::RunEvent(RkTask* task, RkTaskData* data) {
  EventModel& event = *static_cast<Payload*>(data->GetPayload())->model;
  const int calls = ++event.calls_;
  if (event.kind_ == Kind::kPlain) {
    if (calls != 1) event.Broken("its function was called twice");
    event.CheckEnd(task);
  }
  task->ReportState(task, kTaskStateSucceeded);
}

void EventModel::CheckEnd(RkTask* event) {
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
  if (tmv::Task::Adopt(Schedular().FindEvent(name_.c_str())))
    Broken("it ended and is registered still");
}

void EventModel::FreeParkedTasks() {
  const std::lock_guard<std::mutex> lock(ownersMutex_);
  for (const tmv::Task& task : owners_) {
    if (task->GetState() == kTaskStatePaused) task->SetState(kTaskStateActive);
  }
}

void EventModel::LetGo() {
  std::vector<tmv::Task> owners;
  const std::lock_guard<std::mutex> lock(ownersMutex_);
  letGo_ = true;
  owners.swap(owners_);
  event_.Reset();
}

void EventModel::Broken(const std::string& what) const { Fail("event " + name_ + ": " + what); }

}  // namespace soak
