#include "platform/posix/crash/signals.h"

#include <pthread.h>
#include <signal.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <iterator>

#include "platform/crash_thread.h"
#include "platform/posix/crash/abort_message.h"
#include "platform/posix/crash/dispatch.h"
#include "platform/posix/crash/reserve.h"
#include "platform/posix/crash/signal_report.h"
#include "platform/posix/crash/terminate.h"

namespace temvar::posix {
namespace {

// The actions of before the first Install, in the order of kCrashSignals.
constinit struct sigaction actionsBefore[std::size(kCrashSignals)] = {};

// The fault that a handler of before has returned from last, on this thread. The registers hold the
// address of a failed access, too.
struct TakenFault {
  bool known;
  gregset_t registers;
};
constinit thread_local TakenFault taken = {};

DWORD CodeOf(int number, const siginfo_t* info) {
  if (number != SIGABRT) return ExceptionCodeOf(number);
  if (IsUncaughtException(info)) return kCxxException;
  return IsHeapCorruptionAbort() ? STATUS_HEAP_CORRUPTION : 0;
}

// The action of before this library, null where that was the default. Ignored means the default
// too, as it does for the kernel when a fault is ignored.
struct sigaction* ForeignAction(int number) {
  for (size_t i = 0; i < std::size(kCrashSignals); ++i) {
    struct sigaction& action = actionsBefore[i];
    if (kCrashSignals[i] != number) continue;
    const bool plain = (action.sa_flags & SA_SIGINFO) == 0;
    const bool real = !plain || (action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN);
    return real ? &action : nullptr;
  }
  return nullptr;
}

void OnCrashSignal(int number, siginfo_t* info, void* context);

bool IsOurs(int number) {
  struct sigaction now = {};
  sigaction(number, nullptr, &now);
  return (now.sa_flags & SA_SIGINFO) != 0 && now.sa_sigaction == OnCrashSignal;
}

// Calls the handler of before as the kernel would have. May never return. False when it has
// declined.
bool CallForeignHandler(struct sigaction& action, int number, siginfo_t* info,
                        ucontext_t* machine) {
  const struct sigaction called = action;
  // It asked to be called once.
  if ((static_cast<unsigned>(called.sa_flags) & SA_RESETHAND) != 0) action = {};
  sigset_t blocked;
  sigset_t mask = machine->uc_sigmask;
  sigorset(&mask, &mask, &called.sa_mask);
  if ((called.sa_flags & SA_NODEFER) == 0) sigaddset(&mask, number);
  pthread_sigmask(SIG_SETMASK, &mask, &blocked);
  if ((called.sa_flags & SA_SIGINFO) != 0) {
    called.sa_sigaction(number, info, machine);
  } else {
    called.sa_handler(number);
  }
  pthread_sigmask(SIG_SETMASK, &blocked, nullptr);
  return IsOurs(number);
}

// Ends the process by the signal, as soon as the handler has returned.
void PassOn(int number, siginfo_t* info) {
  if (IsOurs(number)) {
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    sigaction(number, &action, nullptr);
  }
  if (syscall(SYS_rt_tgsigqueueinfo, getpid(), syscall(SYS_gettid), number, info) != 0) {
    DieOf(number);
  }
}

// One pass of the handlers. True when execution is to go on where it stopped.
bool Report(Exception& exception, int number, const ucontext_t* machine, bool vectored) {
  bool resume = false;
  {
    ReleaseReserve();
    const SignalReport report(number, machine->uc_sigmask);
    resume = vectored ? exception.AskVectoredHandler() : exception.AskUnhandledFilter();
  }
  FillReserve();
  return resume;
}

// Whether the exception has been dealt with: execution goes on.
bool Dispatch(DWORD code, int number, siginfo_t* info, ucontext_t* machine) {
  Exception exception(code, number, info, machine);
  const greg_t* const registers = machine->uc_mcontext.gregs;
  const bool again =
      taken.known && std::memcmp(taken.registers, registers, sizeof(taken.registers)) == 0;
  taken.known = false;
  if (!again) {
    if (code != 0 && Report(exception, number, machine, true)) return true;
    if (code == 0) CallAbortHandler();
    struct sigaction* const foreign = code == kCxxException ? nullptr : ForeignAction(number);
    if (foreign != nullptr && CallForeignHandler(*foreign, number, info, machine)) {
      // Only a fault comes again by itself: no sent signal, and no trap, which is passed.
      taken.known = info->si_code > 0 && number != SIGTRAP && number != SIGSYS;
      std::memcpy(taken.registers, registers, sizeof(taken.registers));
      return true;
    }
  }
  return code != 0 && Report(exception, number, machine, false);
}

void OnCrashSignal(int number, siginfo_t* info, void* context) {
  const int savedErrno = errno;
  if (SignalReport* const report = SignalReport::Current()) {
    // A process that a callback has forked makes no report of its own.
    if (!report->IsOfParent()) report->LeaveStep(false);
    DieOf(number);
  }
  const DWORD code = CodeOf(number, info);
  const bool goesOn = Dispatch(code, number, info, static_cast<ucontext_t*>(context));
  // std::terminate has sent the signal and ends the process itself.
  if (!goesOn && code != kCxxException) PassOn(number, info);
  errno = savedErrno;
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
  FillReportMask(action.sa_mask);
  for (size_t i = 0; i < std::size(kCrashSignals); ++i) {
    // What has displaced ours since may call ours in turn: only what was there at first gets its
    // turn.
    sigaction(kCrashSignals[i], &action, first ? &actionsBefore[i] : nullptr);
  }
}

}  // namespace temvar::posix
