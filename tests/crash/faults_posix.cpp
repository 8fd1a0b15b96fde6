#include <signal.h>
#include <unistd.h>

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
  // All volatile: an optimising compiler leaves out writes to freed blocks, and blocks without use.
  void* volatile* volatile block = static_cast<void* volatile*>(std::malloc(4000));
  void* const barrier = std::malloc(4000);  // Keeps it apart from the rest of the heap.
  std::free(const_cast<void**>(block));
  block[1] = reinterpret_cast<void*>(0x10);
  void* volatile next = std::malloc(8000);
  std::free(next);
  std::free(barrier);
}

void CatchFaults() {}

void InstallForeignHandler(void (*log)(const char* line)) {
  static void (*foreign_log)(const char*) = log;
  struct sigaction action = {};
  action.sa_flags = SA_SIGINFO;
  action.sa_sigaction = [](int number, siginfo_t* info, void*) {
    // Only the fault itself has an address, and it is null.
    const bool fault = number == SIGSEGV && info->si_code > 0 && info->si_addr == nullptr;
    foreign_log(fault || number == SIGABRT ? "foreign" : "foreign-wrong");
    _exit(42);
  };
  sigaction(SIGSEGV, &action, nullptr);
  sigaction(SIGABRT, &action, nullptr);
}
