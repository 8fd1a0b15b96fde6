// From the signals of a crash to the handlers that exceptions.h has registered.
#ifndef TEMVAR_PLATFORM_POSIX_CRASH_DISPATCH_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_DISPATCH_H_

#include <signal.h>
#include <ucontext.h>

#include "platform/posix/crash/exceptions.h"

namespace temvar::posix {

// The code of an uncaught C++ exception, as the Microsoft runtime raises it.
inline constexpr DWORD kCxxException = 0xE06D7363;

// The exception that corresponds to a fault; 0 for a signal without one.
DWORD ExceptionCodeOf(int signalNumber);

// One crash as the handlers see it. Valid as long as what it was made from.
class Exception {
 public:
  Exception(DWORD code, int signalNumber, const siginfo_t* info, const ucontext_t* machine);

  // Asks the vectored handler, and the unhandled filter. True when it wants execution to go on
  // where it stopped. An exception that leaves a handler ends the process.
  bool AskVectoredHandler() noexcept;
  bool AskUnhandledFilter() noexcept;

 private:
  EXCEPTION_RECORD record_ = {};
  CONTEXT context_;
  EXCEPTION_POINTERS pointers_;
};

// Calls what signal(kAbortSignal) has set.
void CallAbortHandler();

}  // namespace temvar::posix

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_DISPATCH_H_
