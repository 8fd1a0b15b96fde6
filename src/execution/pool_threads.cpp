// How the pool starts and how it ends.
#include <system_error>

#include "execution/task_pool_impl.h"
#include "platform/thread_name.h"

namespace temvar {

void RkTaskPoolImpl::Start(uint32_t count) {
  // Once in the life of the library: a second set of threads would never be joined.
  if (running_ || stopRequested_) {
    throw std::system_error(std::make_error_code(std::errc::operation_not_permitted));
  }
  threadCount_ = count;
  running_.store(true, std::memory_order_release);
  threads_.reserve(count);
  for (uint32_t i = 0; i < count; ++i) {
    auto* const worker = new RkTaskThreadImpl;
    worker->SetPool(this);
    threads_.push_back(worker);
    worker->Start();
  }
  dispatcher_ = std::thread(&RkTaskPoolImpl::RunDispatcher, this);
}

void RkTaskPoolImpl::Stop() {
  ThrowIfWorker();
  if (!dispatcher_.joinable()) {
    throw std::system_error(std::make_error_code(std::errc::invalid_argument));
  }
  {
    MutexLock queue(queueMutex_);
    stopRequested_ = true;
    exitWhenIdle_ = true;
    workCondition_.NotifyAll();
    pollCondition_.NotifyAll();
  }
  dispatcher_.join();
  StopWorkers();

  // What is left is released without the lock: releasers are host code.
  std::vector<Ref<RkTaskImpl>> running;
  std::deque<PendingTask> pending;
  {
    MutexLock queue(queueMutex_);
    MutexLock incoming(incomingMutex_);
    FetchIncoming();
    running.swap(runningTasks_);
    pending.swap(pendingTasks_);
    NotePending();
  }
  // Cleared by hand, front first: the destructors promise no order, and hosts see it in their
  // releasers.
  running.clear();
  while (!pending.empty()) pending.pop_front();
  running_.store(false, std::memory_order_release);
}

// A worker that called Stop would wait for itself.
void RkTaskPoolImpl::ThrowIfWorker() const {
  for (const RkTaskThreadImpl* worker : threads_) {
    if (worker->IsCurrentThread()) {
      throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
    }
  }
}

void RkTaskPoolImpl::StopWorkers() {
  for (RkTaskThreadImpl* worker : threads_) {
    worker->Stop();
    DestroyRkTaskThread(worker);
  }
  threads_.clear();
}

// A worker that ends leaves an assignment that it has not begun as it is. The references came from
// the pool, so the pool takes them back.
void RkTaskPoolImpl::Forget(RkTaskThreadImpl& worker) {
  // Dropped when the locks are free.
  Ref<RkTaskImpl> task;
  Ref<RkTaskFuncImpl> func;
  Ref<RkTaskImpl> running;
  MutexLock idle(idleMutex_);
  std::erase(idleThreads_, &worker);
  NoteIdle();
  worker.TakeAssignment(task, func);
  if (!worker.IsMarkedRunning()) return;
  MutexLock queue(queueMutex_);
  running = TakeRunning(task.get());
}

void RkTaskPoolImpl::RunDispatcher() {
  SetCurrentThreadName("temvar-dispatch");
  uint32_t pending = 0;
  uint32_t idle = 0;
  while (!stopRequested_) {
    DispatchOne(pending, idle);
    if (exitWhenIdle_ && pending == 0 && idle == GetThreadCount()) {
      stopRequested_ = true;
      break;
    }
    MutexLock queue(queueMutex_);
    if (stopRequested_) break;
    if (GetQueuedCount() == 0) {
      WaitForWork();
    } else if (idle == 0) {
      WaitForPoll();
    }
  }
}

}  // namespace temvar
