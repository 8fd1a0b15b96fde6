// A mutex for any address, made on first use and dropped by its last user.
#ifndef TEMVAR_FRAME_LOCK_IMPL_H_
#define TEMVAR_FRAME_LOCK_IMPL_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>

#include "frame/mutex.h"
#include "temvar/lock.h"

namespace temvar {

// The mutex of one key. `users` counts the threads that hold it or wait for it; lockTableGuard
// guards the count.
struct KeyedMutex {
  std::mutex mutex;
  uint32_t users = 0;
};

// Invariant: the table has an entry for a key exactly while the key has users.
using LockTable = std::map<uintptr_t, KeyedMutex>;

extern LockTable& lockTable;
// The entry that was erased last, for the next one to be made: a host that builds packages locks
// one key after the other.
extern LockTable::node_type& spareLock;
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
