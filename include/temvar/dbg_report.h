#ifndef TEMVAR_DBG_REPORT_H_
#define TEMVAR_DBG_REPORT_H_

#include "temvar/export.h"
#include "temvar/types.h"

#endif  // TEMVAR_DBG_REPORT_H_
