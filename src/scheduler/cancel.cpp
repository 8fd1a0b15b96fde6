// Cancelling events. The scheduler calls its own operations and the pool's through their
// interfaces, as a host does, so that each step exists once.
//
// 1. A cancel with removal takes the entry out before its task can begin. The last package takes
//    the entry out too, so only one of the two ends the event: its function is called once, and
//    doesn't find its own entry. An event of the same name may be added from then on.
// 2. The task is queued first, which may find no memory, under the mutex that it begins with.
// 3. Without removal the event may still end, or be cancelled again, before the cancel runs. Its
//    function is called each time.
// 4. A pause that waits for the event ends when the cancel is queued, since the cancel may need the
//    worker of a task that is waited for. It ends again when the cancel runs, for a pause that came
//    in between.
// 5. The cancel's task owns a reference on the event until it runs, or until the pool drops it.
#include "scheduler/task_schedular_impl.h"
#include "tasks/task_func_impl.h"

namespace temvar {

void RkTaskSchedularImpl::CancelEvent(const char* name) { CancelEventEx(name, true); }

void RkTaskSchedularImpl::CancelEventEx(const char* name, bool remove) {
  const EventRef event = FindEventRef(name);
  if (!event) return;
  const Ref<RkTaskImpl> cancelTask = MakeCancelTask(event);
  Events::node_type entry;  // Dropped when the mutexes are free.
  if (remove) {
    MutexLock registry(registryMutex);
    if (!HoldsEvent(*event)) return;  // It has ended, or another cancel came first.
    ScheduleTask(cancelTask.get());
    entry = ExtractEvent(*event);
  } else {
    ScheduleTask(cancelTask.get());
  }
  EndPauseWaits(*event);
}

Ref<RkTaskImpl> RkTaskSchedularImpl::MakeCancelTask(const EventRef& event) {
  const Ref<RkTaskFuncImpl> func = MakeBoundFunc([this, owned = event](RkTask*) mutable {
    const EventRef cancelled = std::move(owned);
    RunCancel(*cancelled);
  });
  auto cancelTask = Ref<RkTaskImpl>::Adopt(new RkTaskImpl);
  cancelTask->SetInternal();
  cancelTask->SetFunc(func.get());
  return cancelTask;
}

bool RkTaskSchedularImpl::CancelEventOfTask(const char* taskName) {
  if (taskName == nullptr) return false;
  const EventRef event = FindOwners(TaskName(taskName)).event;
  if (!event || event->Name().empty()) return false;
  CancelEvent(event->GetName());
  return true;
}

void RkTaskSchedularImpl::RunCancel(RkTaskEventImpl& event) {
  CancelActiveTasks(event);
  TmvTaskPool()->RemoveQueued(event.GetName());
  AwaitDrain(event);
  event.SetState(kTaskStateCancelled);

  const Ref<RkTaskFuncImpl> func = event.Func();
  if (!func) return;
  const Ref<RkTaskDataImpl> data = func->Data();
  if (const RkTaskCallback callback = func->GetCallback()) callback(&event, data.get());
}

void RkTaskSchedularImpl::CancelActiveTasks(RkTaskEventImpl& event) {
  TaskRefs swept;  // Dropped when the mutexes are free.
  {
    MutexLock registry(registryMutex);
    MutexLock state(stateMutex);
    SweepEvent(event, kTaskStateActive, kTaskStateCancelled, &swept);
    for (const Ref<RkTaskImpl>& task : swept) cancelledNames_.insert(task->Name());
  }
  EndPauseWaits(event);
}

// Waits until no task of the event runs. The pool finds none of an event that has left the
// registry.
void RkTaskSchedularImpl::AwaitDrain(RkTaskEventImpl& event) {
  drainCondition.Await([&event] {
    const RunningTasks running(event.GetName());
    MutexLock pause(pauseMutex);
    const int64_t count = running.Count();
    if (event.LoadDrainCount() <= 0 || event.LoadDrainCount() > count) event.StoreDrainCount(count);
    return event.LoadDrainCount() == 0;
  });
}

bool RkTaskSchedularImpl::IsTaskCancelled(const char* name) {
  MutexLock state(stateMutex);
  return name != nullptr && cancelledNames_.count(name) != 0;
}

}  // namespace temvar
