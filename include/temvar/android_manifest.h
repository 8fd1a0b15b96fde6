#ifndef TEMVAR_ANDROID_MANIFEST_H_
#define TEMVAR_ANDROID_MANIFEST_H_

#include "temvar/export.h"
#include "temvar/types.h"

#endif  // TEMVAR_ANDROID_MANIFEST_H_
