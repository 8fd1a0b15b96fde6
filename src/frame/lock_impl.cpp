#include "frame/lock_impl.h"

namespace temvar {

void TMVLockImpl::Lock(void* key) {
  std::shared_ptr<KeyedMutex> keyed;
  {
    MutexLock guard(lock_table_guard);
    const auto number = reinterpret_cast<uintptr_t>(key);
    const auto entry = lock_table.find(number);
    if (entry == lock_table.end()) {
      keyed = std::make_shared<KeyedMutex>();
      lock_table.emplace(number, keyed);
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
    MutexLock guard(lock_table_guard);
    const auto entry = lock_table.find(reinterpret_cast<uintptr_t>(key));
    if (entry == lock_table.end()) return;
    keyed = entry->second;
    // The entry of the last user goes before the mutex is free: whoever comes next makes a fresh
    // one.
    if (--keyed->users == 0) lock_table.erase(entry);
  }
  keyed->mutex.unlock();
}

KeyedLock::KeyedLock(const void* key) : key_(const_cast<void*>(key)) { TmvLock()->Lock(key_); }

KeyedLock::~KeyedLock() { TmvLock()->Unlock(key_); }

}  // namespace temvar
