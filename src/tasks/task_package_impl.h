#ifndef TEMVAR_TASKS_TASK_PACKAGE_IMPL_H_
#define TEMVAR_TASKS_TASK_PACKAGE_IMPL_H_

#include <atomic>
#include <cstdint>
#include <vector>

#include "frame/mutex.h"
#include "tasks/task_impl.h"
#include "temvar/task_package.h"

namespace temvar {

class RkTaskEventImpl;

// The registry of events, and the trees below them: sweeps, walks and insertions exclude each
// other.
extern Mutex registryMutex;

// Thread-safety:
// 1. The operations of the interface take the keyed lock of the object's address.
// 2. The scheduler reads the children under its registry mutex, without that lock. A package that
//    was once below a registered event is indexed, and edits of it take the registry mutex before
//    the keyed lock. So a list that the scheduler can reach doesn't change under a walk, and a
//    package that is still being built meets no lock but its own.
// 3. The position is written by the scheduler alone.
class RkTaskPackageImpl final : public RkTaskImpl, public RkTaskPackage {
 public:
  RkTaskPackageImpl();
  ~RkTaskPackageImpl() override;

  void AddTask(RkTask* task) override;
  void InsertTask(RkTask* task, uint32_t index) override;
  void SetContinueOnFailure(bool continueOnFailure) override;
  uint32_t GetCount() override;
  RkTask* GetFirst() override;
  RkTask* GetLast() override;
  RkTask* GetPrevious() override;
  uint32_t GetCurrentIndex() override;
  RkTask* GetNext() override;

  // Inserts `task` after the first child that is `after`. False if there is none. For the
  // scheduler: the package is below a registered event, or was.
  bool InsertAfter(RkTask* after, RkTask* task) TMV_REQUIRES(registryMutex);

  // For NameIndex, under the registry mutex; from SetIndexed on, see 2.
  void SetIndexed();
  bool isComplete = false;
  PointerSet<RkTaskEventImpl> listedIn;
  bool HasNested() const { return hasNested_; }

  // For the scheduler, see 2.
  using Children = std::vector<Ref<RkTaskImpl>>;
  const Children& Tasks() const { return tasks_; }
  // The first plain task of this name, depth first, or null. No reference is added.
  RkTaskImpl* FindTask(const TaskName& name) const;
  uint32_t CurrentIndex() const { return currentIndex_.load(std::memory_order_relaxed); }
  void SetCurrentIndex(uint32_t index) { currentIndex_.store(index, std::memory_order_relaxed); }
  bool ContinueOnFailure() const { return continueOnFailure_.load(std::memory_order_relaxed); }

 private:
  RkTask* ChildAt(size_t index) const;
  void Insert(Ref<RkTaskImpl>& child, size_t index);
  void InsertIndexed(Ref<RkTaskImpl>& child, size_t index) TMV_REQUIRES(registryMutex);
  void ReserveOne();

  Children tasks_;
  std::atomic<bool> isIndexed_{false};
  std::atomic<uint32_t> currentIndex_{0};
  std::atomic<bool> continueOnFailure_{true};
  bool hasNested_ = false;  // A child is a package.
};

// The package that this task is, or null.
RkTaskPackageImpl* ToPackage(RkTaskImpl* task);

}  // namespace temvar

#endif  // TEMVAR_TASKS_TASK_PACKAGE_IMPL_H_
