#ifndef TEMVAR_PLATFORM_POSIX_CRASH_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_H_

#include "platform/posix/types.h"

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_H_
