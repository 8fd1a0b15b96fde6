#ifndef TEMVAR_TASKS_TASK_IMPL_H_
#define TEMVAR_TASKS_TASK_IMPL_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "frame/prefetch.h"
#include "frame/ref.h"
#include "tasks/pointer_set.h"
#include "tasks/task_data_impl.h"
#include "tasks/task_func_impl.h"
#include "temvar/task.h"

namespace temvar {

// A name to search for, with its hash: a search compares hashes first and reads the text on a hit
// only.
struct TaskName {
  explicit TaskName(std::string_view name) : text(name), hash(HashOf(name)) {}

  static uint32_t HashOf(std::string_view name) {
    return static_cast<uint32_t>(std::hash<std::string_view>()(name));
  }

  std::string_view text;
  uint32_t hash;
};

class RkTaskImpl;
class RkTaskPackageImpl;

// What NameIndex keeps of a task; guarded by the registry mutex, but for the atomics.
struct NameIndexEntry {
  PointerSet<RkTaskPackageImpl> parents;
  RkTaskImpl* next = nullptr;  // In the chain of the name's hash, if the task is linked.
  RkTaskImpl* previous = nullptr;
  std::atomic<uint32_t> hash{0};  // Of the name, if the task is listed.
  bool isShared = false;          // Another task with this hash may be linked.
  bool isLinked = false;
  std::atomic<bool> isListed{false};  // The task is or was in a package.
};

// Name, func and data are set up by the host before the task is handed over, and are only read from
// then on. Type and state are read from any thread; the scheduler writes the state under its state
// mutex.
class RkTaskImpl : public virtual RkTask {
 public:
  RkTaskImpl();
  virtual ~RkTaskImpl();

  // Reports success of `task`: the body of events and packages.
  virtual void ReportDone(RkTask* task);

  void ReportState(RkTask* task, int32_t state) override;
  void SetFunc(RkTaskFunc* func) override;
  RkTaskFunc* GetFunc() override { return func_.get(); }
  void SetData(RkTaskData* data) override;
  RkTaskData* GetData() override { return data_.get(); }
  void ClearData() override { data_ = {}; }
  void ClearFunc() override { func_ = {}; }
  int32_t GetType() override { return Type(); }
  void SetType(int32_t type) override { type_.store(type, std::memory_order_relaxed); }
  int32_t GetState() override { return State(); }
  void SetState(int32_t state) override { state_.store(state, std::memory_order_release); }
  const char* GetName() override { return name_.c_str(); }
  void SetNameNumber(int64_t number) override;
  void SetName(const char* name) override;

  int32_t Type() const { return type_.load(std::memory_order_relaxed); }
  int32_t State() const { return state_.load(std::memory_order_acquire); }
  const std::string& Name() const { return name_; }
  const Ref<RkTaskFuncImpl>& Func() const { return func_; }
  bool HasName(std::string_view name) const { return name_ == name; }

  // For NameIndex. A listed task is renamed under the registry mutex, which guards the entry too.
  NameIndexEntry indexEntry;
  void SwapListedName(std::string& name);
  // The task is in a package from now on.
  void SetListed();
  uint32_t NameHash() const { return indexEntry.hash.load(std::memory_order_relaxed); }

  // These fetch what the index writes, and what a step of a package reads and writes.
  void PrefetchForIndex() const { Prefetch(&indexEntry, sizeof(indexEntry)); }
  void PrefetchForStep() const { Prefetch(this, SizeBeforeName()); }
  // The task after this one in its package. Its turn comes when this one reports.
  void SetNext(const RkTaskImpl& next) {
    next_.Set(this, &next);
    nextFunc_.Set(this, next.func_.get());
  }
  void PrefetchNext() const {
    next_.Fetch(this, SizeBeforeName());
    nextFunc_.Fetch(this, sizeof(RkTaskFuncImpl));
  }

  void AddRef() { refCount_.fetch_add(1, std::memory_order_relaxed); }
  void Release();

  // A task of the library itself, such as the one that carries out a cancel. It has the default
  // name "0" but belongs to no event, even if a host's task has that name too.
  bool IsInternal() const { return internal_; }
  void SetInternal() { internal_ = true; }

  // A pause or a cancel waits for this task to stop, or has waited.
  bool IsAwaited() const { return isAwaited_.load(std::memory_order_relaxed); }
  // True if it was not awaited before.
  bool SetAwaited() { return !isAwaited_.exchange(true, std::memory_order_relaxed); }

  // Number of threads that wait at a pause point with this task. Guarded by the scheduler's pause
  // mutex. As small as the flags after it, so that a task stays within 128 bytes.
  int16_t parkedCount = 0;

 private:
  void StoreName(std::string name);
  void HashName();

  size_t SizeBeforeName() const {
    return static_cast<size_t>(reinterpret_cast<const char*>(&name_) -
                               reinterpret_cast<const char*>(this));
  }

  bool internal_ = false;
  std::atomic<bool> isAwaited_{false};
  std::atomic<int32_t> refCount_{1};
  std::atomic<int32_t> type_{kTaskTypePlain};
  std::atomic<int32_t> state_{kTaskStateCreated};
  PrefetchHint next_;
  PrefetchHint nextFunc_;
  Ref<RkTaskDataImpl> data_;
  Ref<RkTaskFuncImpl> func_;
  std::string name_;
};

// The implementation of an interface pointer; null for null and for an object that is not of this
// library.
RkTaskImpl* ToImpl(RkTask* task);

// Number of awaited tasks that have left the pool's list of running tasks. Raised before the pool
// sends its message, under the same lock, so that the scheduler knows which messages concern a
// wait.
inline constinit std::atomic<uint64_t> awaitedDepartures{0};

// The task whose function runs on the calling thread or is about to, or null. Not owned.
inline constinit thread_local RkTaskImpl* currentTask = nullptr;

}  // namespace temvar

#endif  // TEMVAR_TASKS_TASK_IMPL_H_
