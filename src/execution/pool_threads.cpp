// How the pool starts and how it ends.
#include <memory>
#include <new>
#include <system_error>

#include "execution/task_pool_impl.h"
#include "platform/threads.h"

namespace temvar {

// At unload. The host's own statics may be gone, so this runs no host code: it frees the storage of
// the lists, and queued tasks keep their references. Stop is the place to release them.
RkTaskPoolImpl::~RkTaskPoolImpl() {
  for (std::deque<PendingTask>* part : {&pendingTasks_, &incoming_}) {
    for (PendingTask& entry : *part) {
      entry.task.Detach();
      entry.func.Detach();
    }
  }
  for (Ref<RkTaskImpl>& task : runningTasks_) task.Detach();
}

void RkTaskPoolImpl::Start(uint32_t count) {
  // Once in the life of the library: a second set of threads would never be joined.
  if (running_ || stopRequested_) {
    throw std::system_error(std::make_error_code(std::errc::operation_not_permitted));
  }
  running_.store(true, std::memory_order_release);
  if (count > threads_.max_size()) throw std::bad_alloc();
  threads_.reserve(count);
  {
    // The steps of a worker must need no memory: a thread that found none could only end the
    // process.
    MutexLock idle(idleMutex_);
    MutexLock queue(queueMutex_);
    idleThreads_.reserve(count);
    runningTasks_.reserve(count);
  }
  threadCount_ = count;
  for (uint32_t i = 0; i < count; ++i) {
    auto worker = std::make_unique<RkTaskThreadImpl>();
    worker->SetPool(this);
    worker->Start();
    // Only with a thread that Stop can join.
    threads_.push_back(worker.release());
  }
  pairsItself_ = true;
  dispatcher_ = std::thread(&RkTaskPoolImpl::RunDispatcher, this);
}

// Also after a Start that has failed: ends what it has made.
void RkTaskPoolImpl::Stop() {
  ThrowIfWorker();
  if (!running_) throw std::system_error(std::make_error_code(std::errc::invalid_argument));
  {
    MutexLock queue(queueMutex_);
    stopRequested_ = true;
    exitWhenIdle_ = true;
    pairsItself_ = false;
    workCondition_.NotifyAll();
    pollCondition_.NotifyAll();
  }
  if (dispatcher_.joinable()) dispatcher_.join();
  StopWorkers();

  // The remaining tasks are released without the lock: releasers are host code. One by one, front
  // first: hosts see the order in their releasers, and nothing here needs memory.
  std::vector<Ref<RkTaskImpl>> running;
  {
    MutexLock queue(queueMutex_);
    running.swap(runningTasks_);
  }
  running.clear();
  for (;;) {
    PendingTask released;
    MutexLock queue(queueMutex_);
    if (!HasQueued()) break;
    released = std::move(pendingTasks_.front());
    pendingTasks_.pop_front();
    NotePending();
  }
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

void RkTaskPoolImpl::TakeBack(RkTaskThreadImpl& worker) {
  Ref<RkTaskImpl> running;  // Dropped when the locks are free.
  PendingTask run;
  MutexLock idle(idleMutex_);
  std::erase(idleThreads_, &worker);
  NoteIdle();
  run = worker.TakeAssignment();
  if (!run.task) return;
  RkTaskThreadImpl* paired = nullptr;
  {
    MutexLock queue(queueMutex_);
    if (worker.IsMarkedRunning()) running = TakeRunning(run.task.get());
    Requeue(std::move(run));
    if (pairsItself_ && !idleThreads_.empty()) paired = PairOldest();
  }
  if (paired != nullptr) paired->Wake();
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
