// What the crash report knows for the whole process. It has no lock: a thread may crash while it
// holds any.
#ifndef TEMVAR_CRASH_REPORT_STATE_H_
#define TEMVAR_CRASH_REPORT_STATE_H_

#include <atomic>
#include <string>

#include "temvar/dbg_report.h"

namespace temvar {

struct ReportPaths {
  // Set once, at the first Install that names a directory.
  std::basic_string<TmvWideChar> dumpDirectory;
  // Of the report made last. Written through StoreArchivePath alone.
  std::basic_string<TmvWideChar> archivePath;

  ~ReportPaths();
};

// The paths, which go at unload. A crash after that is still reported: the report itself works from
// the copy of the directory in DumpPath.
ReportPaths& GetReportPaths();

// Remembers the path of a new archive. Of two threads that crash at once, one may leave this to the
// other; nothing is stored once the paths are gone. Takes the heap.
void StoreArchivePath(const TmvWideChar* path);

extern std::atomic<ReportCallback> reportCallback;
extern std::atomic<CollectCallback> collectCallback;

// The exit flag, through the pointer of this moment. Any thread, and safe in a crash.
bool IsExiting();
void SetExiting();

}  // namespace temvar

#endif  // TEMVAR_CRASH_REPORT_STATE_H_
