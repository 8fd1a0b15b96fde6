#include "tasks/task_event_impl.h"

#include <algorithm>
#include <typeinfo>

#include "tasks/name_index.h"
#include "tasks/task_func_impl.h"

namespace temvar {

RkTaskEventImpl::RkTaskEventImpl() {
  SetType(kTaskTypeEvent);
  SetFunc(MakeBoundFunc([this](RkTask* task) { ReportDone(task); }).get());
}

// Written out, since releasers are host code that sees the order: packages first to last, then the
// paused tasks. Vectors promise no order of destruction, and fields go in reverse.
RkTaskEventImpl::~RkTaskEventImpl() {
  for (Ref<RkTaskImpl>& package : packages_) package = {};
  for (Ref<RkTaskImpl>& task : pausedTasks) task = {};
}

void RkTaskEventImpl::AddPackage(RkTask* package) {
  Ref<RkTaskImpl> added(ToImpl(package));
  if (!wasRegistered_.load(std::memory_order_acquire)) {
    packages_.push_back(std::move(added));
    return;
  }
  // A host should not, but look-ups find its tasks.
  MutexLock registry(registryMutex);
  RkTaskPackageImpl* const impl = keys.Empty() ? nullptr : ToPackage(added.get());
  packages_.reserve(packages_.size() + 1);
  if (impl != nullptr) nameIndex.AddPackage(*this, *impl);
  packages_.push_back(std::move(added));
}

void RkTaskEventImpl::SweepTasks(RkTaskImpl* package, int32_t fromState, int32_t toState,
                                 TaskRefs* out) {
  const RkTaskPackageImpl* const parent = ToPackage(package);
  if (parent == nullptr) return;
  for (const Ref<RkTaskImpl>& child : parent->Tasks()) {
    if (!child) continue;
    if (child->Type() == kTaskTypePackage) {
      SweepTasks(child.get(), fromState, toState, out);
    } else if (child->State() == fromState) {
      if (out != nullptr) out->push_back(child);
      child->SetState(toState);
    }
  }
}

RkTaskImpl* RkTaskEventImpl::FindInPackage(RkTaskImpl* package, const TaskName& name) {
  const RkTaskPackageImpl* const parent = ToPackage(package);
  return parent == nullptr ? nullptr : parent->FindTask(name);
}

bool RkTaskEventImpl::RemovePausedTask(RkTaskImpl* task) {
  const auto hit =
      std::find_if(pausedTasks.begin(), pausedTasks.end(),
                   [task](const Ref<RkTaskImpl>& paused) { return paused.get() == task; });
  if (hit == pausedTasks.end()) return false;
  pausedTasks.erase(hit);
  return true;
}

bool RkTaskEventImpl::ResetFinishedIfEqual(int64_t expected) {
  return finishedPackages_.compare_exchange_strong(expected, 0);
}

RkTaskEventImpl* ToEvent(RkTaskImpl* task) {
  if (task == nullptr || typeid(*task) != typeid(RkTaskEventImpl)) return nullptr;
  return static_cast<RkTaskEventImpl*>(task);
}

}  // namespace temvar

RkTaskEvent* CreateRkTaskEvent() { return new temvar::RkTaskEventImpl; }
