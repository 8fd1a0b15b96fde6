#ifndef TEMVAR_TASK_THREAD_H_
#define TEMVAR_TASK_THREAD_H_

#include <cstdint>

#include "temvar/export.h"

class RkTaskPool;

// One worker: a thread that runs one assigned task at a time, reports itself idle to its pool and
// sleeps until it is woken. The pool makes its own workers. A host can make more, which serve the
// pool's queue like those, and which come and go while it runs; nothing but the pool can assign a
// task to a worker.
//
// Life of a worker: built, SetPool, Start, and at the end Stop, then DestroyRkTaskThread. Failures
// of the system's threads, mutexes and conditions are thrown as std::system_error.
class RkTaskThread {
 public:
  // Reports the worker idle to the pool. For the worker itself.
  virtual void ReportIdle() = 0;

  // Stores the pool, which is not owned. Before Start.
  virtual void SetPool(RkTaskPool* pool) = 0;

  // Wakes the worker if it sleeps in Wait. Takes no lock that a running task holds. A worker that
  // finds no assignment sleeps again.
  virtual void Wake() = 0;

  // Locks and unlocks the worker's own mutex, which is held while a task's function runs.
  virtual void Lock() = 0;
  virtual void Unlock() = 0;

  // Sleeps until Wake. The caller holds the mutex, and holds it again on return. A Wake that came
  // first ends the wait at once.
  virtual void Wait() = 0;

  // Joins the thread. Throws std::system_error: invalid_argument if it was never started or is
  // joined already, resource_deadlock_would_occur on the thread itself.
  virtual void Join() = 0;

  // Always 0.
  virtual int32_t ReservedValue() = 0;

  // Ends the thread and joins it. Waits for a running function, also for one that waits at a pause
  // point; the worker begins no other meanwhile. A task that it was assigned and has not begun goes
  // back to its place in the queue, for another worker. From any thread but the worker itself,
  // once; throws std::system_error there.
  virtual void Stop() = 0;

  // Starts the thread, once. Throws std::system_error if the system refuses it, and std::bad_alloc.
  virtual void Start() = 0;

 protected:
  ~RkTaskThread() = default;
};

// A new worker without pool, assignment and thread. The caller owns it. Throws std::bad_alloc.
TMV_API RkTaskThread* CreateRkTaskThread();

// Frees a worker whose thread has been joined or was never started. Null does nothing.
TMV_API void DestroyRkTaskThread(RkTaskThread* thread);

#endif  // TEMVAR_TASK_THREAD_H_
