// Taking events back.
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

// The entry may have gone meanwhile, or the name may stand for another event by now.
void RkTaskSchedularImpl::RemoveIfRegistered(const RkTaskEventImpl& event) {
  EventRef removed;
  {
    MutexLock registry(registry_mutex);
    removed = ExtractEvent(event);
  }
  if (removed) drain_condition.NotifyAll();
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
    MutexLock registry(registry_mutex);
    MutexLock state(state_mutex);
    SweepEvent(event, kTaskStateActive, kTaskStateCancelled, swept);
    for (const Ref<RkTaskImpl>& task : swept) cancelledNames_.insert(task->Name());
  }
  EndPauseWaits(event);
}

// Waits until no task of the event runs. Once the event has left the registry the pool finds none.
void RkTaskSchedularImpl::AwaitDrain(RkTaskEventImpl& event) {
  for (;;) {
    const EventCount::Key key = drain_condition.PrepareWait();
    bool drained = false;
    {
      const RunningTasks running(event.GetName());
      MutexLock pause(pause_mutex);
      const int64_t count = running.Count();
      if (event.LoadDrainCount() <= 0 || event.LoadDrainCount() > count) {
        event.StoreDrainCount(count);
      }
      drained = event.LoadDrainCount() == 0;
    }
    if (drained) break;
    drain_condition.Wait(key);
  }
  drain_condition.CancelWait();
}

bool RkTaskSchedularImpl::IsTaskCancelled(const char* name) {
  MutexLock state(state_mutex);
  return cancelledNames_.count(name == nullptr ? "" : name) != 0;
}

}  // namespace temvar
