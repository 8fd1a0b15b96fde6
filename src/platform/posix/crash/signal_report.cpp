#include "platform/posix/crash/signal_report.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <ctime>

#include "platform/posix/crash/minidump/stopped_threads.h"

namespace temvar::posix {
namespace {

constexpr long kReportSeconds = 60;
constexpr long kHurrySeconds = 5;

// A real-time signal from the middle of the range, where runtimes and debuggers claim none.
int WatchdogSignal() { return SIGRTMIN + 17; }

constinit thread_local SignalReport* current = nullptr;

// Its address in a signal marks the signal as that of a watchdog.
constinit char mark = 0;
constinit std::atomic<int> watched{0};
constinit struct sigaction actionBefore = {};

void OnWatchdog(int number, siginfo_t* info, void* context) {
  if (info->si_code != SI_TIMER || info->si_value.sival_ptr != &mark) {
    // The host uses the signal itself.
    if ((actionBefore.sa_flags & SA_SIGINFO) != 0) {
      actionBefore.sa_sigaction(number, info, context);
    } else if (actionBefore.sa_handler != SIG_DFL && actionBefore.sa_handler != SIG_IGN) {
      actionBefore.sa_handler(number);
    }
    return;
  }
  SignalReport* const report = SignalReport::Current();
  if (report == nullptr) return;  // It has just ended.
  report->LeaveStep(true);
  DieOf(report->SignalNumber());
}

sigset_t SetOf(int first, int second) {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, first);
  sigaddset(&set, second);
  return set;
}

// The library's own calls of the timers take the heap (glibc 2.36 for some kinds), the kernel's
// don't.
int CreateTimer() {
  sigevent event = {};
  event.sigev_notify = SIGEV_THREAD_ID;
  event.sigev_signo = WatchdogSignal();
  event.sigev_value.sival_ptr = &mark;
  event._sigev_un._tid = static_cast<pid_t>(syscall(SYS_gettid));
  int timer = -1;
  return syscall(SYS_timer_create, CLOCK_MONOTONIC, &event, &timer) == 0 ? timer : -1;
}

}  // namespace

SignalReport::SignalReport(int signalNumber, const sigset_t& threadMask)
    : signalNumber_(signalNumber), process_(getpid()), threadMask_(threadMask) {
  current = this;
  if (watched.fetch_add(1) == 0) {
    struct sigaction action = {};
    action.sa_sigaction = OnWatchdog;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESTART;
    sigaction(WatchdogSignal(), &action, &actionBefore);
  }
  timer_ = CreateTimer();
  StartTimer(kReportSeconds);
}

SignalReport::~SignalReport() {
  if (timer_ >= 0) syscall(SYS_timer_delete, timer_);
  // What a write beyond the limit of file sizes, or to a closed pipe, has left for this thread.
  const sigset_t failedWrites = SetOf(SIGXFSZ, SIGPIPE);
  const timespec now = {};
  while (sigtimedwait(&failedWrites, nullptr, &now) > 0) {
  }
  sigset_t mask;
  FillReportMask(mask);
  pthread_sigmask(SIG_SETMASK, &mask, nullptr);
  current = nullptr;
  if (watched.fetch_sub(1) == 1) sigaction(WatchdogSignal(), &actionBefore, nullptr);
}

SignalReport* SignalReport::Current() { return current; }

bool SignalReport::IsOfParent() const { return process_ != getpid(); }

void SignalReport::OpenSignals() {
  sigset_t mask = threadMask_;
  for (const int number : kCrashSignals) sigdelset(&mask, number);
  sigdelset(&mask, WatchdogSignal());
  sigaddset(&mask, SIGXFSZ);
  sigaddset(&mask, SIGPIPE);
  pthread_sigmask(SIG_SETMASK, &mask, nullptr);
}

void SignalReport::SetWayOut(sigjmp_buf* wayOut) { wayOut_ = wayOut; }

void SignalReport::LeaveStep(bool late) {
  sigjmp_buf* const wayOut = wayOut_;
  wayOut_ = nullptr;
  late_ = late;
  if (wayOut != nullptr) siglongjmp(*wayOut, 1);
}

void SignalReport::Hurry() { StartTimer(kHurrySeconds); }

void SignalReport::RestoreTime() { StartTimer(kReportSeconds); }

void SignalReport::StartTimer(long seconds) {
  itimerspec time = {};
  time.it_value.tv_sec = seconds;
  // A step that is left is followed by others, which have less time.
  time.it_interval.tv_sec = kHurrySeconds;
  if (timer_ >= 0) syscall(SYS_timer_settime, timer_, 0, &time, nullptr);
}

void FillReportMask(sigset_t& set) {
  sigfillset(&set);
  sigdelset(&set, minidump::kStopSignal);
  sigdelset(&set, WatchdogSignal());
}

void DieOf(int signalNumber) {
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  sigaction(signalNumber, &action, nullptr);
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, signalNumber);
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
  syscall(SYS_tgkill, getpid(), syscall(SYS_gettid), signalNumber);
  _exit(128 + signalNumber);
}

void UnblockCrashSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (const int number : kCrashSignals) sigaddset(&set, number);
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

}  // namespace temvar::posix
