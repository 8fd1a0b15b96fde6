#ifndef TEMVAR_UTILITY_UNZIP_H_
#define TEMVAR_UTILITY_UNZIP_H_

#include "temvar/export.h"
#include "temvar/types.h"

#endif  // TEMVAR_UTILITY_UNZIP_H_
