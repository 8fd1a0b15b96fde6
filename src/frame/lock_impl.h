// A mutex for any address, made on first use and dropped by its last user.
#ifndef TEMVAR_FRAME_LOCK_IMPL_H_
#define TEMVAR_FRAME_LOCK_IMPL_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

#include "frame/mutex.h"
#include "temvar/lock.h"

namespace temvar {

// The mutex of one key. `users` counts the threads that hold it or wait for it; lockTableGuard
// guards the count. The use count of the shared pointer is not enough: a thread that is about to
// leave Unlock still has a copy, and the Unlock of the next one would then leave the entry in the
// table for ever.
struct KeyedMutex {
  std::mutex mutex;
  uint32_t users = 0;
};

// Invariant: the table has an entry for a key exactly while the key has users.
using LockTable = std::map<uintptr_t, std::shared_ptr<KeyedMutex>>;

extern LockTable& lockTable;
extern Mutex& lockTableGuard;

class TMVLockImpl final : public TMVLock {
 public:
  void Lock(void* key) override;
  void Unlock(void* key) override;
};

// Holds the keyed lock of an address for a scope.
class KeyedLock {
 public:
  explicit KeyedLock(const void* key);
  ~KeyedLock();
  KeyedLock(const KeyedLock&) = delete;
  KeyedLock& operator=(const KeyedLock&) = delete;

 private:
  void* const key_;
};

}  // namespace temvar

#endif  // TEMVAR_FRAME_LOCK_IMPL_H_
