#include <windows.h>

#include <thread>

#include "crash/faults.h"

namespace {

// Goes on after the faulting instruction. Called after the handlers that were there before.
LONG CALLBACK SkipInstruction(EXCEPTION_POINTERS* pointers) {
  if (pointers->ExceptionRecord->ExceptionCode != EXCEPTION_ACCESS_VIOLATION) {
    return EXCEPTION_CONTINUE_SEARCH;
  }
  // `movl $1, (%eax)` and `movl $1, (%rax)` have 6 bytes.
#if defined(__x86_64__)
  pointers->ContextRecord->Rip += 6;
#else
  pointers->ContextRecord->Eip += 6;
#endif
  return EXCEPTION_CONTINUE_EXECUTION;
}

// Crashes with `left` bytes between here and the end of the stack.
__attribute__((noinline)) void CrashWithStackLeft(size_t left) {
  MEMORY_BASIC_INFORMATION stack = {};
  VirtualQuery(&stack, &stack, sizeof(stack));
  volatile char frame[512];
  frame[0] = 1;
  if (static_cast<size_t>(&frame[0] - static_cast<char*>(stack.AllocationBase)) > left) {
    CrashWithStackLeft(left);
  } else {
    CrashBy("null-write");
  }
  frame[1] = 1;
}

}  // namespace

// What the heap of the system raises when it finds damage. Wine's own checks are off.
void DamageHeap() { RaiseException(0xC0000374, EXCEPTION_NONCONTINUABLE, 0, nullptr); }

void CrashUnderHeapLock() {}

void StopAtBreakpoint() { RaiseException(EXCEPTION_BREAKPOINT, 0, 0, nullptr); }

void CallForbidden() { RaiseException(0xC000001C, 0, 0, nullptr); }

void CrashOnSmallStack(size_t left) { CrashWithStackLeft(left); }

void InstallCatcher() {}

void RunCaught(const std::string& way) {
  void* const handler = AddVectoredExceptionHandler(0, SkipInstruction);
  CrashBy(way);
  RemoveVectoredExceptionHandler(handler);
}

void SetUp(const std::string&, bool, void (*)(const char*)) {}

void ForkAndCrash() {}
