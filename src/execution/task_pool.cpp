// The queues of the pool and the pairing of tasks and workers.
#include "execution/task_pool.h"

#include <algorithm>
#include <chrono>
#include <typeinfo>

namespace temvar {

void RkTaskPoolImpl::AddTask(RkTask* task) {
  PendingTask entry{Ref<RkTaskImpl>(ToImpl(task)), {}};
  if (!entry.task) return;
  entry.func = Ref<RkTaskFuncImpl>(ToImpl(task->GetFunc()));

  if (idleCount_ > 0) {
    // The usual case of a pool with time: queue and pair in one go.
    MutexLock idle(idleMutex_);
    RkTaskThreadImpl* paired = nullptr;
    {
      MutexLock queue(queueMutex_);
      if (stopRequested_) return;
      Append(std::move(entry));
      if (idleThreads_.empty()) {
        workCondition_.NotifyOne();
      } else {
        paired = PairOldest();
      }
    }
    if (paired != nullptr) paired->Wake();
    return;
  }

  {
    MutexLock queue(queueMutex_);
    if (stopRequested_) return;
    Append(std::move(entry));
    if (idleCount_ == 0) {
      workCondition_.NotifyOne();
      return;
    }
  }
  uint32_t pending = 0;
  uint32_t idle = 0;
  DispatchOne(pending, idle);
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
    if (!pendingTasks_.empty() && !stopRequested_) paired = PairOldest();
    pending = static_cast<uint32_t>(pendingTasks_.size());
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
  // These go when the locks are free: each may be the last reference, and a releaser is host code.
  Ref<RkTaskImpl> task;
  Ref<RkTaskFuncImpl> func;
  Ref<RkTaskImpl> running;

  MutexLock idle(idleMutex_);
  idleThreads_.push_back(worker);
  NoteIdle();
  worker->TakeAssignment(task, func);

  RkTaskThreadImpl* paired = nullptr;
  {
    MutexLock queue(queueMutex_);
    if (task) {
      running = TakeRunning(task.get());
      if (running) Notify(nullptr, kTaskPoolAddThreadToPool);
    }
    if (!pendingTasks_.empty() && !stopRequested_) paired = PairOldest();
  }
  // The caller looks for an assignment before it sleeps and needs no waking.
  if (paired != nullptr && paired != worker) paired->Wake();
}

void RkTaskPoolImpl::WaitForWork() {
  if (stopRequested_ || exitWhenIdle_) {
    pollCondition_.WaitFor(queueMutex_, std::chrono::seconds(5), [] { return false; });
    return;
  }
  workCondition_.Wait(queueMutex_, [this]() TMV_NO_THREAD_SAFETY_ANALYSIS {
    return !pendingTasks_.empty() || stopRequested_;
  });
}

// Tasks wait and no worker is idle. Whoever becomes idle makes the next pass itself; this wait is
// only the told bound behind it. It never lasts less than a millisecond, so that no setting makes
// it spin.
void RkTaskPoolImpl::WaitForPoll() {
  const std::chrono::milliseconds bound(std::max(pollInterval_.load(), 1));
  pollCondition_.WaitFor(queueMutex_, bound, [this] { return stopRequested_.load(); });
}

void RkTaskPoolImpl::Append(PendingTask entry) {
  entry.serial = nextSerial_++;
  pendingTasks_.push_back(std::move(entry));
  NoteQueued();
}

// The oldest queued task goes to the worker that has been idle longest. The caller wakes it without
// queueMutex_, which is the first that a woken worker needs, and with idleMutex_, without which
// Stop can't end it.
RkTaskThreadImpl* RkTaskPoolImpl::PairOldest() {
  RkTaskThreadImpl* const worker = idleThreads_.front();
  RkTask* task = pendingTasks_.front().task.get();
  // The queue's references become the worker's.
  worker->Assign(std::move(pendingTasks_.front().task), std::move(pendingTasks_.front().func));
  Notify(&task, kTaskPoolReadyToRunThread);
  idleThreads_.pop_front();
  NoteIdle();
  pendingTasks_.pop_front();
  NoteQueued();
  return worker;
}

// Takes the first entry of this task out of the running list. The result keeps its reference.
Ref<RkTaskImpl> RkTaskPoolImpl::TakeRunning(RkTaskImpl* task) {
  const auto hit =
      std::find_if(runningTasks_.begin(), runningTasks_.end(),
                   [task](const Ref<RkTaskImpl>& entry) { return entry.get() == task; });
  if (hit == runningTasks_.end()) return {};
  Ref<RkTaskImpl> taken = std::move(*hit);
  runningTasks_.erase(hit);
  return taken;
}

RkTaskPoolImpl* ToImpl(RkTaskPool* pool) {
  if (pool == nullptr || typeid(*pool) != typeid(RkTaskPoolImpl)) return nullptr;
  return static_cast<RkTaskPoolImpl*>(pool);
}

}  // namespace temvar
