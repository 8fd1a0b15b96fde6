#include "tasks/task_package_impl.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <typeinfo>

#include "frame/lock_impl.h"
#include "tasks/name_index.h"
#include "tasks/task_func_impl.h"

namespace temvar {

RkTaskPackageImpl::RkTaskPackageImpl() {
  SetType(kTaskTypePackage);
  SetFunc(MakeBoundFunc([this](RkTask* task) { ReportDone(task); }).get());
}

// Children go first to last, a vector promises no order. Nobody else can hold a reference here; the
// lock only makes a host that still uses the package's key wait.
RkTaskPackageImpl::~RkTaskPackageImpl() {
  // Before the keyed lock, which comes after the registry mutex.
  if (isIndexed_.load(std::memory_order_relaxed)) nameIndex.ForgetPackage(*this);
  Children children;
  {
    const KeyedLock lock(this);
    children.swap(tasks_);
  }
  // Without the lock, since nested packages take the registry mutex as well.
  for (Ref<RkTaskImpl>& child : children) child = {};
}

void RkTaskPackageImpl::AddTask(RkTask* task) {
  InsertTask(task, std::numeric_limits<uint32_t>::max());
}

void RkTaskPackageImpl::InsertTask(RkTask* task, uint32_t index) {
  Ref<RkTaskImpl> child(ToImpl(task));
  if (!isIndexed_.load(std::memory_order_acquire)) {
    const KeyedLock lock(this);
    if (!isIndexed_.load(std::memory_order_relaxed)) return Insert(child, index);
  }
  MutexLock registry(registryMutex);
  InsertIndexed(child, index);
}

// The last step that can fail is AddChild, so that the index and the list agree.
void RkTaskPackageImpl::InsertIndexed(Ref<RkTaskImpl>& child, size_t index) {
  if (RkTaskPackageImpl* const nested = ToPackage(child.get())) nameIndex.Complete(*nested);
  const KeyedLock lock(this);
  ReserveOne();
  if (child) nameIndex.AddChild(*this, *child);
  Insert(child, index);
}

// An index beyond the end is an error of the caller; it appends.
void RkTaskPackageImpl::Insert(Ref<RkTaskImpl>& child, size_t index) {
  ReserveOne();
  if (child) child->SetListed();
  if (ToPackage(child.get()) != nullptr) hasNested_ = true;
  const auto position = static_cast<std::ptrdiff_t>(std::min(index, tasks_.size()));
  tasks_.insert(tasks_.begin() + position, std::move(child));
}

void RkTaskPackageImpl::ReserveOne() {
  if (tasks_.size() == tasks_.capacity()) tasks_.reserve(2 * tasks_.size() + 8);
}

void RkTaskPackageImpl::SetIndexed() {
  const KeyedLock lock(this);  // Orders what follows after edits without the registry mutex.
  isIndexed_.store(true, std::memory_order_release);
}

void RkTaskPackageImpl::SetContinueOnFailure(bool continueOnFailure) {
  continueOnFailure_.store(continueOnFailure, std::memory_order_relaxed);
}

uint32_t RkTaskPackageImpl::GetCount() {
  const KeyedLock lock(this);
  return static_cast<uint32_t>(tasks_.size());
}

RkTask* RkTaskPackageImpl::GetFirst() {
  const KeyedLock lock(this);
  return tasks_.empty() ? nullptr : ChildAt(0);
}

RkTask* RkTaskPackageImpl::GetLast() {
  const KeyedLock lock(this);
  return tasks_.empty() ? nullptr : ChildAt(tasks_.size() - 1);
}

RkTask* RkTaskPackageImpl::GetPrevious() {
  const KeyedLock lock(this);
  const uint32_t current = CurrentIndex();
  if (current == 0) return nullptr;
  if (current > tasks_.size()) throw std::out_of_range("invalid vector<T> subscript");
  return ChildAt(current - 1);
}

uint32_t RkTaskPackageImpl::GetCurrentIndex() { return CurrentIndex(); }

RkTask* RkTaskPackageImpl::GetNext() {
  const KeyedLock lock(this);
  const size_t next = size_t{CurrentIndex()} + 1;
  return next < tasks_.size() ? ChildAt(next) : nullptr;
}

// The registry mutex, and not the keyed lock, keeps the position valid until the insertion.
bool RkTaskPackageImpl::InsertAfter(RkTask* after, RkTask* task) {
  const RkTaskImpl* const wanted = ToImpl(after);
  const auto hit =
      std::find_if(tasks_.begin(), tasks_.end(),
                   [wanted](const Ref<RkTaskImpl>& child) { return child.get() == wanted; });
  if (hit == tasks_.end()) return false;
  Ref<RkTaskImpl> child(ToImpl(task));
  InsertIndexed(child, static_cast<size_t>(hit - tasks_.begin()) + 1);
  return true;
}

RkTaskImpl* RkTaskPackageImpl::FindTask(const TaskName& name) const {
  for (const Ref<RkTaskImpl>& child : tasks_) {
    if (!child) continue;
    if (child->Type() == kTaskTypePackage) {
      const RkTaskPackageImpl* const nested = ToPackage(child.get());
      RkTaskImpl* const hit = nested == nullptr ? nullptr : nested->FindTask(name);
      if (hit != nullptr) return hit;
    } else if (child->HasName(name.text)) {
      return child.get();
    }
  }
  return nullptr;
}

RkTask* RkTaskPackageImpl::ChildAt(size_t index) const { return Ref(tasks_[index]).Detach(); }

RkTaskPackageImpl* ToPackage(RkTaskImpl* task) {
  if (task == nullptr || typeid(*task) != typeid(RkTaskPackageImpl)) return nullptr;
  return static_cast<RkTaskPackageImpl*>(task);
}

}  // namespace temvar

RkTaskPackage* CreateRkTaskPackage() { return new temvar::RkTaskPackageImpl; }
