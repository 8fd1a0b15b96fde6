#ifndef TEMVAR_USER_DEFAULTS_H_
#define TEMVAR_USER_DEFAULTS_H_

#include "temvar/export.h"
#include "temvar/types.h"

#endif  // TEMVAR_USER_DEFAULTS_H_
