// A mutex for any address, made on first use and dropped when its last user lets go.
#ifndef TEMVAR_FRAME_KEYED_LOCKS_H_
#define TEMVAR_FRAME_KEYED_LOCKS_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

#include "frame/mutex.h"
#include "temvar/lock.h"

namespace temvar {

// Invariant: while a thread holds or waits for a key, the key's entry stands in the table. The
// entry's use count tells who needs it: one for the table, and one for each thread inside Lock or
// Unlock.
using LockTable = std::map<uintptr_t, std::shared_ptr<std::mutex>>;

extern LockTable& lock_table;
extern Mutex& lock_table_guard;

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

#endif  // TEMVAR_FRAME_KEYED_LOCKS_H_
