#ifndef TEMVAR_DBG_REPORT_H_
#define TEMVAR_DBG_REPORT_H_

#include "temvar/export.h"
#include "temvar/types.h"

// Receives the path of a finished report's archive. The text is valid during the call. If the disk
// is full or fails, the file may be missing, cut, without a dump, or with one whose checksum is
// wrong: nothing that fails in a report stops the rest of it.
using ReportCallback = void (*)(const TmvWideChar* archivePath);

// May put files of the host's own into the dump directory before it is packed. `*result` is null on
// entry; a block of malloc() that is left there is released by the library with free(), and not
// used otherwise.
using CollectCallback = void (*)(const TmvWideChar* dumpDirectory, void** result);

// Watches the process for crashes. A crash leaves a minidump in a directory of the host's choice,
// then the host may add to that directory, then all of it is packed into an archive, and the host
// is notified. Nothing is sent anywhere and no dialog is shown.
//
// Both callbacks run on the crashing thread of a process that has just failed: the heap may be
// damaged or locked, and other threads run on. The stack has 256 KiB; on Windows a thread other
// than that of Install and the workers has what is left of its own stack, and below 112 KiB of it
// there is no archive, below 64 KiB no report. A callback that throws is passed over, and the
// report goes on with the archive and the notice. So is a callback that crashes or takes more than
// a minute, on Linux; on Windows a crash in a callback is a crash of its own, and the second one
// inside a report ends the process. After a callback or the heap has hung, each further one has
// five seconds.
//
// What counts as a crash, and how the process ends after it: docs/crash-reports.md.
class TMVDbgReport {
 public:
  // Installs the handlers for the life of the process, and keeps the library loaded for as long.
  // Dumps are `dumpDirectory`, the local time as 14 digits, and ".dmp"; archives have ".zip" after
  // that. `onReport` may be null; a null `onCollect` is left out.
  //
  // The directory has to exist and to end in a separator: without one the dumps lie beside it, with
  // its name in front, and the archive lacks them. It should be absolute: a relative one counts
  // from the current directory of the moment of the crash. Nothing in it is ever removed, and an
  // archive holds every earlier dump that is still there: the host clears what it has dealt with.
  // Dumps hold what was on the stacks, and who can write to the directory can put files into the
  // next archive: it belongs to the user of the process alone. On Linux the files are readable by
  // that user only, and links in the directory are neither followed nor packed.
  //
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
