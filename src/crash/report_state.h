// What the crash report knows for the whole process.
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
// other; nothing is stored once the paths are gone.
void StoreArchivePath(const TmvWideChar* path);

extern std::atomic<ReportCallback> report_callback;
extern std::atomic<CollectCallback> collect_callback;

}  // namespace temvar

#endif  // TEMVAR_CRASH_REPORT_STATE_H_
