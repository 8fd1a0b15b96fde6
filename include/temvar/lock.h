#ifndef TEMVAR_LOCK_H_
#define TEMVAR_LOCK_H_

#include "temvar/export.h"

// A mutex for any object, without the object carrying one: the key is an address, normally that of
// the object to guard. The mutex of a key exists for as long as somebody holds or waits for it.
//
// A key is a number and no resource: it is never dereferenced, null is a key like any other, and
// two unrelated users of one address share one mutex.
class TMVLock {
 public:
  // Blocks until the calling thread holds the mutex of `key`. Not recursive: locking a key twice on
  // one thread is an error of the caller. Waiting for one key never delays another key.
  // Throws std::bad_alloc, or std::system_error when the system refuses the mutex. Any thread.
  virtual void Lock(void* key) = 0;

  // Releases the mutex of `key`. Only the thread that holds it may call this.
  // Throws std::system_error.
  virtual void Unlock(void* key) = 0;

 protected:
  ~TMVLock() = default;
};

// The service; the same pointer on each call, valid while the library is loaded.
TMV_API TMVLock* TmvLock();

#endif  // TEMVAR_LOCK_H_
