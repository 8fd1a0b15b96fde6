#ifndef TEMVAR_TASK_H_
#define TEMVAR_TASK_H_

#include <cstdint>

#include "temvar/export.h"
#include "temvar/task_func.h"

class RkTaskData;

// Kinds of task.
inline constexpr int32_t kTaskTypePlain = 0;
inline constexpr int32_t kTaskTypePackage = 1;
inline constexpr int32_t kTaskTypeEvent = 2;

// States of a task.
inline constexpr int32_t kTaskStateCreated = 0;    // New, or waiting for its turn in a package.
inline constexpr int32_t kTaskStateSucceeded = 1;  // Ended, reported success.
inline constexpr int32_t kTaskStateActive = 2;     // Queued in the pool, or running.
inline constexpr int32_t kTaskStateCancelled = 5;  // Taken out by a cancel of its event.
inline constexpr int32_t kTaskStateFailed = 6;     // Ended, reported failure.
inline constexpr int32_t kTaskStatePaused = 7;     // Held by a pause of its event.

// The unit of work: a named, reference-counted record of what to run. It schedules nothing itself.
// An RkTaskEvent and an RkTaskPackage are tasks too; their pointers convert to RkTask*.
//
// Names: the scheduler knows a plain task by its name alone, so the names of plain tasks must be
// unique over all events that are registered at one time. Nothing checks this.
//
// Threads: the host sets name, function and data before it passes the task on, and doesn't change
// them while it is queued or running. State and kind may be read from any thread.
class RkTask {
 public:
  // Reports the result of a running function: 1 for success, 6 for failure. Called by the function
  // on the thread that runs it, with the task itself as `task`.
  //
  // While the task is paused the call blocks until the event is resumed, and it then returns
  // without having reported anything: report again if the state afterwards is kTaskStateActive. On
  // a cancelled task it does nothing. Any other value reports nothing, so ReportState(task, 0) is a
  // pause point. Throws std::bad_alloc if there is no memory to queue what comes next; nothing has
  // been reported then, and the function may report again.
  virtual void ReportState(RkTask* task, int32_t state) = 0;

  // Replaces the function that the task runs: drops the reference on the old holder, takes one on
  // `func`, which may be null. A task without a function passes through the pool without running.
  virtual void SetFunc(RkTaskFunc* func) = 0;

  // The function holder, or null. No reference is added.
  virtual RkTaskFunc* GetFunc() = 0;

  // Replaces the host's own payload of the task, in the way of SetFunc. The library never reads it,
  // and the task's function does not receive it: it receives the data of its RkTaskFunc.
  virtual void SetData(RkTaskData* data) = 0;

  // The payload holder, or null. No reference is added.
  virtual RkTaskData* GetData() = 0;

  // Drops the task's reference on its payload holder.
  virtual void ClearData() = 0;

  // Drops the task's reference on its function holder.
  virtual void ClearFunc() = 0;

  // The kind: kTaskTypePlain, kTaskTypePackage or kTaskTypeEvent.
  virtual int32_t GetType() = 0;

  // Stores the kind. For the library: an object of a kind that is none of the three is never freed.
  virtual void SetType(int32_t type) = 0;

  // The state, one of the constants above.
  virtual int32_t GetState() = 0;

  // Stores any state, without a test. The scheduler moves the states; a host rarely needs this.
  virtual void SetState(int32_t state) = 0;

  // The name, "0" in a new task. Valid until the name changes or the task is destroyed.
  virtual const char* GetName() = 0;

  // The name becomes the decimal text of `number`. Throws std::bad_alloc.
  virtual void SetNameNumber(int64_t number) = 0;

  // The name becomes a copy of `name`; null counts as the empty text. Throws std::bad_alloc.
  virtual void SetName(const char* name) = 0;

 protected:
  ~RkTask() = default;
};

// A new plain task with one reference, which the caller drops with DestroyRkTask. Throws
// std::bad_alloc.
TMV_API RkTask* CreateRkTask();

// Adds a reference for the caller and returns the argument. Null returns null. Any thread.
TMV_API RkTask* DuplicateRkTask(RkTask* task);

// Drops a reference on a task, a package or an event. The last one destroys the object on the
// calling thread, with the references that it holds. Null does nothing. Any thread.
TMV_API void DestroyRkTask(RkTask* task);

#endif  // TEMVAR_TASK_H_
