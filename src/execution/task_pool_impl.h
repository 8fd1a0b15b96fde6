#ifndef TEMVAR_EXECUTION_TASK_POOL_IMPL_H_
#define TEMVAR_EXECUTION_TASK_POOL_IMPL_H_

#include <atomic>
#include <cstdint>
#include <deque>
#include <thread>
#include <vector>

#include "execution/task_thread_impl.h"
#include "frame/mutex.h"
#include "frame/ref.h"
#include "frame/subject.h"
#include "tasks/task_impl.h"
#include "temvar/task_pool.h"

namespace temvar {

// Thread-safety:
// 1. idleMutex_ comes before queueMutex_, and that before incomingMutex_. None is held while the
//    scheduler is asked for the owner of a task, nor while a reference is dropped that may be the
//    last.
// 2. The queue has two parts, pendingTasks_ and then incoming_. Adding appends to incoming_ and
//    contends with other adding threads only; taking moves all of it to pendingTasks_ when that is
//    empty.
// 3. A pass of pairing is made by the thread that adds a task, by the worker that becomes idle, and
//    by the dispatcher. So tasks wait only while no worker is idle. AddTask looks at idleCount_
//    after it has appended, and ThreadIdle looks at the queue after it has raised idleCount_: one
//    of them sees the other, since both lock incomingMutex_. The same holds for AddTask and a
//    dispatcher that goes to sleep, with dispatcherSleeps_.
// 4. Stop sets the flags under queueMutex_, and a pass reads them under it: once Stop has begun
//    nothing is paired. Before Start only DispatchOne pairs, when a host calls it.
// 5. threads_ and dispatcher_ belong to the thread that calls Start and Stop.
// 6. pendingTasks_ and incoming_ ascend by serial, also after an assignment has come back.
class RkTaskPoolImpl final : public TMVSubject, public RkTaskPool {
 public:
  ~RkTaskPoolImpl() override;

  void AddTask(RkTask* task) override;
  void AddFunc(RkTaskFunc* func) override;
  void Start(uint32_t count) override;
  void ReservedOperation() override {}
  void Stop() override;
  void SetPollInterval(int32_t milliseconds) override { pollInterval_ = milliseconds; }
  int32_t GetPollInterval() override { return pollInterval_; }
  uint32_t GetThreadCount() override { return threadCount_; }
  void DispatchOne(uint32_t& pending, uint32_t& idle) override;
  void MarkRunning(RkTaskThread* thread) override;
  void ThreadIdle(RkTaskThread* thread) override;
  uint32_t GetQueuedCount() override;
  void WaitForWork() override TMV_REQUIRES(queueMutex_);
  uint32_t RemoveQueued(const char* name) override;
  TaskListNode* ListRunning(const char* name, uint32_t& count) override;
  void FreeTaskList(TaskListNode* list) override;

  // For a worker that has ended: nothing is assigned to it any more, and an assignment that it has
  // not begun returns to its place in the queue.
  void TakeBack(RkTaskThreadImpl& worker);

  // True from the beginning of Start, also if it then fails, to the end of Stop. Static, since it
  // outlives the object.
  static bool IsRunning() { return running_.load(std::memory_order_acquire); }

 private:
  void RunDispatcher();
  void WaitForPoll() TMV_REQUIRES(queueMutex_);
  bool HasQueued() TMV_REQUIRES(queueMutex_) TMV_EXCLUDES(incomingMutex_);
  void FetchIncoming() TMV_REQUIRES(queueMutex_, incomingMutex_);
  RkTaskThreadImpl* PairOldest() TMV_REQUIRES(idleMutex_, queueMutex_);
  bool TakeNext(RkTaskThreadImpl& worker) TMV_REQUIRES(queueMutex_);
  void AssignOldest(RkTaskThreadImpl& worker) TMV_REQUIRES(queueMutex_);
  void PrefetchQueued() TMV_REQUIRES(queueMutex_);
  void Requeue(PendingTask run) TMV_REQUIRES(queueMutex_);
  Ref<RkTaskImpl> TakeRunning(RkTaskImpl* task) TMV_REQUIRES(queueMutex_);
  std::vector<PendingTask> ExtractQueued(const std::vector<uint64_t>& serials)
      TMV_EXCLUDES(queueMutex_);
  void NoteIdle() TMV_REQUIRES(idleMutex_) {
    idleCount_.store(static_cast<uint32_t>(idleThreads_.size()), std::memory_order_release);
  }
  void NotePending() TMV_REQUIRES(queueMutex_) {
    pendingCount_.store(static_cast<uint32_t>(pendingTasks_.size()), std::memory_order_release);
  }
  void ThrowIfWorker() const;
  void StopWorkers();

  // What the workers write at each task, what producers write, and what both only read as a rule
  // are kept apart, so that a line of one is not taken from the other's processor in between.
  static constexpr size_t kCacheLine = 64;

  std::atomic<bool> stopRequested_{false};
  std::atomic<bool> exitWhenIdle_{false};
  std::atomic<bool> pairsItself_{false};       // From Start to Stop, see 3 and 4.
  std::atomic<bool> dispatcherSleeps_{false};  // Written under queueMutex_.
  static inline constinit std::atomic<bool> running_{false};

  std::atomic<uint32_t> threadCount_{2};
  std::atomic<int32_t> pollInterval_{500};
  std::atomic<uint32_t> idleCount_{0};  // Size of idleThreads_; written under idleMutex_.

  std::vector<RkTaskThreadImpl*> threads_;
  std::thread dispatcher_;
  Condition workCondition_;  // The dispatcher waits for work.
  Condition pollCondition_;  // The dispatcher waits for a worker, or for Stop.

  alignas(kCacheLine) Mutex idleMutex_;
  std::vector<RkTaskThreadImpl*> idleThreads_ TMV_GUARDED_BY(idleMutex_);

  alignas(kCacheLine) Mutex queueMutex_ TMV_ACQUIRED_AFTER(idleMutex_);
  std::deque<PendingTask> pendingTasks_ TMV_GUARDED_BY(queueMutex_);
  std::atomic<uint32_t> pendingCount_{0};  // Size of pendingTasks_; written under queueMutex_.
  std::vector<Ref<RkTaskImpl>> runningTasks_ TMV_GUARDED_BY(queueMutex_);

  alignas(kCacheLine) Mutex incomingMutex_ TMV_ACQUIRED_AFTER(queueMutex_);
  std::deque<PendingTask> incoming_ TMV_GUARDED_BY(incomingMutex_);
  uint64_t nextSerial_ TMV_GUARDED_BY(incomingMutex_) = 0;
};

// The implementation of an interface pointer; null for null and for an object that is not of this
// library.
RkTaskPoolImpl* ToImpl(RkTaskPool* pool);

}  // namespace temvar

#endif  // TEMVAR_EXECUTION_TASK_POOL_IMPL_H_
