#ifndef TEMVAR_TEMVAR_H_
#define TEMVAR_TEMVAR_H_

// Everything that a host sees of the library. Each interface has a header of its own, which is its
// manual and declares its exports.

// Jobs: an event of packages of tasks, run on a pool of workers.
#include "temvar/lock.h"
#include "temvar/task.h"
#include "temvar/task_data.h"
#include "temvar/task_event.h"
#include "temvar/task_func.h"
#include "temvar/task_list.h"
#include "temvar/task_package.h"
#include "temvar/task_pool.h"
#include "temvar/task_schedular.h"
#include "temvar/task_thread.h"

// Settings, Android packages, archives, crash reports.
#include "temvar/android_manifest.h"
#include "temvar/dbg_report.h"
#include "temvar/user_defaults.h"
#include "temvar/utility_unzip.h"
#include "temvar/utility_zip.h"

// Utilities, and the version.
#include "temvar/binary_data.h"
#include "temvar/utility_app.h"
#include "temvar/utility_file.h"
#include "temvar/utility_string.h"
#include "temvar/utility_sys.h"
#include "temvar/version.h"

#if defined(TEMVAR_LOADED)
#include "temvar/load.h"
#endif

#endif  // TEMVAR_TEMVAR_H_
