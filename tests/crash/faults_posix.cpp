#include <signal.h>
#include <ucontext.h>

#include <cstdlib>
#include <cstring>
#include <thread>

#include "crash/faults.h"

void DamageHeap() {
  // A block that is freed twice: glibc's free() aborts with a message.
  void* volatile block = std::malloc(2000);
  void* const barrier = std::malloc(2000);
  std::free(block);
  std::free(block);
  std::free(barrier);
}

void CrashUnderHeapLock() {
  // With a second thread in the process glibc takes its locks in earnest.
  std::thread other([] { std::this_thread::sleep_for(std::chrono::minutes(2)); });
  other.detach();
  // A freed block whose back link leads nowhere: the next malloc follows it under its lock.
  void** volatile block = static_cast<void**>(std::malloc(4000));
  void* const barrier = std::malloc(4000);  // Keeps it apart from the rest of the heap.
  std::free(block);
  block[1] = reinterpret_cast<void*>(0x10);
  std::free(std::malloc(8000));
  std::free(barrier);
}

void CatchFaults() {
  // Comes after the library's handler in time, and so before it in order: not what Windows does.
}
