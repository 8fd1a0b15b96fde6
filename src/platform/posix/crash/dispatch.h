#ifndef TEMVAR_PLATFORM_POSIX_CRASH_DISPATCH_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_DISPATCH_H_

#include <signal.h>
#include <ucontext.h>

#include "platform/posix/win32_types.h"

namespace temvar::posix {

// The code of an uncaught C++ exception, as the Microsoft runtime raises it.
inline constexpr DWORD kCxxException = 0xE06D7363;

// The exception that a fault stands for; 0 for a signal that stands for none.
DWORD ExceptionCodeOf(int signal_number);

// Asks the vectored handler, then the unhandled filter. True when one of them wants execution to go
// on where it stopped. An exception that leaves a handler ends the process.
bool DispatchException(DWORD code, int signal_number, const siginfo_t* info,
                       const ucontext_t* machine) noexcept;

// Calls what signal(22) has set.
void CallAbortHandler();

}  // namespace temvar::posix

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_DISPATCH_H_
