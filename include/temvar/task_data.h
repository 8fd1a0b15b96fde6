#ifndef TEMVAR_TASK_DATA_H_
#define TEMVAR_TASK_DATA_H_

#include "temvar/export.h"

// A reference-counted box around one pointer of the host, with an optional function that releases
// it. Set it up on one thread, before it is shared; the references may be taken and dropped
// anywhere.
class RkTaskData {
 public:
  // Stores the pointer. The box never reads what it points to. An earlier payload is not released.
  virtual void SetPayload(void* payload) = 0;

  // The stored pointer, null in a new box.
  virtual void* GetPayload() = 0;

  // Stores the function that is called once with the payload, a null payload too, when the last
  // reference goes; null for none. It runs on the thread that drops that reference, which can be a
  // worker of the pool. It must not let an exception escape, and it must not wait for work of the
  // pool.
  virtual void SetReleaser(void (*releaser)(void* payload)) = 0;

 protected:
  ~RkTaskData() = default;
};

// A new box with one reference, which the caller drops with DestroyRkTaskData. Throws
// std::bad_alloc.
TMV_API RkTaskData* CreateRkTaskData();

// Adds a reference. Null does nothing. Any thread.
TMV_API void DuplicateRkTaskData(RkTaskData* data);

// Drops a reference; the last one calls the releaser and frees the box. Null does nothing. Any
// thread.
TMV_API void DestroyRkTaskData(RkTaskData* data);

#endif  // TEMVAR_TASK_DATA_H_
