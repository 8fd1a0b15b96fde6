#ifndef TEMVAR_TASK_PACKAGE_H_
#define TEMVAR_TASK_PACKAGE_H_

#include <cstdint>

#include "temvar/export.h"
#include "temvar/task.h"

// An ordered list of tasks that run strictly one after the other. It is a task of kind
// kTaskTypePackage itself: after its last child it runs as a task too, and it then counts as ended.
//
// The scheduler alone moves the position. The list may be read and changed from any thread, but
// finish it before the event starts; while the event runs, insert with InsertTaskAfter of the
// scheduler.
class RkTaskPackage : public virtual RkTask {
 public:
  // Appends `task` and takes a reference on it. Throws std::bad_alloc.
  virtual void AddTask(RkTask* task) = 0;

  // Inserts `task` before the child at `index` and takes a reference on it; the count appends. A
  // larger index is an error of the caller. The position is not adjusted. Throws std::bad_alloc.
  virtual void InsertTask(RkTask* task, uint32_t index) = 0;

  // Whether the next child runs after one has failed; true in a new package. If false, the first
  // failure ends the package, and the children after it never run.
  virtual void SetContinueOnFailure(bool continueOnFailure) = 0;

  // Number of children. A nested package counts as one.
  virtual uint32_t GetCount() = 0;

  // The first or last child, or null in an empty package. The caller drops the added reference with
  // DestroyRkTask.
  virtual RkTask* GetFirst() = 0;
  virtual RkTask* GetLast() = 0;

  // The child before the one in progress, or null at the first. The caller drops the added
  // reference. Throws std::out_of_range if the position lies beyond the list.
  virtual RkTask* GetPrevious() = 0;

  // Index of the child in progress; it stays on the last child when the package has ended.
  virtual uint32_t GetCurrentIndex() = 0;

  // The child after the one in progress, or null. The caller drops the added reference.
  virtual RkTask* GetNext() = 0;

 protected:
  ~RkTaskPackage() = default;
};

// A new package with one reference, which the caller drops with DestroyRkTask on its RkTask*.
// Throws std::bad_alloc.
TMV_API RkTaskPackage* CreateRkTaskPackage();

#endif  // TEMVAR_TASK_PACKAGE_H_
