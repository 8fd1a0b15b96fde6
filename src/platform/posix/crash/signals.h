// Catches the signals that correspond to exceptions, and the end of the C++ runtime.
//
// 1. The handler runs with all signals blocked until the dump is on disk: a fault in that time ends
//    the process at once, by the kernel, with the fault's own signal. From then on a fault or an
//    abort leaves the step of the report that it is in; outside of a step it ends the process.
// 2. A watchdog limits each report (signal_report.h).
// 3. A handler that was there before this library is called between the vectored handler and the
//    filter, with the mask that the kernel would have set. It may leave by a jump: nothing of this
//    library is undone by that. When it returns, it has taken the signal; but not if it has set
//    another action, as handlers do that only look on, or if the same fault comes again at once
//    with every register unchanged.
// 4. Where nobody took it, the default action is set and the signal is queued again with its own
//    siginfo. It is delivered when the handler returns, on the state of the fault: the kernel's
//    core dump sees what ours saw.
// 5. An uncaught C++ exception comes through std::terminate, when no handler can take it any more.
//    It is sent to this thread as SIGABRT, so that it takes the same road without step 3; the
//    terminate handler of before has its turn afterwards, and an abort that follows takes step 3.
#ifndef TEMVAR_PLATFORM_POSIX_CRASH_SIGNALS_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_SIGNALS_H_

namespace temvar::posix {

// Sets the calling thread up for its own crash too (KeepCrashStack). A later call puts the handlers
// back that others have displaced since; those others get no turn.
void InstallCrashHandlers();

}  // namespace temvar::posix

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_SIGNALS_H_
