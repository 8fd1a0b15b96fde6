#include "tasks/task_package.h"

#include <algorithm>
#include <stdexcept>
#include <typeinfo>

#include "frame/keyed_locks.h"
#include "tasks/bound_call.h"

namespace temvar {

RkTaskPackageImpl::RkTaskPackageImpl() {
  SetType(kTaskTypePackage);
  SetFunc(MakeBoundFunc([this](RkTask* task) { ReportDone(task); }).get());
}

RkTaskPackageImpl::~RkTaskPackageImpl() {
  const KeyedLock lock(this);
  for (Ref<RkTaskImpl>& child : tasks_) child = {};
}

void RkTaskPackageImpl::AddTask(RkTask* task) {
  Ref<RkTaskImpl> child(ToImpl(task));
  const KeyedLock lock(this);
  tasks_.push_back(std::move(child));
}

void RkTaskPackageImpl::InsertTask(RkTask* task, uint32_t index) {
  Ref<RkTaskImpl> child(ToImpl(task));
  const KeyedLock lock(this);
  const size_t position = std::min<size_t>(index, tasks_.size());
  tasks_.insert(tasks_.begin() + static_cast<std::ptrdiff_t>(position), std::move(child));
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

bool RkTaskPackageImpl::InsertAfter(RkTask* after, RkTask* task) {
  Children copy;
  {
    const KeyedLock lock(this);
    copy = tasks_;
  }
  const RkTaskImpl* const wanted = ToImpl(after);
  const auto hit = std::find_if(copy.begin(), copy.end(), [wanted](const Ref<RkTaskImpl>& child) {
    return child.get() == wanted;
  });
  if (hit == copy.end()) return false;
  InsertTask(task, static_cast<uint32_t>(hit - copy.begin()) + 1);
  return true;
}

RkTask* RkTaskPackageImpl::ChildAt(size_t index) const { return Ref(tasks_[index]).Detach(); }

RkTaskPackageImpl* ToPackage(RkTaskImpl* task) {
  if (task == nullptr || typeid(*task) != typeid(RkTaskPackageImpl)) return nullptr;
  return static_cast<RkTaskPackageImpl*>(task);
}

}  // namespace temvar

RkTaskPackage* CreateRkTaskPackage() { return new temvar::RkTaskPackageImpl; }
