#ifndef TEMVAR_TASK_POOL_H_
#define TEMVAR_TASK_POOL_H_

#include <cstdint>

#include "temvar/export.h"
#include "temvar/task_list.h"

class RkTask;
class RkTaskFunc;
class RkTaskThread;

// Runs tasks on a fixed set of workers: the oldest queued task goes to the worker that has been
// idle longest. It knows nothing of events; the scheduler feeds it, and a host may do so too for
// work that needs no scheduling.
//
// Life of the pool: built at load (tasks may be queued), running from Start, stopped for good by
// Stop. No thread exists before Start. A host that called Start must call Stop before it unloads
// the library, also if Start has failed, from one of its own threads and never from DllMain.
// Leaving the process without Stop is harmless. Unloading without Start and Stop frees no queued
// task.
class RkTaskPool {
 public:
  // Queues `task` with the function that it has now, after the tasks queued already, and takes a
  // reference on it until it has run. The task's state doesn't matter. Before Start the task waits.
  // Any thread. After Stop the call does nothing. Throws std::bad_alloc.
  virtual void AddTask(RkTask* task) = 0;

  // Queues a new plain task, named "0", that runs `func` and is released after its run. Throws
  // std::bad_alloc.
  virtual void AddFunc(RkTaskFunc* func) = 0;

  // Starts `count` workers and the dispatcher, once in the life of the library. Does not wait for
  // them. With 0 nothing runs, except on workers of the host's own. Throws std::system_error if the
  // system refuses a thread, std::bad_alloc, and std::system_error at a second call. After a Start
  // that has failed call Stop, which ends the threads that were made; the pool is then finished.
  virtual void Start(uint32_t count) = 0;

  // Does nothing.
  virtual void ReservedOperation() = 0;

  // Ends dispatcher and workers and joins them, once. Waits until the functions that run now have
  // returned, also those that wait at a pause point: resume their events first, since only a resume
  // wakes them, and a cancel does not. Queued tasks are released without being run or reported.
  // Throws std::system_error if Start was not called or Stop has ended, and on one of the pool's
  // workers: a task's function can't stop the pool.
  virtual void Stop() = 0;

  // Milliseconds after which the dispatcher looks again at tasks that wait for a worker, 500 at
  // first: an upper bound for starting a task once a worker is idle. Work usually starts at once.
  // 0 and negative values mean the shortest interval without spinning. Any thread.
  virtual void SetPollInterval(int32_t milliseconds) = 0;
  virtual int32_t GetPollInterval() = 0;

  // Number of workers that Start was given; 2 before it.
  virtual uint32_t GetThreadCount() = 0;

  // One pass of pairing: the oldest queued task goes to the worker that has been idle longest.
  // `pending` becomes the number of tasks left in the queue (and is not written if no worker was
  // idle), `idle` the number of idle workers left. For the pool's own threads, and before Start for
  // a host that has workers of its own; harmless elsewhere.
  virtual void DispatchOne(uint32_t& pending, uint32_t& idle) = 0;

  // The steps of a worker before and after its task. For the pool's own threads, which need no
  // memory for them. With more workers than Start has made, they throw std::bad_alloc.
  virtual void MarkRunning(RkTaskThread* thread) = 0;
  virtual void ThreadIdle(RkTaskThread* thread) = 0;

  // Number of tasks that wait for a worker at this moment.
  virtual uint32_t GetQueuedCount() = 0;

  // The dispatcher's wait. For the dispatcher alone, which holds the lock of the queue.
  virtual void WaitForWork() = 0;

  // Takes the queued tasks of the event called `name` out of the queue, and with them those that
  // belong to no registered event. They keep their states and never run. Returns the number of
  // tasks taken out. Null names no event. Throws std::bad_alloc, and then leaves the queue as it
  // was.
  virtual uint32_t RemoveQueued(const char* name) = 0;

  // Lists the running plain tasks of the event called `name`; `count` becomes their number. Null
  // names no event. The caller releases the list, which may be null, with FreeTaskList. Throws
  // std::bad_alloc.
  virtual TaskListNode* ListRunning(const char* name, uint32_t& count) = 0;

  // Releases a list and the references in it. Null does nothing.
  virtual void FreeTaskList(TaskListNode* list) = 0;

 protected:
  ~RkTaskPool() = default;
};

// The pool; the same pointer on each call, valid while the library is loaded.
TMV_API RkTaskPool* TmvTaskPool();

#endif  // TEMVAR_TASK_POOL_H_
