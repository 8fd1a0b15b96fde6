// What the calling thread's signal handler knows of its crash report. Safe in a signal handler.
//
// The state is thread-local. It is placed in the static block of each thread (initial-exec), since
// the ordinary way allocates at the first use in a library that was loaded with dlopen.
#ifndef TEMVAR_PLATFORM_POSIX_CRASH_SIGNAL_REPORT_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_SIGNAL_REPORT_H_

#include <setjmp.h>
#include <signal.h>

namespace temvar::posix {

// A report of the calling thread, from its signal to its end. It owns a timer of its own: after a
// minute the step that runs is left, and without a step the process ends by the signal of the
// crash. The timer has a signal of its own and is aimed at this thread, so the host's SIGALRM is
// untouched, and threads that are stopped for a dump don't hold it up.
class SignalReport {
 public:
  // `threadMask` is the thread's signal mask at the crash. All signals are blocked by now.
  SignalReport(int signalNumber, const sigset_t& threadMask);
  ~SignalReport();
  SignalReport(const SignalReport&) = delete;
  SignalReport& operator=(const SignalReport&) = delete;

  // The report of the calling thread, null for none.
  static SignalReport* Current();

  // Whether the report belongs to the process that this one was forked from.
  bool IsOfParent() const;

  // Back to the thread's own signal mask: from here on host code runs. The signals of a crash are
  // open, so that a fault in a step can be left, and those of a write that fails stay closed.
  void OpenSignals();

  // Where a fault or the deadline in the step that runs leads; null outside of steps.
  void SetWayOut(sigjmp_buf* wayOut);
  sigjmp_buf* WayOut() const { return wayOut_; }
  // Jumps there. Returns if no step runs.
  void LeaveStep(bool late);
  // Whether the step left last had no time left.
  bool IsLate() const { return late_; }

  // Winds the clock up anew: with five seconds, with a minute.
  void Hurry();
  void RestoreTime();

  int SignalNumber() const { return signalNumber_; }

 private:
  void StartTimer(long seconds);

  const int signalNumber_;
  const int process_;
  const sigset_t threadMask_;
  sigjmp_buf* volatile wayOut_ = nullptr;
  volatile bool late_ = false;
  int timer_ = -1;
};

// Fills `set` with the signals blocked while a dump is made: everything but the signal that stops a
// thread for the dump of another one, and the watchdog's.
void FillReportMask(sigset_t& set);

// The signals that mean a crash.
inline constexpr int kCrashSignals[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGSYS};

// Ends the process by this signal, whatever handlers there are.
[[noreturn]] void DieOf(int signalNumber);

// Opens the signals of a crash on the calling thread: a fault whose signal is blocked ends the
// process without asking a handler.
void UnblockCrashSignals();

}  // namespace temvar::posix

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_SIGNAL_REPORT_H_
