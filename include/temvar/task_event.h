#ifndef TEMVAR_TASK_EVENT_H_
#define TEMVAR_TASK_EVENT_H_

#include "temvar/export.h"
#include "temvar/task.h"

// The top of a job: a task of kind kTaskTypeEvent that owns a list of packages, which run side by
// side. Give it a name, add its packages and pass it to AddEvent of the scheduler, which keeps it
// under its name. When the last package has ended, or the event was cancelled, the event's own
// function runs on a worker: set one with SetFunc to learn of the end, and report from it with
// ReportState(task, 1). It runs once, except that an event can end and be cancelled with
// CancelEventEx(name, false) at the same time, which calls it for both.
class RkTaskEvent : public virtual RkTask {
 public:
  // Appends a package and takes a reference on it. `package` must be the RkTask* of an
  // RkTaskPackage that has at least one child. Only before the event is passed to the scheduler.
  // Throws std::bad_alloc.
  virtual void AddPackage(RkTask* package) = 0;

 protected:
  ~RkTaskEvent() = default;
};

// A new event with one reference, which the caller drops with DestroyRkTask on its RkTask*. Throws
// std::bad_alloc.
TMV_API RkTaskEvent* CreateRkTaskEvent();

#endif  // TEMVAR_TASK_EVENT_H_
