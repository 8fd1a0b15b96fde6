#ifndef TEMVAR_EXECUTION_TASK_THREAD_IMPL_H_
#define TEMVAR_EXECUTION_TASK_THREAD_IMPL_H_

#include <atomic>
#include <cstdint>
#include <thread>

#include "frame/mutex.h"
#include "frame/ref.h"
#include "tasks/task_impl.h"
#include "temvar/task_thread.h"

namespace temvar {

// A queued run: the task with the function that it had when it was added.
struct PendingTask {
  Ref<RkTaskImpl> task;
  Ref<RkTaskFuncImpl> func;
  uint64_t serial = 0;  // Ascends in the order of adding; distinguishes two runs of one task.
};

// States: built; idle, in the wait at the end of a round; running a callback; stopping; ended.
//
// Thread-safety:
// 1. The thread holds mutex_ except while it waits and in the gap between two rounds, so a Stop
//    waits for a running callback. It makes the gap when another thread waits for the mutex, which
//    lockers_ counts.
// 2. The assignment is written by the pool, under its idleMutex, while the worker is in the idle
//    queue, and only if there is none; or by the worker's own thread on its way back to the pool.
//    func_ is published by task_.
// 3. A wake-up is remembered by wake_, and the worker sleeps until it has an assignment or must
//    stop. So an assignment that comes before the wait is not lost, and a wake-up without one
//    doesn't put the worker in the idle queue twice.
//
// Stop, of a worker of the pool or of a host's own, while others add, assign, pause and cancel:
// 4. stopAsked_ is set before Stop waits for mutex_. From then on the worker begins nothing: the
//    pool assigns nothing to a worker that reports idle, and an assignment that it has already is
//    left alone.
// 5. After a callback the worker reports idle in any case: its task must leave the running tasks,
//    or a pause or a cancel would wait for it for ever. So stopRequested_, which ends the thread,
//    is set only under mutex_, which the thread releases between two rounds and in its wait, never
//    between a callback and its report.
// 6. When the thread is joined, an assignment that the worker still has was never begun. The pool
//    takes it back to its place in the queue and makes a pass of pairing, since another worker may
//    be idle.
class RkTaskThreadImpl final : public RkTaskThread {
 public:
  void ReportIdle() override;
  void SetPool(RkTaskPool* pool) override { pool_ = pool; }
  void Wake() override { wake_.Notify(); }
  void Lock() override TMV_ACQUIRE(mutex_);
  void Unlock() override TMV_RELEASE(mutex_) { mutex_.Unlock(); }
  void Wait() override TMV_REQUIRES(mutex_) { wake_.Wait(mutex_); }
  void Join() override;
  int32_t ReservedValue() override { return 0; }
  void Stop() override;
  void Start() override;

  // For the pool, see 2.
  void Assign(PendingTask run);
  PendingTask TakeAssignment();
  bool HasFunc() const { return func_ != nullptr; }
  // The assignment is in the list of running tasks already. By the worker's own thread only.
  void SetMarkedRunning();
  bool IsMarkedRunning() const { return markedRunning_; }
  bool IsStopAsked() const { return stopAsked_.load(std::memory_order_acquire); }
  RkTaskImpl* AssignedTask() const { return task_.load(std::memory_order_acquire); }

  bool IsCurrentThread() const { return thread_.get_id() == std::this_thread::get_id(); }

 private:
  void ThreadMain();
  void RunAssignment();
  void LetOthersLock() TMV_REQUIRES(mutex_);
  bool HasSomethingToDo() const;

  std::atomic<bool> stopAsked_{false};      // See 4.
  std::atomic<bool> stopRequested_{false};  // See 5.
  RkTaskPool* pool_ = nullptr;
  std::atomic<RkTaskImpl*> task_{nullptr};
  RkTaskFuncImpl* func_ = nullptr;
  uint64_t serial_ = 0;
  bool markedRunning_ = false;

  Mutex mutex_;
  std::atomic<int> lockers_{0};  // Threads that are about to take mutex_, but for the worker's own.
  WakeSignal wake_;
  std::thread thread_;
};

// The implementation of an interface pointer; null for null and for an object that is not of this
// library.
RkTaskThreadImpl* ToImpl(RkTaskThread* thread);

}  // namespace temvar

#endif  // TEMVAR_EXECUTION_TASK_THREAD_IMPL_H_
