#include "job.h"

#include <string>

#include "file_task.h"

namespace job_runner {
namespace {

constexpr char kEventName[] = "job_runner";

tmv::Func MakeFunc(void* payload, RkTaskCallback callback) {
  tmv::Func func = tmv::Func::Adopt(CreateRkTaskFunc());
  func->Bind(payload, callback, nullptr);
  return func;
}

// Tasks are known by their names alone, so each gets a number that no other has.
tmv::Package MakeFolderPackage(PackageWork& work, uint64_t& lastTask) {
  tmv::Package package = tmv::MakePackage();
  package->SetName(work.name.c_str());
  for (FileWork& file : work.files) {
    const std::string name = "job_runner file " + std::to_string(++lastTask);
    const tmv::Task task = tmv::MakeTask(name.c_str());
    task->SetFunc(MakeFunc(&file, RunFileTask));
    package->AddTask(task);
  }
  return package;
}

}  // namespace

Job::Job(std::vector<PackageWork>& packages, Progress& progress)
    : progress_(progress), event_(tmv::MakeEvent(kEventName)) {
  event_->SetFunc(MakeFunc(this, NoteEnd));
  uint64_t lastTask = 0;
  for (PackageWork& work : packages) event_->AddPackage(MakeFolderPackage(work, lastTask));
}

// A cancelled event is still in the registry.
Job::~Job() { TmvTaskSchedular()->RemoveEvent(kEventName); }

void Job::Start() { TmvTaskSchedular()->AddEvent(event_); }

void Job::Pause() {
  paused_ = true;
  TmvTaskSchedular()->PauseEvent(kEventName);
}

void Job::Resume() {
  paused_ = false;
  TmvTaskSchedular()->ResumeEvent(kEventName);
}

// A cancel is a task of the pool: it needs a free worker, and it takes out active tasks only. A
// paused task keeps its worker, is not active, and wakes only on a resume of its event, which must
// be registered then. So the order is:
// 1. The flag, at which a running task returns within a chunk and frees its worker.
// 2. The resume, so that parked tasks wake, find the flag and return, and queued ones are active.
// 3. The cancel, which keeps the entry: it then waits for the running tasks before it calls
//    NoteEnd.
void Job::Cancel() {
  progress_.cancelled = true;
  Resume();
  TmvTaskSchedular()->CancelEventEx(kEventName, false);
}

// Runs after the last package, or at the end of the cancel; twice if a cancel meets the end.
void Job::NoteEnd(RkTask* event, RkTaskData* data) {
  static_cast<Job*>(data->GetPayload())->ended_ = true;
  event->ReportState(event, kTaskStateSucceeded);
}

}  // namespace job_runner
