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

// States: built; idle, in the wait at the end of a round; running a callback; stopping; ended.
//
// Thread-safety:
// 1. The thread holds mutex_ except while it waits and in the gap between two rounds, so a Stop
//    waits for a running callback.
// 2. The assignment is written by the pool, under its idleMutex, while the worker is in the idle
//    queue, and only if there is none; or by the worker's own thread on its way back to the pool.
//    func_ is published by task_.
// 3. A wake-up is remembered by wake_, and the worker sleeps until it has an assignment or is to
//    stop. So an assignment that comes before the wait is not lost, and a wake-up without one
//    doesn't put the worker in the idle queue twice.
class RkTaskThreadImpl final : public RkTaskThread {
 public:
  void ReportIdle() override;
  void SetPool(RkTaskPool* pool) override { pool_ = pool; }
  void Wake() override { wake_.Notify(); }
  void Lock() override TMV_ACQUIRE(mutex_) { mutex_.Lock(); }
  void Unlock() override TMV_RELEASE(mutex_) { mutex_.Unlock(); }
  void Wait() override TMV_REQUIRES(mutex_) { wake_.Wait(mutex_); }
  void Join() override;
  int32_t ReservedValue() override { return 0; }
  void Stop() override;
  void Start() override;

  // For the pool, see 2.
  void Assign(Ref<RkTaskImpl> task, Ref<RkTaskFuncImpl> func);
  void TakeAssignment(Ref<RkTaskImpl>& task, Ref<RkTaskFuncImpl>& func);
  bool HasFunc() const { return func_ != nullptr; }
  // The assignment is in the list of running tasks already. By the worker's own thread only.
  void SetMarkedRunning();
  bool IsMarkedRunning() const { return markedRunning_; }
  RkTaskImpl* AssignedTask() const { return task_.load(std::memory_order_acquire); }

  bool IsCurrentThread() const { return thread_.get_id() == std::this_thread::get_id(); }

 private:
  void ThreadMain();
  void RunAssignment();

  std::atomic<bool> stopRequested_{false};
  RkTaskPool* pool_ = nullptr;
  std::atomic<RkTaskImpl*> task_{nullptr};
  RkTaskFuncImpl* func_ = nullptr;
  bool markedRunning_ = false;

  Mutex mutex_;
  WakeSignal wake_;
  std::thread thread_;
};

// The implementation of an interface pointer; null for null and for an object that is not of this
// library.
RkTaskThreadImpl* ToImpl(RkTaskThread* thread);

}  // namespace temvar

#endif  // TEMVAR_EXECUTION_TASK_THREAD_IMPL_H_
