#include "tasks/task_package_impl.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <typeinfo>

#include "frame/lock_impl.h"
#include "tasks/task_func_impl.h"

namespace temvar {
namespace {

// Index of the first entry from `start` on that is `hash`, or the size. Whole blocks are compared
// at once, in a form that compilers turn into vector instructions: a report of a task spends its
// time here.
size_t FindHash(const std::vector<uint32_t>& hashes, size_t start, uint32_t hash) {
  constexpr size_t kBlock = 32;
  const uint32_t* const data = hashes.data();
  size_t i = start;
  for (; i + kBlock <= hashes.size(); i += kBlock) {
    uint32_t hits = 0;
    for (size_t j = 0; j < kBlock; ++j) hits |= data[i + j] == hash ? 1u : 0u;
    if (hits != 0) break;
  }
  while (i < hashes.size() && data[i] != hash) ++i;
  return i;
}

}  // namespace

RkTaskPackageImpl::RkTaskPackageImpl() {
  SetType(kTaskTypePackage);
  SetFunc(MakeBoundFunc([this](RkTask* task) { ReportDone(task); }).get());
}

// Children go first to last, a vector promises no order. Nobody else can hold a reference here; the
// lock only makes a host that still uses the package's key wait.
RkTaskPackageImpl::~RkTaskPackageImpl() {
  const KeyedLock lock(this);
  for (Ref<RkTaskImpl>& child : tasks_) child = {};
}

void RkTaskPackageImpl::AddTask(RkTask* task) {
  InsertTask(task, std::numeric_limits<uint32_t>::max());
}

void RkTaskPackageImpl::InsertTask(RkTask* task, uint32_t index) {
  Ref<RkTaskImpl> child(ToImpl(task));
  if (child) child->SetInPackage();
  const KeyedLock lock(this);
  // An index beyond the end is an error of the caller; it appends.
  const auto position = static_cast<std::ptrdiff_t>(std::min<size_t>(index, tasks_.size()));
  // Reserved first, so that a failed allocation leaves both lists with the same length.
  if (nameHashes_.size() == nameHashes_.capacity()) nameHashes_.reserve(2 * tasks_.size() + 8);
  const uint32_t hash = child ? child->NameHash() : 0;
  const bool nested = child && child->Type() == kTaskTypePackage;
  tasks_.insert(tasks_.begin() + position, std::move(child));
  nameHashes_.insert(nameHashes_.begin() + position, hash);
  hasNested_ = hasNested_ || nested;
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

RkTaskImpl* RkTaskPackageImpl::FindTask(const TaskName& name) const {
  if (hashedAtRename_ != RenameCount()) RefreshHashes();
  for (size_t i = 0; i < tasks_.size(); ++i) {
    if (!hasNested_) i = FindHash(nameHashes_, i, name.ShortHash());
    if (i == tasks_.size()) break;
    RkTaskImpl* const child = tasks_[i].get();
    if (child == nullptr) continue;
    if (child->Type() == kTaskTypePackage) {
      const RkTaskPackageImpl* const nested = ToPackage(child);
      RkTaskImpl* const hit = nested == nullptr ? nullptr : nested->FindTask(name);
      if (hit != nullptr) return hit;
    } else if (child->HasName(name.text)) {
      return child;
    }
  }
  return nullptr;
}

void RkTaskPackageImpl::RefreshHashes() const {
  hashedAtRename_ = RenameCount();
  for (size_t i = 0; i < tasks_.size(); ++i) nameHashes_[i] = tasks_[i] ? tasks_[i]->NameHash() : 0;
}

RkTask* RkTaskPackageImpl::ChildAt(size_t index) const { return Ref(tasks_[index]).Detach(); }

RkTaskPackageImpl* ToPackage(RkTaskImpl* task) {
  if (task == nullptr || typeid(*task) != typeid(RkTaskPackageImpl)) return nullptr;
  return static_cast<RkTaskPackageImpl*>(task);
}

}  // namespace temvar

RkTaskPackage* CreateRkTaskPackage() { return new temvar::RkTaskPackageImpl; }
