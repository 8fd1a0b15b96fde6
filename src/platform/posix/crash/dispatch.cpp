#include "platform/posix/crash/dispatch.h"

#include "platform/crash_steps.h"

namespace temvar::posix {
namespace {

// 0 read, 1 write, 8 execute: the first parameter of an access violation.
ULONG_PTR AccessOf(const ucontext_t* machine) {
#if defined(__x86_64__)
  const auto error = static_cast<unsigned long long>(machine->uc_mcontext.gregs[REG_ERR]);
  if ((error & 0x10) != 0) return 8;
  return (error & 0x2) != 0 ? 1 : 0;
#else
  static_cast<void>(machine);
  return 0;
#endif
}

PVOID InstructionOf(const ucontext_t* machine) {
#if defined(__x86_64__)
  return reinterpret_cast<PVOID>(machine->uc_mcontext.gregs[REG_RIP]);
#else
  static_cast<void>(machine);
  return nullptr;
#endif
}

}  // namespace

DWORD ExceptionCodeOf(int signalNumber) {
  switch (signalNumber) {
    case SIGSEGV:
    case SIGBUS:
      return EXCEPTION_ACCESS_VIOLATION;
    case SIGILL:
      return EXCEPTION_ILLEGAL_INSTRUCTION;
    case SIGFPE:
      return EXCEPTION_INT_DIVIDE_BY_ZERO;
    case SIGTRAP:
      return EXCEPTION_BREAKPOINT;
    case SIGSYS:
      return STATUS_INVALID_SYSTEM_SERVICE;
    default:
      return 0;
  }
}

Exception::Exception(DWORD code, int signalNumber, const siginfo_t* info, const ucontext_t* machine)
    : context_{signalNumber, info, machine}, pointers_{&record_, &context_} {
  record_.ExceptionCode = code;
  record_.ExceptionAddress = InstructionOf(machine);
  if (code == EXCEPTION_ACCESS_VIOLATION) {
    record_.NumberParameters = 2;
    record_.ExceptionInformation[0] = AccessOf(machine);
    record_.ExceptionInformation[1] = reinterpret_cast<ULONG_PTR>(info->si_addr);
  }
}

bool Exception::AskVectoredHandler() noexcept {
  const PVECTORED_EXCEPTION_HANDLER handler = GetExceptionHandlers().vectored;
  return handler != nullptr && handler(&pointers_) == EXCEPTION_CONTINUE_EXECUTION;
}

bool Exception::AskUnhandledFilter() noexcept {
  const LPTOP_LEVEL_EXCEPTION_FILTER filter = GetExceptionHandlers().unhandled;
  return filter != nullptr && filter(&pointers_) == EXCEPTION_CONTINUE_EXECUTION;
}

void CallAbortHandler() {
  const SignalHandler handler = GetExceptionHandlers().abort;
  if (handler != nullptr) handler(kAbortSignal);
}

}  // namespace temvar::posix
