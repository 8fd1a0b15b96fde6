#ifndef TEMVAR_TASKS_TASK_PACKAGE_IMPL_H_
#define TEMVAR_TASKS_TASK_PACKAGE_IMPL_H_

#include <atomic>
#include <cstdint>
#include <vector>

#include "tasks/task_impl.h"
#include "temvar/task_package.h"

namespace temvar {

// Thread-safety:
// 1. The operations of the interface take the keyed lock of the object's address.
// 2. The scheduler reads the children under its registry mutex, without that lock. It holds the
//    registry mutex for its own insertions too, so a list that it can reach doesn't change under a
//    walk.
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

  // Inserts `task` after the first child that is `after`. False if there is none.
  bool InsertAfter(RkTask* after, RkTask* task);

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
  void RefreshHashes() const;

  Children tasks_;
  // The name hash of each child, side by side: a search reads these, and a child only on a hit.
  // The search refreshes them when a child was renamed since; guarded like tasks_, see 2.
  mutable std::vector<uint32_t> nameHashes_;
  mutable uint64_t hashedAtRename_ = 0;
  mutable bool hasNested_ = false;
  std::atomic<uint32_t> currentIndex_{0};
  std::atomic<bool> continueOnFailure_{true};
};

// The package that this task is, or null.
RkTaskPackageImpl* ToPackage(RkTaskImpl* task);

}  // namespace temvar

#endif  // TEMVAR_TASKS_TASK_PACKAGE_IMPL_H_
