// How events start and how tasks, packages and events end.
#include <cstring>
#include <stdexcept>
#include <utility>

#include "scheduler/task_schedular_impl.h"

namespace temvar {

void RkTaskSchedularImpl::Update(void* /*data*/, const char* key) {
  // The pool's other message comes as often, and is known by its address as a rule.
  if (key == nullptr || key == kTaskPoolReadyToRunThread) return;
  if (std::strcmp(key, kTaskPoolAddThreadToPool) != 0) return;
  // A wait is woken by the tasks that it waits for and not by each one of the process.
  const uint64_t departures = awaitedDepartures.load(std::memory_order_relaxed);
  if (std::exchange(seenDepartures_, departures) != departures) drainCondition.NotifyAll();
}

void RkTaskSchedularImpl::AddEvent(RkTask* event) {
  RkTaskEventImpl* const impl = ToEvent(ToImpl(event));
  if (impl == nullptr) return;
  MutexLock registry(registryMutex);
  StoreEvent(impl);
  for (const Ref<RkTaskImpl>& entry : impl->Packages()) {
    RkTaskPackageImpl* const package = ToPackage(entry.get());
    if (package == nullptr || package->Tasks().empty()) {
      throw std::out_of_range("invalid vector<T> subscript");
    }
    RkTaskImpl* const first = package->Tasks().front().get();
    if (first == nullptr) continue;
    Queue(*first, kTaskStateActive);
  }
}

void RkTaskSchedularImpl::ScheduleTask(RkTask* task) {
  if (task == nullptr) return;
  if (task->GetState() == kTaskStateCreated) {
    Queue(*task, kTaskStateActive);
  } else {
    TmvTaskPool()->AddTask(task);
  }
}

// Moves the task to the state and queues it. A task that finds no memory in the queue stays as it
// was, so that the host may try again.
void RkTaskSchedularImpl::Queue(RkTask& task, int32_t state) {
  const int32_t before = task.GetState();
  task.SetState(state);
  try {
    TmvTaskPool()->AddTask(&task);
  } catch (...) {
    task.SetState(before);
    throw;
  }
}

void RkTaskSchedularImpl::TaskFinished(RkTask* task) {
  RkTaskImpl* const impl = ToImpl(task);
  if (impl == nullptr) return;
  if (impl->Type() == kTaskTypePlain) CompletePlain(*impl, kTaskStateSucceeded);
  if (impl->Type() == kTaskTypePackage) CompletePackage(*impl);
}

void RkTaskSchedularImpl::TaskFailed(RkTask* task) {
  RkTaskImpl* const impl = ToImpl(task);
  if (impl == nullptr) return;
  if (impl->Type() == kTaskTypePlain) CompletePlain(*impl, kTaskStateFailed);
  if (impl->Type() == kTaskTypePackage) CompletePackage(*impl);
}

void RkTaskSchedularImpl::CompletePlain(RkTaskImpl& task, int32_t state) {
  Ref<RkTaskPackageImpl> package;
  {
    MutexLock registry(registryMutex, [] { return TmvTaskPool()->GetQueuedCount(); });
    const TaskPlace place = FindPlaceOf(task);
    if (place.package == nullptr || TryCompletePlain(task, state, *place.package)) return;
    package = Ref<RkTaskPackageImpl>(place.package);
  }
  // A report can meet a pause that came after ReportState had looked. The task then parks without
  // the registry mutex, which ResumeEvent needs, and reports again.
  for (bool isDone = false; !isDone;) {
    task.ReportState(&task, kTaskStateCreated);
    MutexLock registry(registryMutex);
    isDone = TryCompletePlain(task, state, *package);
  }
}

// False, with nothing done, if the task is paused. If it is not, no pause can reach it before the
// end: it needs the registry mutex too.
bool RkTaskSchedularImpl::TryCompletePlain(RkTaskImpl& task, int32_t state,
                                           RkTaskPackageImpl& package) {
  if (task.State() == kTaskStatePaused) return false;
  const int32_t before = task.State();
  MutexLock stateLock(stateMutex);
  // Documented: a cancel that comes between the report and this step loses its state, but the
  // package doesn't move on.
  task.SetState(state);
  if (before == kTaskStateCancelled) return true;
  try {
    if (state == kTaskStateFailed && !package.ContinueOnFailure()) {
      Queue(package, kTaskStateFailed);
    } else {
      Advance(package, state);
    }
  } catch (...) {
    task.SetState(before);  // The host may report again.
    throw;
  }
  return true;
}

// A job of many tasks doesn't fit into the caches, and its memory is read task by task: what the
// next steps of the package need is fetched while other packages run.
void RkTaskSchedularImpl::PrefetchAfter(const RkTaskPackageImpl::Children& children, size_t index) {
  constexpr size_t kAhead = 2;
  constexpr size_t kListAhead = 16;  // Two cache lines of the list itself.
  if (index + kAhead >= children.size()) return;
  if (index + kListAhead < children.size()) __builtin_prefetch(&children[index + kListAhead]);
  if (const RkTaskImpl* const task = children[index + kAhead].get()) task->PrefetchForStep();
  const RkTaskImpl* const next = children[index + 1].get();
  if (next == nullptr) return;
  if (next->Func()) __builtin_prefetch(next->Func().get());
  if (RkTaskImpl* const task = children[index].get()) task->SetNext(*next);
}

// Queues the next child, or after the last child the package itself.
void RkTaskSchedularImpl::Advance(RkTaskPackageImpl& package, int32_t lastState) {
  const size_t next = size_t{package.CurrentIndex()} + 1;
  if (next >= package.Tasks().size()) {
    Queue(package, lastState);
    return;
  }
  package.SetCurrentIndex(static_cast<uint32_t>(next));
  PrefetchAfter(package.Tasks(), next);
  try {
    ScheduleTask(package.Tasks()[next].get());
  } catch (...) {
    package.SetCurrentIndex(static_cast<uint32_t>(next - 1));
    throw;
  }
}

void RkTaskSchedularImpl::CompletePackage(RkTaskImpl& package) {
  EventRef event;
  Events::node_type removed;  // Dropped when the mutexes are free.
  MutexLock registry(registryMutex);
  event = FindEventListing(&package);
  if (!event) return;
  event->AddFinishedPackage();
  const auto count = static_cast<int64_t>(event->Packages().size());
  if (!event->ResetFinishedIfEqual(count)) return;
  removed = ExtractEvent(*event);
  drainCondition.NotifyAll();
  const int32_t before = event->State();
  try {
    {
      MutexLock state(stateMutex);
      event->SetState(package.State());
    }
    ScheduleTask(event.get());
  } catch (...) {
    // The package's function may report again.
    event->SetState(before);
    event->SetFinishedPackages(count - 1);
    if (!removed.empty()) RestoreEntry(removed);
    throw;
  }
}

}  // namespace temvar
