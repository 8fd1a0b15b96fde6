#include "platform/posix/crash/exceptions.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>

#include "platform/crash_steps.h"
#include "platform/posix/crash/signals.h"

namespace {

constinit std::atomic<PVECTORED_EXCEPTION_HANDLER> vectoredHandler{nullptr};
constinit std::atomic<LPTOP_LEVEL_EXCEPTION_FILTER> unhandledFilter{nullptr};
constinit std::atomic<temvar::SignalHandler> abortHandler{nullptr};

}  // namespace

PVOID AddVectoredExceptionHandler(DWORD, PVECTORED_EXCEPTION_HANDLER handler) {
  PVECTORED_EXCEPTION_HANDLER none = nullptr;
  if (!vectoredHandler.compare_exchange_strong(none, handler)) return nullptr;
  temvar::posix::InstallCrashHandlers();
  return &vectoredHandler;
}

LPTOP_LEVEL_EXCEPTION_FILTER SetUnhandledExceptionFilter(LPTOP_LEVEL_EXCEPTION_FILTER filter) {
  const LPTOP_LEVEL_EXCEPTION_FILTER before = unhandledFilter.exchange(filter);
  temvar::posix::InstallCrashHandlers();
  return before;
}

DWORD GetCurrentThreadId() { return static_cast<DWORD>(syscall(SYS_gettid)); }

namespace temvar {

SignalHandler signal(int number, SignalHandler handler) {
  if (number != kAbortSignal) return nullptr;
  const SignalHandler before = abortHandler.exchange(handler);
  posix::InstallCrashHandlers();
  return before;
}

posix::ExceptionHandlers posix::GetExceptionHandlers() {
  return {vectoredHandler.load(), unhandledFilter.load(), abortHandler.load()};
}

}  // namespace temvar
