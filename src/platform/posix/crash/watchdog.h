// Which threads are inside a crash report. Everything here is safe in a signal handler.
#ifndef TEMVAR_PLATFORM_POSIX_CRASH_WATCHDOG_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_WATCHDOG_H_

namespace temvar::posix {

// Enters the calling thread. False when it is inside already: the report itself has crashed.
bool EnterReport();

// Takes the calling thread out again.
void LeaveReport();

// The watchdog of all running reports: after a minute the process ends by `signal_number`. A
// report can hang, on the lock of the heap that the crashed thread holds, or in a host's callback.
// Uses alarm(2), and puts SIGALRM back as it was when the last report leaves.
void ArmWatchdog(int signal_number);
void DisarmWatchdog();

// Ends the process by this signal, whatever handlers there are.
[[noreturn]] void DieOf(int signal_number);

}  // namespace temvar::posix

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_WATCHDOG_H_
