#include "platform/posix/crash/signals.h"

#include <signal.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <iterator>

#include "platform/crash_thread.h"
#include "platform/posix/crash/abort_message.h"
#include "platform/posix/crash/dispatch.h"
#include "platform/posix/crash/exceptions.h"
#include "platform/posix/crash/terminate.h"
#include "platform/posix/crash/watchdog.h"

namespace temvar::posix {
namespace {

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};

// What stood in the process before, in the order of kSignals.
constinit struct sigaction actions_before[std::size(kSignals)] = {};

DWORD CodeOf(int number, const siginfo_t* info) {
  if (number != SIGABRT) return ExceptionCodeOf(number);
  if (IsUncaughtException(info)) return kCxxException;
  return IsHeapCorruptionAbort() ? STATUS_HEAP_CORRUPTION : 0;
}

// Gives the signal to whoever had it before, as soon as the handler has returned.
void PassOn(int number, siginfo_t* info) {
  for (size_t i = 0; i < std::size(kSignals); ++i) {
    struct sigaction action = actions_before[i];
    // Ignored would mean that the process goes on.
    if ((action.sa_flags & SA_SIGINFO) == 0 && action.sa_handler == SIG_IGN) {
      action.sa_handler = SIG_DFL;
    }
    sigaction(kSignals[i], &action, nullptr);
  }
  if (syscall(SYS_rt_tgsigqueueinfo, getpid(), syscall(SYS_gettid), number, info) != 0) {
    DieOf(number);
  }
}

void OnCrashSignal(int number, siginfo_t* info, void* context) {
  const int saved_errno = errno;
  const DWORD code = CodeOf(number, info);
  if (!EnterReport()) DieOf(number);

  bool resume = false;
  if (code == 0) {
    CallAbortHandler();
  } else {
    ArmWatchdog(number);
    resume = DispatchException(code, number, info, static_cast<const ucontext_t*>(context));
  }
  LeaveReport();
  if (code != 0) DisarmWatchdog();
  errno = saved_errno;

  const bool back_to_terminate = code == kCxxException;
  if (!resume && !back_to_terminate) PassOn(number, info);
}

}  // namespace

void InstallCrashHandlers() {
  static constinit std::atomic<bool> installed{false};
  const bool first = !installed.exchange(true);
  if (first) {
    KeepCrashStack();
    PrepareAbortMessage();
  }
  HookTerminate();
  struct sigaction action = {};
  action.sa_sigaction = OnCrashSignal;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  sigemptyset(&action.sa_mask);
  for (const int number : kSignals) sigaddset(&action.sa_mask, number);
  for (size_t i = 0; i < std::size(kSignals); ++i) {
    // What has displaced ours since may call ours in turn: only what stood there at first gets its
    // turn.
    sigaction(kSignals[i], &action, first ? &actions_before[i] : nullptr);
  }
}

}  // namespace temvar::posix
