// Catches the signals that stand for exceptions, and the end of the C++ runtime.
//
// 1. The handler runs with all crash signals blocked: a fault inside a report ends the process at
//    once, by the kernel, with the fault's own signal. An abort() inside a report does the same,
//    by EnterReport.
// 2. A watchdog stands behind each report.
// 3. At the end the actions that were there before are put back and the signal is queued again with
//    its own siginfo. It is delivered when the handler returns, on the state of the fault: a
//    foreign handler, or the kernel's core dump, sees what ours saw.
// 4. An uncaught C++ exception comes through std::terminate. It is sent to this thread as SIGABRT,
//    so that it takes the same road; the terminate handler of before has its turn afterwards.
#ifndef TEMVAR_PLATFORM_POSIX_CRASH_SIGNALS_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_SIGNALS_H_

namespace temvar::posix {

// Gives the calling thread its alternate stack too. A later call puts the handlers back that others
// have displaced since; those others get no turn, as the ones before the first call do.
void InstallCrashHandlers();

}  // namespace temvar::posix

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_SIGNALS_H_
