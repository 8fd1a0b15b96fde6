// Turns the error numbers of the C library into the error codes of Windows.
#ifndef TEMVAR_PLATFORM_POSIX_ERRORS_H_
#define TEMVAR_PLATFORM_POSIX_ERRORS_H_

#include "platform/posix/types.h"

namespace temvar::posix {

// The Windows code for an errno value; ERROR_GEN_FAILURE for what has no counterpart.
DWORD ErrorFromErrno(int error);

// Sets the thread's last error from errno. Safe in a signal handler.
void SetLastErrorFromErrno();

}  // namespace temvar::posix

#endif  // TEMVAR_PLATFORM_POSIX_ERRORS_H_
