// Pausing and resuming events.
//
// 1. Under pauseMutex: who waits at a pause point (parkedCount of a task), whom the pauses of an
//    event wait for (pausedTasks), what has ended them (pauseGeneration), and resumeCount.
// 2. A task inside PauseEvent counts as waiting at a pause point, for every pause. So tasks that
//    pause their own event or each other's don't wait for each other, and neither does a host that
//    pauses on top of them. The task doesn't park there: when its call returns it goes on to its
//    next pause point.
// 3. The pauses of one event share pausedTasks. A pause lists the running tasks that don't wait at
//    a pause point; each waiter removes those that do by now, or have left the pool. A wait ends
//    when the list is empty, or when the event was resumed, cancelled or removed.
// 4. After each change that can end a wait comes a notification of drainCondition: an awaited task
//    parks, enters PauseEvent, or leaves the list of running tasks; the generation changes; the
//    registry loses an entry or has it overwritten.
// 5. A resume needs no memory, so that it also undoes a pause that found none on its way.
#include <algorithm>
#include <iterator>

#include "scheduler/task_schedular_impl.h"

namespace temvar {
namespace {

// Marks the task that runs on this thread, if one does, as waiting at a pause point.
class StandingTask {
 public:
  StandingTask() : task_(currentTask) {
    if (task_ == nullptr) return;
    {
      MutexLock pause(pauseMutex);
      ++task_->parkedCount;
    }
    if (task_->IsAwaited()) drainCondition.NotifyAll();
  }

  ~StandingTask() {
    if (task_ == nullptr) return;
    MutexLock pause(pauseMutex);
    --task_->parkedCount;
  }

  StandingTask(const StandingTask&) = delete;
  StandingTask& operator=(const StandingTask&) = delete;

 private:
  RkTaskImpl* const task_;
};

}  // namespace

void RkTaskSchedularImpl::SweepEvent(RkTaskEventImpl& event, int32_t fromState, int32_t toState,
                                     TaskRefs* swept) {
  for (const Ref<RkTaskImpl>& package : event.Packages()) {
    RkTaskEventImpl::SweepTasks(package.get(), fromState, toState, swept);
  }
}

void RkTaskSchedularImpl::PauseEvent(const char* name) {
  const EventRef event = FindEventRef(name);
  if (!event) return;
  const StandingTask standing;
  const uint64_t generation = BeginPause(*event);
  drainCondition.Await([this, &event, generation] { return IsPauseOver(*event, generation); });
}

// Moves the active tasks to paused and lists those among them that run. Returns the generation of
// the pause.
uint64_t RkTaskSchedularImpl::BeginPause(RkTaskEventImpl& event) {
  uint64_t generation = 0;
  {
    MutexLock pause(pauseMutex);
    MutexLock registry(registryMutex);
    MutexLock state(stateMutex);
    // An event that was removed meanwhile could never be resumed by its name.
    if (HoldsEvent(event)) SweepEvent(event, kTaskStateActive, kTaskStatePaused, nullptr);
    generation = event.pauseGeneration;
  }

  const RunningTasks running(event.GetName());
  TaskRefs waitedFor;
  MutexLock pause(pauseMutex);
  for (const TaskListNode* node = running.First(); node != nullptr; node = node->next) {
    RkTaskImpl* const task = ToImpl(node->task);
    if (task->parkedCount == 0) waitedFor.emplace_back(task);
  }
  event.StoreDrainCount(static_cast<int64_t>(waitedFor.size()));
  waitedFor.swap(event.pausedTasks);
  return generation;
}

// Whether nothing is left to wait for: each listed task has parked or has left the pool, or the
// event was resumed, cancelled or removed.
bool RkTaskSchedularImpl::IsPauseOver(RkTaskEventImpl& event, uint64_t generation) {
  const bool registered = IsRegistered(event);
  const RunningTasks running(event.GetName());
  TaskRefs gone;  // Dropped when the mutex is free.
  MutexLock pause(pauseMutex);
  if (!registered || event.pauseGeneration != generation) return true;
  const auto isGone = [&running](const Ref<RkTaskImpl>& task) {
    return task->parkedCount != 0 || !running.Contains(task.get());
  };
  std::copy_if(event.pausedTasks.begin(), event.pausedTasks.end(), std::back_inserter(gone),
               isGone);
  std::erase_if(event.pausedTasks, isGone);
  event.StoreDrainCount(static_cast<int64_t>(event.pausedTasks.size()));
  return event.LoadDrainCount() == 0;
}

// Ends every PauseEvent that waits for this event.
void RkTaskSchedularImpl::EndPauseWaits(RkTaskEventImpl& event) {
  {
    MutexLock pause(pauseMutex);
    ++event.pauseGeneration;
  }
  drainCondition.NotifyAll();
}

void RkTaskSchedularImpl::ResumeEvent(const char* name) {
  if (name == nullptr) return;
  EventRef event;  // Dropped when the mutexes are free.
  MutexLock pause(pauseMutex);
  MutexLock registry(registryMutex);
  const auto entry = eventsByName_.find(name);
  if (entry == eventsByName_.end()) return;
  event = entry->second;
  ++event->pauseGeneration;
  ++resumeCount;
  resumeCondition.NotifyAll();
  drainCondition.NotifyAll();
  MutexLock state(stateMutex);
  SweepEvent(*event, kTaskStatePaused, kTaskStateActive, nullptr);
}

int32_t RkTaskSchedularImpl::PausePoint(RkTask* task) {
  RkTaskImpl* const impl = ToImpl(task);
  if (impl == nullptr) return kTaskStateCreated;
  if (impl->State() != kTaskStatePaused) return impl->State();
  const Owners owners = FindOwners(TaskName(impl->Name()));
  if (owners.event) {
    MutexLock pause(pauseMutex);
    Park(*impl, *owners.event);
  }
  return impl->State();
}

int32_t RkTaskSchedularImpl::PausePointLocked(RkTask* task) {
  RkTaskImpl* const impl = ToImpl(task);
  if (impl == nullptr) return kTaskStateCreated;
  if (impl->State() != kTaskStatePaused) return impl->State();
  const Owners owners = FindOwners(TaskName(impl->Name()));
  if (owners.event) Park(*impl, *owners.event);
  return impl->State();
}

// Waits for the next resume of any event. The state is tested again first: it changes under
// pauseMutex, so no resume can fall between the test and the wait.
void RkTaskSchedularImpl::Park(RkTaskImpl& task, RkTaskEventImpl& event) {
  if (event.RemovePausedTask(&task) && event.LoadDrainCount() > 0) event.DecrementDrainCount();
  if (task.IsAwaited()) drainCondition.NotifyAll();
  const uint64_t seen = resumeCount;
  ++task.parkedCount;
  resumeCondition.Wait(pauseMutex, [&task, seen]() TMV_NO_THREAD_SAFETY_ANALYSIS {
    return resumeCount != seen || task.State() != kTaskStatePaused;
  });
  --task.parkedCount;
}

bool RkTaskSchedularImpl::CheckPause(RkTask* task) { return PausePoint(task) != kTaskStateCreated; }

}  // namespace temvar
