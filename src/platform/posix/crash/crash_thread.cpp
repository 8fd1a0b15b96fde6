#include "platform/crash_thread.h"

#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <new>

#include "platform/posix/crash/signal_report.h"

namespace temvar {
namespace {

constexpr size_t kCrashStackSize = 256 * 1024;

// What a thread's scope remembers; it lies at the lower end of the stack that it describes, where
// no frame reaches without having met trouble long before.
struct CrashStack {
  stack_t before;  // What the thread had: null pointer and SS_DISABLE, or a smaller stack.
  void* block;     // Guard page, stack, guard page.
  size_t blockSize;
};

// Null when the thread has enough already, or when there is no memory.
CrashStack* AddCrashStack() {
  stack_t before = {};
  if (sigaltstack(nullptr, &before) != 0) return nullptr;
  if ((before.ss_flags & SS_DISABLE) == 0 && before.ss_size >= kCrashStackSize) return nullptr;

  const size_t guard = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  const size_t size = kCrashStackSize + guard;  // One page more, so that the record costs nothing.
  void* const block =
      mmap(nullptr, size + 2 * guard, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
  if (block == MAP_FAILED) return nullptr;

  char* const stack = static_cast<char*>(block) + guard;
  stack_t added = {};
  added.ss_sp = stack;
  added.ss_size = size;
  if (mprotect(stack, size, PROT_READ | PROT_WRITE) != 0 || sigaltstack(&added, nullptr) != 0) {
    munmap(block, size + 2 * guard);
    return nullptr;
  }
  return new (stack) CrashStack{before, block, size + 2 * guard};
}

}  // namespace

CrashThreadScope::CrashThreadScope() noexcept : stack_(AddCrashStack()) {
  // A worker inherits the mask of the thread that starts the pool.
  posix::UnblockCrashSignals();
}

CrashThreadScope::~CrashThreadScope() {
  if (stack_ == nullptr) return;
  const CrashStack made = *static_cast<CrashStack*>(stack_);
  sigaltstack(&made.before, nullptr);
  munmap(made.block, made.blockSize);
}

void KeepCrashStack() noexcept {
  AddCrashStack();
  posix::UnblockCrashSignals();
}

// The kernel ends the process when a handler has no room.
CrashStackUse::CrashStackUse() noexcept = default;

CrashStackUse::~CrashStackUse() = default;

}  // namespace temvar
