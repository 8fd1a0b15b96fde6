#ifndef EXAMPLES_CRASH_HOST_REPORT_FOLDER_H_
#define EXAMPLES_CRASH_HOST_REPORT_FOLDER_H_

#include <filesystem>
#include <string>

namespace crash_host {

// Makes the folder, with `dumps` for the reports in it, which belongs to the user alone; throws
// std::filesystem::filesystem_error where it can't. Returns the path of the archive of which
// the previous run was noted, once; empty if there is none.
std::string PrepareReports(const std::filesystem::path& folder);

// Installs the crash report for that folder. `exiting` switches reports off while it is true.
void InstallReports(bool* exiting);

// What the host is doing: goes into the next report as host.txt.
void NoteWork(const std::string& text);

}  // namespace crash_host

#endif  // EXAMPLES_CRASH_HOST_REPORT_FOLDER_H_
