#ifndef TEMVAR_PLATFORM_POSIX_CLOCK_H_
#define TEMVAR_PLATFORM_POSIX_CLOCK_H_

#include "platform/posix/types.h"

#endif  // TEMVAR_PLATFORM_POSIX_CLOCK_H_
