#ifndef TEMVAR_PLATFORM_POSIX_CRASH_TERMINATE_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_TERMINATE_H_

#include <signal.h>

namespace temvar::posix {

// Sets the terminate handler that turns an uncaught C++ exception into a SIGABRT of its own kind,
// and then calls the handler of before. std::terminate without an exception is an abort like any
// other. A later call puts it back where another has displaced it.
void HookTerminate();

// Whether this SIGABRT comes from that handler.
bool IsUncaughtException(const siginfo_t* info);

}  // namespace temvar::posix

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_TERMINATE_H_
