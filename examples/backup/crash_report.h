#ifndef EXAMPLES_BACKUP_CRASH_REPORT_H_
#define EXAMPLES_BACKUP_CRASH_REPORT_H_

#include <temvar/types.h>

#include <filesystem>

namespace backup {

// Makes the folder and installs the crash report for it. `notify` runs on the crashing thread, with
// the path of the archive.
void InstallCrashReport(const std::filesystem::path& folder,
                        void (*notify)(const TmvWideChar* archive));

}  // namespace backup

#endif  // EXAMPLES_BACKUP_CRASH_REPORT_H_
