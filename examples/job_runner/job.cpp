#include "job.h"

#include <string>

#include "file_task.h"

namespace job_runner {
namespace {

// What the function of a file's task is bound to.
struct Binding {
  FileWork& work;
  Progress& progress;
  const support::JobControl& job;
};

// The function of a file's task, called on a worker. tmv::MakeFunc would do all of this, but then
// the reason of a failure would stay behind in it.
void Run(RkTask* task, RkTaskData* data) {
  const auto* const binding = static_cast<Binding*>(data->GetPayload());
  RunFileTask(task, binding->work, binding->progress, binding->job);
}

}  // namespace

Job::Job(std::vector<PackageWork>& packages, Progress& progress)
    : progress_(progress), event_(tmv::MakeEvent("job_runner")), control_(event_) {
  for (PackageWork& work : packages) event_->AddPackage(MakePackage(work));
}

tmv::Package Job::MakePackage(PackageWork& work) {
  tmv::Package package = tmv::MakePackage();
  package->SetName(work.name.c_str());
  for (FileWork& file : work.files) package->AddTask(MakeTask(file));
  return package;
}

// Tasks are known by their names alone, so each gets a number that no other has.
tmv::Task Job::MakeTask(FileWork& work) {
  const std::string name = "job_runner file " + std::to_string(++lastTask_);
  tmv::Task task = tmv::MakeTask(name.c_str());
  const tmv::Func func = tmv::Func::Adopt(CreateRkTaskFunc());
  func->Bind(new Binding{work, progress_, control_}, Run,
             [](void* payload) { delete static_cast<Binding*>(payload); });
  task->SetFunc(func);
  return task;
}

}  // namespace job_runner
