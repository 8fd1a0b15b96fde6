#ifndef EXAMPLES_BACKUP_CRASH_REPORT_H_
#define EXAMPLES_BACKUP_CRASH_REPORT_H_

#include <filesystem>
#include <functional>
#include <string>

namespace backup {

// Makes crash reports from here on, in a folder beside the settings file. `tell` is called with a
// text for the user, now: if the last run has crashed, and where its report is kept, or if no
// reports can be made.
void WatchForCrashes(const std::filesystem::path& settings,
                     const std::function<void(const std::string& text)>& tell);

}  // namespace backup

#endif  // EXAMPLES_BACKUP_CRASH_REPORT_H_
