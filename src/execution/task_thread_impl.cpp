#include "execution/task_thread_impl.h"

#include <system_error>
#include <typeinfo>
#include <utility>

#include "execution/task_pool_impl.h"
#include "platform/crash_thread.h"
#include "platform/threads.h"

namespace temvar {

void RkTaskThreadImpl::ReportIdle() {
  if (pool_ != nullptr) pool_->ThreadIdle(this);
}

void RkTaskThreadImpl::Lock() {
  lockers_.fetch_add(1);
  mutex_.Lock();
  lockers_.fetch_sub(1);
}

void RkTaskThreadImpl::Start() { thread_ = std::thread(&RkTaskThreadImpl::ThreadMain, this); }

// A thread that joins itself is refused before the system refuses it: ThreadSanitizer (GCC 12)
// takes that refusal for a join, and ends the process at the real one.
void RkTaskThreadImpl::Join() {
  if (IsCurrentThread()) {
    throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
  }
  thread_.join();
}

void RkTaskThreadImpl::Stop() {
  // A worker that stops itself would wait for its own callback.
  if (IsCurrentThread()) {
    throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
  }
  stopAsked_.store(true, std::memory_order_release);
  {
    Lock();
    stopRequested_.store(true, std::memory_order_release);
    Wake();
    Unlock();
  }
  Join();
  if (RkTaskPoolImpl* const pool = ToImpl(pool_)) pool->TakeBack(*this);
}

void RkTaskThreadImpl::Assign(PendingTask run) {
  func_ = run.func.Detach();
  serial_ = run.serial;
  task_.store(run.task.Detach(), std::memory_order_release);
}

PendingTask RkTaskThreadImpl::TakeAssignment() {
  RkTaskImpl* const assigned = AssignedTask();
  if (assigned == nullptr) return {};
  task_.store(nullptr, std::memory_order_relaxed);
  return {Ref<RkTaskImpl>::Adopt(assigned),
          Ref<RkTaskFuncImpl>::Adopt(std::exchange(func_, nullptr)), serial_};
}

// A releaser of the previous task may call PauseEvent on this thread; such a pause must not wait
// for the task from here on.
void RkTaskThreadImpl::SetMarkedRunning() {
  markedRunning_ = true;
  currentTask = AssignedTask();
}

void RkTaskThreadImpl::ThreadMain() {
  const CrashThreadScope crashStack;
  SetCurrentThreadName("temvar-worker");
  MutexLock lock(mutex_);
  while (!stopRequested_.load(std::memory_order_acquire)) {
    RunAssignment();
    ReportIdle();
    if (lockers_.load(std::memory_order_relaxed) > 0) LetOthersLock();
    while (!HasSomethingToDo()) Wait();
  }
}

void RkTaskThreadImpl::LetOthersLock() {
  mutex_.Unlock();
  mutex_.Lock();
}

// To end, or to begin an assignment, which a Stop that is under way forbids.
bool RkTaskThreadImpl::HasSomethingToDo() const {
  if (stopRequested_.load(std::memory_order_acquire)) return true;
  return AssignedTask() != nullptr && !IsStopAsked();
}

// The assignment's references hold task and function until ReportIdle, so the call needs none of
// its own; the data has one, in case the callback sets other data in its holder.
void RkTaskThreadImpl::RunAssignment() {
  RkTaskImpl* const task = AssignedTask();
  const bool marked = std::exchange(markedRunning_, false);
  if (task == nullptr || func_ == nullptr) return;
  task->PrefetchNext();
  const Ref<RkTaskDataImpl> data = func_->Data();
  if (!marked && pool_ != nullptr) pool_->MarkRunning(this);
  if (const RkTaskCallback callback = func_->GetCallback()) {
    currentTask = task;
    callback(task, data.get());
  }
  currentTask = nullptr;
}

RkTaskThreadImpl* ToImpl(RkTaskThread* thread) {
  if (thread == nullptr || typeid(*thread) != typeid(RkTaskThreadImpl)) return nullptr;
  return static_cast<RkTaskThreadImpl*>(thread);
}

}  // namespace temvar

RkTaskThread* CreateRkTaskThread() { return new temvar::RkTaskThreadImpl; }

void DestroyRkTaskThread(RkTaskThread* thread) { delete temvar::ToImpl(thread); }
