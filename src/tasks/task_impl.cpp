#include "tasks/task_impl.h"

#include <chrono>
#include <thread>
#include <typeinfo>

#include "tasks/name_index.h"
#include "tasks/task_event_impl.h"
#include "tasks/task_package_impl.h"
#include "temvar/task_schedular.h"

namespace temvar {

RkTaskImpl::RkTaskImpl() { StoreName("0"); }

// The order in which a host sees its releasers run is part of the contract, so it is written out
// here and doesn't follow from the order of the fields.
RkTaskImpl::~RkTaskImpl() {
  ClearData();
  ClearFunc();
}

void RkTaskImpl::Release() {
  if (refCount_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  switch (Type()) {
    case kTaskTypePlain:
    case kTaskTypePackage:
    case kTaskTypeEvent:
      delete this;
      break;
    default:
      // A host has set a kind that doesn't exist. Documented: such an object is never freed.
      break;
  }
}

// Through the task's own interface, as a host reports: a pause or a cancel counts here too.
void RkTaskImpl::ReportDone(RkTask* task) { task->ReportState(task, kTaskStateSucceeded); }

// The order of the tests is part of the contract: a paused task's report is consumed by the pause,
// a cancelled task reports nothing, and only then does the reported value count.
void RkTaskImpl::ReportState(RkTask* task, int32_t state) {
  RkTaskSchedular* const scheduler = TmvTaskSchedular();
  if (State() == kTaskStatePaused) {
    scheduler->PausePoint(task);
    while (State() == kTaskStatePaused) {
      // Woken for another event, or the event has left the registry, which leaves nothing to park
      // on: look again without spinning.
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      scheduler->PausePoint(task);
    }
    return;
  }
  if (State() == kTaskStateCancelled) return;
  if (state == kTaskStateSucceeded) {
    scheduler->TaskFinished(task);
  } else if (state == kTaskStateFailed) {
    scheduler->TaskFailed(task);
  }
}

void RkTaskImpl::SetFunc(RkTaskFunc* func) {
  // The new reference is taken first, in case the old holder is all that keeps it alive.
  Ref<RkTaskFuncImpl> replacement(ToImpl(func));
  ClearFunc();
  func_ = std::move(replacement);
}

void RkTaskImpl::SetData(RkTaskData* data) {
  Ref<RkTaskDataImpl> replacement(ToImpl(data));
  ClearData();
  data_ = std::move(replacement);
}

void RkTaskImpl::SetNameNumber(int64_t number) { StoreName(std::to_string(number)); }

void RkTaskImpl::SetName(const char* name) { StoreName(name == nullptr ? "" : name); }

// The hash of a linked task leads to its entry, so it changes under the mutex only.
void RkTaskImpl::StoreName(std::string name) {
  if (!indexEntry.isListed.load(std::memory_order_acquire)) return name_.swap(name);
  MutexLock registry(registryMutex);
  if (indexEntry.isLinked) {
    nameIndex.Rename(*this, name);
  } else {
    SwapListedName(name);
  }
}

void RkTaskImpl::SwapListedName(std::string& name) {
  name_.swap(name);
  HashName();
}

// Most tasks of a pool are never in a package, so a name is not hashed before. When the event is
// registered the task may have left the caches, and here it is in them as a rule.
void RkTaskImpl::SetListed() {
  if (indexEntry.isListed.load(std::memory_order_relaxed)) return;
  HashName();
  indexEntry.isListed.store(true, std::memory_order_release);
}

void RkTaskImpl::HashName() {
  indexEntry.hash.store(TaskName::HashOf(name_), std::memory_order_relaxed);
}

// RkTask is a virtual base, so a static downcast doesn't exist and dynamic_cast walks the
// hierarchy. There are three classes only, so the exact type and the address of the whole object
// are enough.
RkTaskImpl* ToImpl(RkTask* task) {
  if (task == nullptr) return nullptr;
  const std::type_info& type = typeid(*task);
  void* const object = dynamic_cast<void*>(task);
  if (type == typeid(RkTaskImpl)) return static_cast<RkTaskImpl*>(object);
  if (type == typeid(RkTaskPackageImpl)) return static_cast<RkTaskPackageImpl*>(object);
  if (type == typeid(RkTaskEventImpl)) return static_cast<RkTaskEventImpl*>(object);
  return nullptr;
}

}  // namespace temvar

RkTask* CreateRkTask() { return new temvar::RkTaskImpl; }

RkTask* DuplicateRkTask(RkTask* task) {
  if (temvar::RkTaskImpl* impl = temvar::ToImpl(task)) impl->AddRef();
  return task;
}

void DestroyRkTask(RkTask* task) {
  if (temvar::RkTaskImpl* impl = temvar::ToImpl(task)) impl->Release();
}
