#ifndef TEMVAR_TASK_SCHEDULAR_H_
#define TEMVAR_TASK_SCHEDULAR_H_

#include <cstdint>

#include "temvar/export.h"
#include "temvar/task_list.h"

class RkTask;
class RkTaskPackage;

// Keeps events by name and decides what may run: the tasks of a package one after the other, the
// packages of an event side by side, and the event's own function after its last package. It hands
// those tasks to the pool, which the host has started, and takes the next step when a task
// reports.
//
// All operations may be called from any thread, a task's function included, unless they say
// otherwise. A null name finds nothing and a null task does nothing. A result marked "+1" carries a
// reference that the caller drops with DestroyRkTask. Failures of the system's mutexes are thrown
// as std::system_error, exhausted memory as std::bad_alloc; unless they say otherwise, nothing has
// changed then.
class RkTaskSchedular {
 public:
  // Cancels the event and takes it out of the registry: CancelEventEx(name, true). A paused event
  // must be resumed first, see there.
  virtual void CancelEvent(const char* name) = 0;

  // Cancels the event that holds the first plain task of this name. False if there is none.
  virtual bool CancelEventOfTask(const char* taskName) = 0;

  // Pauses the event: each of its active tasks stops at its next pause point. Returns when every
  // task that was running has reached one or has ended, or when the event is resumed, cancelled,
  // removed or overwritten meanwhile. Parked tasks keep their workers. Tasks may call this, also
  // for their own event or for each other's: a task inside this call counts as waiting at a pause
  // point for every pause, and stops at its own next one afterwards. After std::bad_alloc tasks may
  // be paused all the same: ResumeEvent lets them go on.
  virtual void PauseEvent(const char* name) = 0;

  // Resumes a paused event. A result that a task reported while it was paused is lost; the task's
  // function must report it again. Needs no memory.
  virtual void ResumeEvent(const char* name) = 0;

  // A pause point for a running function: blocks while the task is paused. True if the state
  // afterwards is not kTaskStateCreated. Look at the task's state, for it may be paused again.
  virtual bool CheckPause(RkTask* task) = 0;

  // Enters the event under its name without starting it; its tasks start with ScheduleTask. An
  // entry of the same name is overwritten; the reference that the registry held on it is not
  // dropped.
  virtual void RegisterEvent(RkTask* event) = 0;

  // Enters the event as RegisterEvent does and starts it: the first task of each package is queued,
  // in the order of the packages. Throws std::out_of_range ("invalid vector<T> subscript") at a
  // package without tasks; the event then stays registered and the packages before it have started.
  // So it does after std::bad_alloc.
  virtual void AddEvent(RkTask* event) = 0;

  // Hands one task to the pool; a task of state 0 becomes active. A task that belongs to no
  // registered event runs once, and its report has no effect.
  virtual void ScheduleTask(RkTask* task) = 0;

  // Takes the event out of the registry without stopping it. Tasks in flight go on, but their
  // reports find nothing, so its packages stop.
  virtual void RemoveEvent(const char* name) = 0;

  // The same for a caller that holds the registry's mutex: the scheduler itself.
  virtual void RemoveEventLocked(const char* name) = 0;

  // The pause point of ReportState and CheckPause: blocks while the task is paused, but returns
  // once some event was resumed. The result is the state afterwards.
  virtual int32_t PausePoint(RkTask* task) = 0;

  // The same for a caller that holds the mutex of pauses: the scheduler itself.
  virtual int32_t PausePointLocked(RkTask* task) = 0;

  // The steps of ReportState with 1 and with 6. Call ReportState instead.
  virtual void TaskFinished(RkTask* task) = 0;
  virtual void TaskFailed(RkTask* task) = 0;

  // The first plain task of this name, +1, or null. Events are searched in ascending order of their
  // names, packages and tasks in their own order, nested packages too.
  virtual RkTask* FindTask(const char* name) = 0;

  // True if a cancel has ever taken out an active task of this name. Names are never forgotten.
  virtual bool IsTaskCancelled(const char* name) = 0;

  // The event registered under exactly this name, +1, or null.
  virtual RkTask* FindEvent(const char* name) = 0;

  // The event of the first plain task of this name, +1, or null.
  virtual RkTask* FindEventOfTask(const char* taskName) = 0;

  // The event that lists this very package directly, +1, or null.
  virtual RkTask* FindEventOfPackage(RkTask* package) = 0;

  // One node for each package of the event that has tasks, with the child in progress (the last
  // child in a package that has ended); a null child has none. The event needn't be registered.
  // Null for none. Release the list with FreeTaskList.
  virtual TaskListNode* ListCurrentTasks(RkTask* event) = 0;

  // Releases a list and the references in it. Null does nothing.
  virtual void FreeTaskList(TaskListNode* list) = 0;

  // The event's own package, the outermost one, in which the first plain task of this name lies,
  // +1, or null.
  virtual RkTaskPackage* FindPackageOfTask(const char* taskName) = 0;

  // Inserts `newTask` after `existing` in its package, also while the event runs; the package
  // takes a reference. False, with nothing done, if no registered event holds `existing` as a
  // direct child of one of its packages. A task inserted before the child in progress never starts.
  virtual bool InsertTaskAfter(RkTask* newTask, RkTask* existing) = 0;
  virtual bool InsertTaskAfterName(RkTask* newTask, const char* existingName) = 0;

  // Number of registered events. An event leaves the registry before its own function runs.
  virtual uint64_t GetEventCount() = 0;

  // Cancels the event and returns without waiting. A task of the pool then sets the active tasks to
  // kTaskStateCancelled, takes the queued tasks of this event's name out, and calls the event's
  // function with the event in the state kTaskStateCancelled. With `remove` the entry goes at once,
  // running tasks are not waited for, and the function is called once, by the cancel or by the end
  // that came first. Without it the entry stays, and the function is called when no task of the
  // event runs any more; the event may also end, or be cancelled again, before, and the function is
  // called each time. The cancel needs a free worker, and it wakes no parked task: resume first.
  virtual void CancelEventEx(const char* name, bool remove) = 0;

 protected:
  ~RkTaskSchedular() = default;
};

// The scheduler; the same pointer on each call, valid while the library is loaded.
TMV_API RkTaskSchedular* TmvTaskSchedular();

#endif  // TEMVAR_TASK_SCHEDULAR_H_
