#include <windows.h>

#include "crash/faults.h"

namespace {

// Goes on behind the faulting instruction. Called after the handlers that were there before.
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

}  // namespace

// What the heap of the system raises when it finds damage. Wine's own checks are off.
void DamageHeap() { RaiseException(0xC0000374, EXCEPTION_NONCONTINUABLE, 0, nullptr); }

void CrashUnderHeapLock() {}

void CatchFaults() { AddVectoredExceptionHandler(0, SkipInstruction); }

void InstallForeignHandler(void (*)(const char*)) {}
