#include "platform/posix/crash/dispatch.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>

#include "platform/posix/crash/exceptions.h"
#include "platform/posix/crash/signals.h"

namespace {

// SIGABRT of the Windows runtime.
constexpr int kAbortSignal = 22;

constinit std::atomic<PVECTORED_EXCEPTION_HANDLER> vectored_handler{nullptr};
constinit std::atomic<LPTOP_LEVEL_EXCEPTION_FILTER> unhandled_filter{nullptr};
constinit std::atomic<temvar::SignalHandler> abort_handler{nullptr};

}  // namespace

PVOID AddVectoredExceptionHandler(DWORD, PVECTORED_EXCEPTION_HANDLER handler) {
  PVECTORED_EXCEPTION_HANDLER none = nullptr;
  if (!vectored_handler.compare_exchange_strong(none, handler)) return nullptr;
  temvar::posix::InstallCrashHandlers();
  return &vectored_handler;
}

LPTOP_LEVEL_EXCEPTION_FILTER SetUnhandledExceptionFilter(LPTOP_LEVEL_EXCEPTION_FILTER filter) {
  const LPTOP_LEVEL_EXCEPTION_FILTER before = unhandled_filter.exchange(filter);
  temvar::posix::InstallCrashHandlers();
  return before;
}

DWORD GetCurrentThreadId() { return static_cast<DWORD>(syscall(SYS_gettid)); }

namespace temvar {

SignalHandler signal(int number, SignalHandler handler) {
  if (number != kAbortSignal) return nullptr;
  const SignalHandler before = abort_handler.exchange(handler);
  posix::InstallCrashHandlers();
  return before;
}

namespace posix {
namespace {

// 0 read, 1 write, 8 execute: how the failed access is told.
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

DWORD ExceptionCodeOf(int signal_number) {
  switch (signal_number) {
    case SIGSEGV:
    case SIGBUS:
      return EXCEPTION_ACCESS_VIOLATION;
    case SIGILL:
      return EXCEPTION_ILLEGAL_INSTRUCTION;
    case SIGFPE:
      return EXCEPTION_INT_DIVIDE_BY_ZERO;
    default:
      return 0;
  }
}

bool DispatchException(DWORD code, int signal_number, const siginfo_t* info,
                       const ucontext_t* machine) noexcept {
  EXCEPTION_RECORD record = {};
  record.ExceptionCode = code;
  record.ExceptionAddress = InstructionOf(machine);
  if (code == EXCEPTION_ACCESS_VIOLATION) {
    record.NumberParameters = 2;
    record.ExceptionInformation[0] = AccessOf(machine);
    record.ExceptionInformation[1] = reinterpret_cast<ULONG_PTR>(info->si_addr);
  }
  CONTEXT context = {signal_number, info, machine};
  EXCEPTION_POINTERS pointers = {&record, &context};

  const PVECTORED_EXCEPTION_HANDLER first = vectored_handler.load();
  if (first != nullptr && first(&pointers) == EXCEPTION_CONTINUE_EXECUTION) return true;
  const LPTOP_LEVEL_EXCEPTION_FILTER last = unhandled_filter.load();
  return last != nullptr && last(&pointers) == EXCEPTION_CONTINUE_EXECUTION;
}

void CallAbortHandler() {
  const SignalHandler handler = abort_handler.load();
  if (handler != nullptr) handler(kAbortSignal);
}

}  // namespace posix
}  // namespace temvar
