#include "frame/keyed_locks.h"

namespace temvar {

void TMVLockImpl::Lock(void* key) {
  std::shared_ptr<std::mutex> mutex;
  {
    MutexLock guard(lock_table_guard);
    std::shared_ptr<std::mutex>& entry = lock_table[reinterpret_cast<uintptr_t>(key)];
    if (!entry) {
      try {
        entry = std::make_shared<std::mutex>();
      } catch (...) {
        lock_table.erase(reinterpret_cast<uintptr_t>(key));
        throw;
      }
    }
    mutex = entry;
  }
  // Outside the guard, so that waiting for one key delays no other. The copy has raised the use
  // count: an Unlock meanwhile keeps the entry.
  mutex->lock();
}

void TMVLockImpl::Unlock(void* key) {
  std::shared_ptr<std::mutex> mutex;
  {
    MutexLock guard(lock_table_guard);
    const auto entry = lock_table.find(reinterpret_cast<uintptr_t>(key));
    if (entry == lock_table.end()) return;
    mutex = entry->second;
    // Two users are the table and this copy: nobody waits. The entry goes before the mutex is free,
    // so that whoever comes next makes a fresh mutex.
    if (mutex.use_count() == 2) lock_table.erase(entry);
  }
  mutex->unlock();
}

KeyedLock::KeyedLock(const void* key) : key_(const_cast<void*>(key)) { TmvLock()->Lock(key_); }

KeyedLock::~KeyedLock() { TmvLock()->Unlock(key_); }

}  // namespace temvar
