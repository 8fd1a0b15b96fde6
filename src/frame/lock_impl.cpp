#include "frame/lock_impl.h"

namespace temvar {

void TMVLockImpl::Lock(void* key) {
  std::shared_ptr<KeyedMutex> keyed;
  {
    MutexLock guard(lockTableGuard);
    const auto number = reinterpret_cast<uintptr_t>(key);
    const auto entry = lockTable.find(number);
    if (entry == lockTable.end()) {
      keyed = std::make_shared<KeyedMutex>();
      lockTable.emplace(number, keyed);
    } else {
      keyed = entry->second;
    }
    ++keyed->users;
  }
  // Outside the guard, so that waiting for one key delays no other.
  keyed->mutex.lock();
}

void TMVLockImpl::Unlock(void* key) {
  std::shared_ptr<KeyedMutex> keyed;
  {
    MutexLock guard(lockTableGuard);
    const auto entry = lockTable.find(reinterpret_cast<uintptr_t>(key));
    if (entry == lockTable.end()) return;
    keyed = entry->second;
    // The last user erases the entry before it unlocks. A thread that locks the key from now on
    // makes a new mutex and doesn't wait for this one.
    if (--keyed->users == 0) lockTable.erase(entry);
  }
  keyed->mutex.unlock();
}

// Through the exported service, so that a host can lock the same key.
KeyedLock::KeyedLock(const void* key) : key_(const_cast<void*>(key)) { TmvLock()->Lock(key_); }

KeyedLock::~KeyedLock() { TmvLock()->Unlock(key_); }

}  // namespace temvar
