#ifndef TEMVAR_TASK_FUNC_H_
#define TEMVAR_TASK_FUNC_H_

#include "temvar/export.h"

class RkTask;
class RkTaskData;

// The function that a task runs, called on a worker with the task and with the data of its
// RkTaskFunc, which may be null. Both are valid for the whole call; keep them longer only with a
// reference of your own.
//
// Rules for the function:
// - Report the result with task->ReportState(task, 1), or 6 on failure. Without a report the
//   package of the task doesn't go on.
// - No exception may escape: the workers catch nothing, and the process would end. Catch everything
//   and turn it into ReportState(task, 6).
// - Pass a pause point now and then (ReportState with 0) if it runs long, and return early when the
//   task's state is kTaskStateCancelled.
// - Never call Stop of the pool, or Stop or Lock of the worker that runs it.
using RkTaskCallback = void (*)(RkTask* task, RkTaskData* data);

// A reference-counted pair of a function and its data. Set it up before a task that refers to it is
// passed on; the references may be taken and dropped on any thread.
class RkTaskFunc {
 public:
  // Makes a new RkTaskData with `payload` and `releaser` (which may be null) and stores it together
  // with `callback`. The payload is released when the last holder of this object and of that data
  // is gone. Throws std::bad_alloc.
  virtual void Bind(void* payload, RkTaskCallback callback, void (*releaser)(void* payload)) = 0;

  // Stores both. Adds a reference to `data`, which may be null; several holders can share one data.
  virtual void SetCallback(RkTaskCallback callback, RkTaskData* data) = 0;

  // The stored function, null in a new holder.
  virtual RkTaskCallback GetCallback() = 0;

  // The stored data, or null. No reference is added.
  virtual RkTaskData* GetData() = 0;

 protected:
  ~RkTaskFunc() = default;
};

// A new holder with one reference, which the caller drops with DestroyRkTaskFunc. Throws
// std::bad_alloc.
TMV_API RkTaskFunc* CreateRkTaskFunc();

// Adds a reference. Null does nothing. Any thread.
TMV_API void DuplicateRkTaskFunc(RkTaskFunc* func);

// Drops a reference; the last one drops the holder's reference on its data and frees the holder.
// Null does nothing. Any thread.
TMV_API void DestroyRkTaskFunc(RkTaskFunc* func);

#endif  // TEMVAR_TASK_FUNC_H_
