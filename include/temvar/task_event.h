#ifndef TEMVAR_TASK_EVENT_H_
#define TEMVAR_TASK_EVENT_H_

#include "temvar/export.h"
#include "temvar/task.h"

// The top of a job: a task of kind kTaskTypeEvent that owns a list of packages, which run side by
// side. Give it a name, add its packages and hand it to AddEvent of the scheduler, which keeps it
// under its name. When the last package has ended, the event's own function runs once on a worker;
// set one with SetFunc to be told, and report from it with ReportState(task, 1).
class RkTaskEvent : public virtual RkTask {
 public:
  // Appends a package and takes a reference on it. `package` must be the RkTask* of an
  // RkTaskPackage that has at least one child. Only before the event is handed to the scheduler.
  // Throws std::bad_alloc.
  virtual void AddPackage(RkTask* package) = 0;

 protected:
  ~RkTaskEvent() = default;
};

// A new event with one reference, which the caller drops with DestroyRkTask on its RkTask*.
TMV_API RkTaskEvent* CreateRkTaskEvent();

#endif  // TEMVAR_TASK_EVENT_H_
