#include "bench/jobs.h"

namespace bench {
namespace {

constexpr size_t kTasksInPackage = 1000;

tmv::Func MakeFunc(void* payload, RkTaskCallback callback) {
  tmv::Func func = tmv::Func::Adopt(CreateRkTaskFunc());
  func->Bind(payload, callback, nullptr);
  return func;
}

tmv::Task MakeTask(RkTaskFunc* func, const std::string& name) {
  tmv::Task task = tmv::Task::Adopt(CreateRkTask());
  task->SetName(name.c_str());
  task->SetFunc(func);
  return task;
}

}  // namespace

// Each task has a function holder of its own, as hosts bind them.
Tasks::Tasks(size_t count, Body body) : works_(count) {
  shared_.body = body;
  for (PlainPool::Work& work : works_) {
    const auto func =
        MakeFunc(&shared_, [](RkTask*, RkTaskData* data) { Run(data->GetPayload()); });
    tasks_.push_back(MakeTask(func, "task"));
    work = {Run, &shared_};
  }
}

void Tasks::Run(void* shared) {
  static_cast<Shared*>(shared)->body();
  static_cast<Shared*>(shared)->latch.CountDown();
}

void Tasks::RunInLibrary() {
  shared_.latch.Reset(static_cast<int>(tasks_.size()));
  for (const tmv::Task& task : tasks_) TmvTaskPool()->AddTask(task);
  shared_.latch.Wait();
}

void Tasks::RunIn(PlainPool& pool) {
  shared_.latch.Reset(static_cast<int>(works_.size()));
  for (const PlainPool::Work& work : works_) pool.Add(&work);
  shared_.latch.Wait();
}

Chains::Chains(size_t chains, size_t length, Body body, const std::string& name)
    : chains_(chains), length_(length), name_(name) {
  shared_.body = body;
  links_.resize(chains);
  works_.resize(chains);
  for (size_t chain = 0; chain < chains; ++chain) {
    links_[chain].resize(length);
    works_[chain].resize(length);
    for (size_t i = 0; i < length; ++i) {
      const bool last = i + 1 == length;
      links_[chain][i] = {&shared_, last ? nullptr : &works_[chain][i + 1]};
      works_[chain][i] = {RunLink, &links_[chain][i]};
    }
  }
  MakeEvent();
}

void Chains::MakeEvent() {
  event_ = tmv::Event::Adopt(CreateRkTaskEvent());
  event_->SetName(name_.c_str());
  event_->SetFunc(MakeFunc(&shared_, RunEvent));
  for (size_t chain = 0; chain < chains_; ++chain) {
    const tmv::Package package = tmv::Package::Adopt(CreateRkTaskPackage());
    for (size_t i = 0; i < length_; ++i) {
      const std::string task = name_ + " " + std::to_string(chain) + "." + std::to_string(i);
      package->AddTask(MakeTask(MakeFunc(&shared_, RunTask), task));
    }
    event_->AddPackage(package);
  }
}

void Chains::RunInLibrary() {
  shared_.latch.Reset(1);
  TmvTaskSchedular()->AddEvent(event_);
  shared_.latch.Wait();
}

void Chains::RunIn(PlainPool& pool) {
  shared_.pool = &pool;
  shared_.latch.Reset(static_cast<int>(chains_));
  for (const std::vector<PlainPool::Work>& chain : works_) pool.Add(&chain.front());
  shared_.latch.Wait();
}

void Chains::RunTask(RkTask* task, RkTaskData* data) {
  static_cast<Shared*>(data->GetPayload())->body();
  task->ReportState(task, kTaskStateSucceeded);
}

void Chains::RunEvent(RkTask* event, RkTaskData* data) {
  event->ReportState(event, kTaskStateSucceeded);
  static_cast<Shared*>(data->GetPayload())->latch.CountDown();
}

void Chains::RunLink(void* data) {
  auto* const link = static_cast<Link*>(data);
  link->shared->body();
  if (link->next != nullptr) {
    link->shared->pool->Add(link->next);
  } else {
    link->shared->latch.CountDown();
  }
}

Registered::Registered(size_t count, const std::string& name)
    : name_(name), event_(tmv::Event::Adopt(CreateRkTaskEvent())) {
  event_->SetName(name.c_str());
  tmv::Package package;
  for (size_t i = 0; i < count; ++i) {
    if (i % kTasksInPackage == 0) {
      package = tmv::Package::Adopt(CreateRkTaskPackage());
      event_->AddPackage(package);
    }
    package->AddTask(MakeTask(nullptr, name + " " + std::to_string(i)));
  }
  TmvTaskSchedular()->RegisterEvent(event_);
}

Registered::~Registered() { TmvTaskSchedular()->RemoveEvent(name_.c_str()); }

}  // namespace bench
