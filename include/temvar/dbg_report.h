#ifndef TEMVAR_DBG_REPORT_H_
#define TEMVAR_DBG_REPORT_H_

#include "temvar/export.h"
#include "temvar/types.h"

// Told where the archive of a finished report lies. The text is valid during the call, and the file
// may be missing: nothing that fails in a report stops the rest of it.
using ReportCallback = void (*)(const TmvWideChar* archivePath);

// May put files of the host's own into the dump directory before it is packed. `*result` is null on
// entry; a block of malloc() that is left there is released by the library with free(), and not
// used otherwise.
using CollectCallback = void (*)(const TmvWideChar* dumpDirectory, void** result);

// Watches the process for crashes. A crash leaves a minidump in a directory of the host's choice,
// then the host may add to that directory, then all of it is packed into an archive, and the host
// is told. Nothing is sent anywhere and no dialog is shown.
//
// Both callbacks run on the crashing thread of a process that has just failed: the heap may be
// damaged or locked, other threads may run on, and a second crash in them ends the process. The
// stack has 256 KiB, or what is left of it on Windows.
//
// What counts as a crash, and how the process ends after it, is told in docs/crash-reports.md.
class TMVDbgReport {
 public:
  // Installs the handlers for the life of the process. Dumps are `dumpDirectory`, the local time as
  // 14 digits, and ".dmp"; archives have ".zip" behind that. The directory has to exist, and to end
  // in a separator: without one the files lie beside it, with its name in front. `onReport` may be
  // null; a null `onCollect` is left out.
  // A second call replaces the callbacks and puts the handlers back that another library may have
  // displaced; its directory counts only if the first call gave none.
  // Never fails. Throws std::bad_alloc. Belongs to the start of the host, on one thread.
  virtual void Install(const TmvWideChar* dumpDirectory, ReportCallback onReport,
                       CollectCallback onCollect) = 0;

 protected:
  ~TMVDbgReport() = default;
};

// A new handle; the caller owns it. Installs nothing. Throws std::bad_alloc.
TMV_API TMVDbgReport* CreateTmvDbgReport();

// Frees the handle. Handlers, callbacks and directory stay in force. Null does nothing.
TMV_API void DestroyTmvDbgReport(TMVDbgReport* report);

// Names the host's exit flag: while it is true no report is made, so that a host can switch reports
// off around its own exit. The library sets it as well, when it has made the last report of the
// process. The host owns the flag and keeps it for the life of the process. Null brings back the
// library's own flag. Any thread, at any time.
TMV_API void SetExitProgram(bool* flag);

#endif  // TEMVAR_DBG_REPORT_H_
