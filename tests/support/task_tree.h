// Short ways to build tasks in the unit tests of the task engine.
#ifndef TEMVAR_TESTS_SUPPORT_TASK_TREE_H_
#define TEMVAR_TESTS_SUPPORT_TASK_TREE_H_

#include <functional>
#include <string>
#include <vector>

#include "frame/ref.h"
#include "tasks/bound_call.h"
#include "tasks/task_event.h"
#include "tasks/task_package.h"

namespace temvar_tests {

using temvar::Ref;
using temvar::RkTaskEventImpl;
using temvar::RkTaskImpl;
using temvar::RkTaskPackageImpl;

inline Ref<RkTaskImpl> MakeTask(const std::string& name, int32_t state = kTaskStateCreated,
                                std::function<void(RkTask*)> body = nullptr) {
  auto task = Ref<RkTaskImpl>::Adopt(new RkTaskImpl);
  task->SetName(name.c_str());
  task->SetState(state);
  if (body) task->SetFunc(temvar::MakeBoundFunc(std::move(body)).get());
  return task;
}

inline Ref<RkTaskPackageImpl> MakePackage(const std::vector<RkTaskImpl*>& children) {
  auto package = Ref<RkTaskPackageImpl>::Adopt(new RkTaskPackageImpl);
  for (RkTaskImpl* child : children) package->AddTask(child);
  return package;
}

inline Ref<RkTaskEventImpl> MakeEvent(const std::string& name,
                                      const std::vector<RkTaskPackageImpl*>& packages) {
  auto event = Ref<RkTaskEventImpl>::Adopt(new RkTaskEventImpl);
  event->SetName(name.c_str());
  for (RkTaskPackageImpl* package : packages) event->AddPackage(package);
  return event;
}

}  // namespace temvar_tests

#endif  // TEMVAR_TESTS_SUPPORT_TASK_TREE_H_
