#ifndef TEMVAR_UTILITY_SYS_H_
#define TEMVAR_UTILITY_SYS_H_

#include "temvar/export.h"
#include "temvar/types.h"

#endif  // TEMVAR_UTILITY_SYS_H_
