#include "crash_report.h"

#include <temvar/crash_watch.h>

#include "support/text.h"

namespace backup {

namespace fs = std::filesystem;

void WatchForCrashes(const fs::path& settings,
                     const std::function<void(const std::string& text)>& tell) {
  const fs::path folder = settings.parent_path();
  try {
    tmv::WatchForCrashes(folder / "temvar-backup-crashes", [&](const fs::path& report) {
      // What stays in the folder is deleted, as a host wants it that has sent the report.
      const fs::path kept = folder / ("temvar-backup-crash-" + report.filename().string());
      fs::rename(report, kept);
      tell("the last run crashed; its report is " + support::Utf8FromPath(kept));
    });
  } catch (const fs::filesystem_error& error) {
    tell(std::string("no crash reports are made: ") + error.what());
  }
}

}  // namespace backup
