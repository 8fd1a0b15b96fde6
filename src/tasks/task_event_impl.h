#ifndef TEMVAR_TASKS_TASK_EVENT_IMPL_H_
#define TEMVAR_TASKS_TASK_EVENT_IMPL_H_

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "tasks/task_impl.h"
#include "tasks/task_package_impl.h"
#include "temvar/task_event.h"

namespace temvar {

using TaskRefs = std::vector<Ref<RkTaskImpl>>;

// Takes no lock of its own:
// 1. The packages are added before the event is handed over; sweeps and searches run under the
//    scheduler's registry mutex.
// 2. pausedTasks and pauseGeneration are guarded by the scheduler's pause mutex.
// 3. The counters are atomics.
class RkTaskEventImpl final : public RkTaskImpl, public RkTaskEvent {
 public:
  RkTaskEventImpl();
  ~RkTaskEventImpl() override;

  void AddPackage(RkTask* package) override;

  const TaskRefs& Packages() const { return packages_; }

  // Moves each plain task below `package` that is in the state `fromState` to `toState` and appends
  // it to `out` if that isn't null, depth first. Nested packages are walked; their own state is
  // left alone.
  static void SweepTasks(RkTaskImpl* package, int32_t fromState, int32_t toState, TaskRefs* out);

  // The first plain task of this name below `package`, depth first, or null. No reference is added.
  static RkTaskImpl* FindInPackage(RkTaskImpl* package, const TaskName& name);

  // Removes the task from pausedTasks, with the list's reference. False if it isn't there.
  bool RemovePausedTask(RkTaskImpl* task);

  void AddFinishedPackage() { finishedPackages_.fetch_add(1); }
  void SetFinishedPackages(int64_t count) { finishedPackages_.store(count); }
  // If `expected` packages have ended, sets the count back to 0 and returns true.
  bool ResetFinishedIfEqual(int64_t expected);

  void StoreDrainCount(int64_t count) { drainCount_.store(count); }
  int64_t LoadDrainCount() const { return drainCount_.load(); }
  void DecrementDrainCount() { drainCount_.fetch_sub(1); }

  // For NameIndex, under the registry mutex: the keys that the registry has the event under.
  PointerSet<const std::string> keys;
  // From now on packages are added under the registry mutex.
  void SetRegistered() { wasRegistered_.store(true, std::memory_order_release); }

  // Tasks that were running when a pause came and have not reached a pause point yet.
  TaskRefs pausedTasks;
  // Counts what ends a wait for pausedTasks: resuming or cancelling the event.
  uint64_t pauseGeneration = 0;

 private:
  std::atomic<bool> wasRegistered_{false};
  std::atomic<int64_t> drainCount_{0};
  std::atomic<int64_t> finishedPackages_{0};
  TaskRefs packages_;
};

// The event that this task is, or null.
RkTaskEventImpl* ToEvent(RkTaskImpl* task);

}  // namespace temvar

#endif  // TEMVAR_TASKS_TASK_EVENT_IMPL_H_
