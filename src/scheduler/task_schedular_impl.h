#ifndef TEMVAR_SCHEDULER_TASK_SCHEDULAR_IMPL_H_
#define TEMVAR_SCHEDULER_TASK_SCHEDULAR_IMPL_H_

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "frame/mutex.h"
#include "frame/ref.h"
#include "frame/subject.h"
#include "tasks/name_index.h"
#include "tasks/task_event_impl.h"
#include "tasks/task_package_impl.h"
#include "temvar/task_pool.h"
#include "temvar/task_schedular.h"

namespace temvar {

// Parking and resuming: the events' lists of pausing tasks, and the wait at a pause point.
extern Mutex pauseMutex;

// The states of tasks that the scheduler moves, the advance of packages, the cancelled names.
extern Mutex stateMutex TMV_ACQUIRED_AFTER(registryMutex);

// Signalled when a running task may have stopped: it parked, it left the pool, or its event is no
// longer paused. Signalled from inside the pool's locks, so it takes none of the mutexes above.
extern EventCount& drainCondition;

// Signalled to parked tasks when an event was resumed. Waited on under pauseMutex.
extern Condition& resumeCondition;
// Number of resumes so far.
extern uint64_t resumeCount TMV_GUARDED_BY(pauseMutex);

// Thread-safety:
// 1. Locks are taken in the order pause, registry, state, and then those of the pool.
// 2. The pool is asked for running and queued tasks without any of them, since it asks back.
// 3. References that may be the last are dropped without them: the caller keeps what a sweep or a
//    removal yields until the locks are free.
// 4. A plain task moves to paused, back to active, and to cancelled under the registry mutex. So a
//    task that isn't paused when a completion step looks under that mutex doesn't become so before
//    its end.
class RkTaskSchedularImpl final : public TMVObserver, public RkTaskSchedular {
 public:
  ~RkTaskSchedularImpl() override;

  void Update(void* data, const char* key) override;

  void CancelEvent(const char* name) override;
  bool CancelEventOfTask(const char* taskName) override;
  void PauseEvent(const char* name) override;
  void ResumeEvent(const char* name) override;
  bool CheckPause(RkTask* task) override;
  void RegisterEvent(RkTask* event) override;
  void AddEvent(RkTask* event) override;
  void ScheduleTask(RkTask* task) override;
  void RemoveEvent(const char* name) override;
  void RemoveEventLocked(const char* name) override TMV_REQUIRES(registryMutex);
  int32_t PausePoint(RkTask* task) override;
  int32_t PausePointLocked(RkTask* task) override TMV_REQUIRES(pauseMutex);
  void TaskFinished(RkTask* task) override;
  void TaskFailed(RkTask* task) override;
  RkTask* FindTask(const char* name) override;
  bool IsTaskCancelled(const char* name) override;
  RkTask* FindEvent(const char* name) override;
  RkTask* FindEventOfTask(const char* taskName) override;
  RkTask* FindEventOfPackage(RkTask* package) override;
  TaskListNode* ListCurrentTasks(RkTask* event) override;
  void FreeTaskList(TaskListNode* list) override;
  RkTaskPackage* FindPackageOfTask(const char* taskName) override;
  bool InsertTaskAfter(RkTask* newTask, RkTask* existing) override;
  bool InsertTaskAfterName(RkTask* newTask, const char* existingName) override;
  uint64_t GetEventCount() override;
  void CancelEventEx(const char* name, bool remove) override;

 private:
  using EventRef = Ref<RkTaskEventImpl>;
  // Keys order by their bytes taken as unsigned, a shorter key before its continuation.
  using Events = std::map<std::string, EventRef, std::less<>>;

  // Where a task was found, with references.
  struct Owners {
    EventRef event;
    Ref<RkTaskPackageImpl> package;
  };

  // task_schedular_impl.cpp
  TaskPlace Walk(const TaskName& name) const TMV_REQUIRES(registryMutex);
  TaskPlace FindPlace(const TaskName& name) const TMV_REQUIRES(registryMutex);
  // The same for the name of a task.
  TaskPlace FindPlaceOf(RkTaskImpl& task) const TMV_REQUIRES(registryMutex);
  Owners FindOwners(const TaskName& name) TMV_EXCLUDES(registryMutex);
  EventRef FindEventRef(const char* name) TMV_EXCLUDES(registryMutex);
  EventRef FindEventListing(RkTaskImpl* package) const TMV_REQUIRES(registryMutex);
  void StoreEvent(RkTaskEventImpl* event) TMV_REQUIRES(registryMutex);
  // These remove an entry, and the result keeps the registry's reference: what has this name, this
  // event if it is still the one under its name, this entry.
  Events::node_type ExtractNamed(const char* name) TMV_REQUIRES(registryMutex);
  Events::node_type ExtractEvent(const RkTaskEventImpl& event) TMV_REQUIRES(registryMutex);
  Events::node_type ExtractEntry(Events::iterator entry) TMV_REQUIRES(registryMutex);
  // Puts an extracted entry back, unless another event has taken the name meanwhile.
  void RestoreEntry(Events::node_type& entry) TMV_REQUIRES(registryMutex);
  bool HoldsEvent(const RkTaskEventImpl& event) const TMV_REQUIRES(registryMutex);
  bool IsRegistered(const RkTaskEventImpl& event) TMV_EXCLUDES(registryMutex);

  // completion.cpp
  void CompletePlain(RkTaskImpl& task, int32_t state);
  void CompletePackage(RkTaskImpl& package);
  bool TryCompletePlain(RkTaskImpl& task, int32_t state, RkTaskPackageImpl& package)
      TMV_REQUIRES(registryMutex);
  static void PrefetchAfter(const RkTaskPackageImpl::Children& children, size_t index);
  void Advance(RkTaskPackageImpl& package, int32_t lastState)
      TMV_REQUIRES(registryMutex, stateMutex);
  static void Queue(RkTask& task, int32_t state);

  // pause.cpp
  void SweepEvent(RkTaskEventImpl& event, int32_t fromState, int32_t toState, TaskRefs* swept)
      TMV_REQUIRES(registryMutex, stateMutex);
  uint64_t BeginPause(RkTaskEventImpl& event);
  bool IsPauseOver(RkTaskEventImpl& event, uint64_t generation);
  void EndPauseWaits(RkTaskEventImpl& event) TMV_EXCLUDES(pauseMutex);
  void Park(RkTaskImpl& task, RkTaskEventImpl& event) TMV_REQUIRES(pauseMutex);

  // cancel.cpp
  void RunCancel(RkTaskEventImpl& event);
  void CancelActiveTasks(RkTaskEventImpl& event);
  void AwaitDrain(RkTaskEventImpl& event);
  Ref<RkTaskImpl> MakeCancelTask(const EventRef& event);

  // Of awaitedDepartures; used by Update alone, which runs under the pool's locks.
  uint64_t seenDepartures_ = 0;
  Events eventsByName_ TMV_GUARDED_BY(registryMutex);
  std::set<std::string, std::less<>> cancelledNames_ TMV_GUARDED_BY(stateMutex);
};

// The running plain tasks of an event as the pool lists them, released at the end of its scope.
// They are awaited: the drain condition is notified when one of them parks or leaves the pool. A
// task that was not awaited when the pool listed it may have left since, so it counts from the next
// list on.
class RunningTasks {
 public:
  explicit RunningTasks(const char* eventName) {
    bool isComplete = false;
    while (!isComplete) {
      TmvTaskPool()->FreeTaskList(list_);
      list_ = TmvTaskPool()->ListRunning(eventName, count_);
      isComplete = true;
      for (const TaskListNode* node = list_; node != nullptr; node = node->next) {
        if (ToImpl(node->task)->SetAwaited()) isComplete = false;
      }
    }
  }
  ~RunningTasks() { TmvTaskPool()->FreeTaskList(list_); }
  RunningTasks(const RunningTasks&) = delete;
  RunningTasks& operator=(const RunningTasks&) = delete;

  const TaskListNode* First() const { return list_; }
  uint32_t Count() const { return count_; }
  bool Contains(RkTask* task) const {
    for (const TaskListNode* node = list_; node != nullptr; node = node->next) {
      if (node->task == task) return true;
    }
    return false;
  }

 private:
  uint32_t count_ = 0;
  TaskListNode* list_ = nullptr;
};

}  // namespace temvar

#endif  // TEMVAR_SCHEDULER_TASK_SCHEDULAR_IMPL_H_
