// The queues of the pool and the pairing of tasks and workers.
#include "execution/task_pool_impl.h"

#include <algorithm>
#include <chrono>
#include <typeinfo>

namespace temvar {

void RkTaskPoolImpl::AddTask(RkTask* task) {
  PendingTask entry{Ref<RkTaskImpl>(ToImpl(task)), {}};
  if (!entry.task) return;
  entry.func = entry.task->Func();

  {
    MutexLock incoming(incomingMutex_);
    if (stopRequested_) return;
    entry.serial = nextSerial_++;
    incoming_.push_back(std::move(entry));
  }
  if (pairsItself_ && idleCount_ > 0) {
    uint32_t pending = 0;
    uint32_t idle = 0;
    DispatchOne(pending, idle);
  } else if (dispatcherSleeps_) {
    MutexLock queue(queueMutex_);
    workCondition_.NotifyOne();
  }
}

void RkTaskPoolImpl::AddFunc(RkTaskFunc* func) {
  const auto task = Ref<RkTaskImpl>::Adopt(new RkTaskImpl);
  task->SetFunc(func);
  AddTask(task.get());
}

void RkTaskPoolImpl::DispatchOne(uint32_t& pending, uint32_t& idle) {
  MutexLock idleLock(idleMutex_);
  if (idleThreads_.empty()) {
    idle = 0;
    return;
  }
  RkTaskThreadImpl* paired = nullptr;
  {
    MutexLock queueLock(queueMutex_);
    if (HasQueued() && !stopRequested_) paired = PairOldest();
    pending = GetQueuedCount();
  }
  if (paired != nullptr) paired->Wake();
  idle = static_cast<uint32_t>(idleThreads_.size());
}

void RkTaskPoolImpl::MarkRunning(RkTaskThread* thread) {
  const RkTaskThreadImpl* const worker = ToImpl(thread);
  if (worker == nullptr) return;
  Ref<RkTaskImpl> task(worker->AssignedTask());
  if (!task) return;
  MutexLock queue(queueMutex_);
  runningTasks_.push_back(std::move(task));
}

void RkTaskPoolImpl::ThreadIdle(RkTaskThread* thread) {
  RkTaskThreadImpl* const worker = ToImpl(thread);
  if (worker == nullptr) return;
  // Dropped when the locks are free: each may be the last reference, and a releaser is host code.
  const PendingTask done = worker->TakeAssignment();
  Ref<RkTaskImpl> running;
  {
    MutexLock queue(queueMutex_);
    if (done.task) running = TakeRunning(done.task.get());
    if (TakeNext(*worker)) return;
  }

  MutexLock idle(idleMutex_);
  if (worker->IsStopAsked()) return;
  idleThreads_.push_back(worker);
  RkTaskThreadImpl* paired = nullptr;
  {
    MutexLock queue(queueMutex_);
    NoteIdle();
    if (pairsItself_ && HasQueued()) paired = PairOldest();
  }
  // The caller looks for an assignment before it sleeps and needs no waking.
  if (paired != nullptr && paired != worker) paired->Wake();
}

// A worker that comes back while tasks wait and no other is idle would be the oldest idle one: it
// takes the oldest task without entering the idle queue, and joins the running tasks at once.
bool RkTaskPoolImpl::TakeNext(RkTaskThreadImpl& worker) {
  if (!pairsItself_ || idleCount_ > 0 || worker.IsStopAsked() || !HasQueued()) return false;
  AssignOldest(worker);
  if (worker.HasFunc()) {
    runningTasks_.emplace_back(worker.AssignedTask());
    worker.SetMarkedRunning();
  }
  return true;
}

// With a flag set the wait is 5 seconds that nothing ends, as documented. The dispatcher doesn't
// get there: it looks at the flag under queueMutex_ first. Stop is delayed by this only if a host
// calls the operation itself.
void RkTaskPoolImpl::WaitForWork() {
  if (stopRequested_ || exitWhenIdle_) {
    pollCondition_.WaitFor(queueMutex_, std::chrono::seconds(5), [] { return false; });
    return;
  }
  dispatcherSleeps_ = true;
  workCondition_.Wait(queueMutex_, [this]() TMV_NO_THREAD_SAFETY_ANALYSIS {
    return HasQueued() || stopRequested_;
  });
  dispatcherSleeps_ = false;
}

// Tasks wait and no worker is idle. The next worker that becomes idle makes the pass itself; this
// wait is only the documented upper bound. It never lasts less than a millisecond, so that no
// setting makes it spin.
void RkTaskPoolImpl::WaitForPoll() {
  const std::chrono::milliseconds bound(std::max(pollInterval_.load(), 1));
  pollCondition_.WaitFor(queueMutex_, bound, [this] { return stopRequested_.load(); });
}

uint32_t RkTaskPoolImpl::GetQueuedCount() {
  MutexLock incoming(incomingMutex_);
  return pendingCount_ + static_cast<uint32_t>(incoming_.size());
}

// Whether a task is queued. If one is, the oldest is at the front of pendingTasks_ afterwards.
bool RkTaskPoolImpl::HasQueued() {
  if (pendingTasks_.empty()) {
    MutexLock incoming(incomingMutex_);
    FetchIncoming();
  }
  return !pendingTasks_.empty();
}

// Appends the incoming tasks to pendingTasks_.
void RkTaskPoolImpl::FetchIncoming() {
  if (pendingTasks_.empty()) pendingTasks_.swap(incoming_);
  // One by one: an append that throws leaves each task in one of the two parts.
  for (; !incoming_.empty(); NotePending()) {
    pendingTasks_.push_back(std::move(incoming_.front()));
    incoming_.pop_front();
  }
  NotePending();
}

// Assigns the oldest queued task to the worker that has been idle longest. The caller wakes it
// without queueMutex_, which a woken worker needs first, and with idleMutex_, which keeps the
// worker alive: its Stop needs that mutex before the worker may be destroyed.
RkTaskThreadImpl* RkTaskPoolImpl::PairOldest() {
  RkTaskThreadImpl* const worker = idleThreads_.front();
  AssignOldest(*worker);
  idleThreads_.erase(idleThreads_.begin());
  NoteIdle();
  return worker;
}

void RkTaskPoolImpl::AssignOldest(RkTaskThreadImpl& worker) {
  RkTask* task = pendingTasks_.front().task.get();
  // The queue's references become the worker's.
  worker.Assign(std::move(pendingTasks_.front()));
  Notify(&task, kTaskPoolReadyToRunThread);
  pendingTasks_.pop_front();
  NotePending();
  PrefetchQueued();
}

// A long queue doesn't fit into the caches: what the next two workers need first is fetched.
void RkTaskPoolImpl::PrefetchQueued() {
  if (pendingTasks_.empty()) return;
  if (const RkTaskFuncImpl* const func = pendingTasks_.front().func.get()) func->PrefetchData();
  if (pendingTasks_.size() == 1) return;
  pendingTasks_[1].task->PrefetchForStep();
  __builtin_prefetch(pendingTasks_[1].func.get());
}

// Before the tasks that were added after it.
void RkTaskPoolImpl::Requeue(PendingTask run) {
  const auto later =
      std::find_if(pendingTasks_.begin(), pendingTasks_.end(),
                   [&run](const PendingTask& entry) { return entry.serial > run.serial; });
  pendingTasks_.insert(later, std::move(run));
  NotePending();
  if (dispatcherSleeps_) workCondition_.NotifyOne();
}

// Takes the first entry of this task out of the running list and notifies the observers. The result
// keeps the list's reference.
Ref<RkTaskImpl> RkTaskPoolImpl::TakeRunning(RkTaskImpl* task) {
  const auto hit =
      std::find_if(runningTasks_.begin(), runningTasks_.end(),
                   [task](const Ref<RkTaskImpl>& entry) { return entry.get() == task; });
  if (hit == runningTasks_.end()) return {};
  Ref<RkTaskImpl> taken = std::move(*hit);
  runningTasks_.erase(hit);
  if (taken->IsAwaited()) awaitedDepartures.fetch_add(1, std::memory_order_relaxed);
  Notify(nullptr, kTaskPoolAddThreadToPool);
  return taken;
}

RkTaskPoolImpl* ToImpl(RkTaskPool* pool) {
  if (pool == nullptr || typeid(*pool) != typeid(RkTaskPoolImpl)) return nullptr;
  return static_cast<RkTaskPoolImpl*>(pool);
}

}  // namespace temvar
