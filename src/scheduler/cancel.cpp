// Cancelling events. The scheduler calls its own operations and the pool's through their
// interfaces, as a host does, so that each step exists once.
#include "scheduler/task_schedular_impl.h"
#include "tasks/task_func_impl.h"

namespace temvar {

void RkTaskSchedularImpl::CancelEvent(const char* name) { CancelEventEx(name, true); }

void RkTaskSchedularImpl::CancelEventEx(const char* name, bool remove) {
  EventRef event = FindEventRef(name);
  if (!event) return;
  EndPauseWaits(*event);

  // The call owns a reference on the event until it runs, or until the pool drops it unrun.
  const Ref<RkTaskFuncImpl> func = MakeBoundFunc([this, owned = event](RkTask*) mutable {
    const EventRef cancelled = std::move(owned);
    RunCancel(*cancelled);
  });
  const auto cancelTask = Ref<RkTaskImpl>::Adopt(new RkTaskImpl);
  cancelTask->SetInternal();
  cancelTask->SetFunc(func.get());
  ScheduleTask(cancelTask.get());

  if (remove) RemoveIfRegistered(*event);
}

// The entry may be gone meanwhile, or the name may be that of another event by now.
void RkTaskSchedularImpl::RemoveIfRegistered(const RkTaskEventImpl& event) {
  EventRef removed;
  {
    MutexLock registry(registryMutex);
    removed = ExtractEvent(event);
  }
  if (removed) drainCondition.NotifyAll();
}

bool RkTaskSchedularImpl::CancelEventOfTask(const char* taskName) {
  const EventRef event = FindOwners(TaskName(taskName == nullptr ? "" : taskName)).event;
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
    SweepEvent(event, kTaskStateActive, kTaskStateCancelled, swept);
    for (const Ref<RkTaskImpl>& task : swept) cancelledNames_.insert(task->Name());
  }
  EndPauseWaits(event);
}

// Waits until no task of the event runs. The pool finds none of an event that has left the
// registry.
void RkTaskSchedularImpl::AwaitDrain(RkTaskEventImpl& event) {
  for (;;) {
    const EventCount::Key key = drainCondition.PrepareWait();
    bool drained = false;
    {
      const RunningTasks running(event.GetName());
      MutexLock pause(pauseMutex);
      const int64_t count = running.Count();
      if (event.LoadDrainCount() <= 0 || event.LoadDrainCount() > count) {
        event.StoreDrainCount(count);
      }
      drained = event.LoadDrainCount() == 0;
    }
    if (drained) break;
    drainCondition.Wait(key);
  }
  drainCondition.CancelWait();
}

bool RkTaskSchedularImpl::IsTaskCancelled(const char* name) {
  MutexLock state(stateMutex);
  return cancelledNames_.count(name == nullptr ? "" : name) != 0;
}

}  // namespace temvar
