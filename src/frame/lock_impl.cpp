#include "frame/lock_impl.h"

#include <utility>

namespace temvar {

void TMVLockImpl::Lock(void* key) {
  KeyedMutex* keyed = nullptr;
  {
    MutexLock guard(lockTableGuard);
    const auto number = reinterpret_cast<uintptr_t>(key);
    auto entry = lockTable.find(number);
    if (entry == lockTable.end() && spareLock) {
      spareLock.key() = number;
      entry = lockTable.insert(std::move(spareLock)).position;
    } else if (entry == lockTable.end()) {
      entry = lockTable.try_emplace(number).first;
    }
    keyed = &entry->second;
    ++keyed->users;
  }
  // Outside the guard, so that waiting for one key delays no other.
  keyed->mutex.lock();
}

// Unlocks under the guard, so that the next user can't erase the entry meanwhile.
void TMVLockImpl::Unlock(void* key) {
  MutexLock guard(lockTableGuard);
  const auto entry = lockTable.find(reinterpret_cast<uintptr_t>(key));
  if (entry == lockTable.end()) return;
  entry->second.mutex.unlock();
  if (--entry->second.users == 0) spareLock = lockTable.extract(entry);
}

// Through the exported service, so that a host can lock the same key.
KeyedLock::KeyedLock(const void* key) : key_(const_cast<void*>(key)) { TmvLock()->Lock(key_); }

KeyedLock::~KeyedLock() { TmvLock()->Unlock(key_); }

}  // namespace temvar
