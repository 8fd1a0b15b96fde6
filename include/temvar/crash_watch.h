#ifndef TEMVAR_CRASH_WATCH_H_
#define TEMVAR_CRASH_WATCH_H_

// Crash reports in one call, for C++17 hosts; header-only over temvar/dbg_report.h.
//
//   int main() {
//     tmv::WatchForCrashes(folder, [](const std::filesystem::path& report) { Send(report); });

#include <algorithm>
#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

#include "temvar/handles.h"

namespace tmv {

namespace detail {

// The files of earlier reports by their time stamp: a dump and, once it has been packed, the
// archive. Other files of the folder are the host's.
struct OldReport {
  std::filesystem::path dump;
  std::filesystem::path archive;
};

inline bool BeginsWithStamp(const std::filesystem::path& name) {
  const std::filesystem::path::string_type& text = name.native();
  return text.size() > 14 && std::all_of(text.begin(), text.begin() + 14,
                                         [](auto unit) { return unit >= '0' && unit <= '9'; });
}

inline std::map<std::filesystem::path, OldReport> FindOldReports(
    const std::filesystem::path& folder) {
  std::map<std::filesystem::path, OldReport> reports;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const std::filesystem::path path = entry.path();
    if (!BeginsWithStamp(path.filename()) || !entry.is_regular_file()) continue;
    if (path.extension() == ".dmp") reports[path.stem()].dump = path;
    const std::filesystem::path packed = path.stem();
    if (path.extension() == ".zip" && packed.extension() == ".dmp") {
      reports[packed.stem()].archive = path;
    }
  }
  return reports;
}

}  // namespace detail

// Watches for crashes from here on: Install of TMVDbgReport with what it asks for. `folder` becomes
// absolute and gets its separator; it is made with those above it if it is missing, and closed to
// everybody but the user, for dumps hold what the process had in memory. (On Windows a folder has
// the rights of the one above it: take one of the user's profile.)
//
// First `onOldReport` is called with each report that an earlier run has left, oldest first, as
// void(const std::filesystem::path&): its archive, or its dump if the process ended before that was
// packed. When it returns, the files of that report are deleted; when it throws, the report and the
// later ones stay for the next run, and the exception goes to the caller after the handlers have
// been installed. Files of the host's own stay. Two instances of a program that run at the same
// time need a folder each.
//
// `onReport` and `onCollect` run in a crash; both may be null. Throws
// std::filesystem::filesystem_error if the folder can't be made or belongs to somebody else, and
// installs nothing then. Belongs to the start of the host, on one thread. A second call has no new
// folder.
template <typename OnOldReport>
void WatchForCrashes(const std::filesystem::path& folder, OnOldReport&& onOldReport,
                     ReportCallback onReport = nullptr, CollectCallback onCollect = nullptr) {
  namespace fs = std::filesystem;
  const fs::path absolute = fs::absolute(folder / "").lexically_normal().make_preferred();
  fs::create_directories(absolute);
  fs::permissions(absolute, fs::perms::owner_all);
  struct Installer {
    const fs::path& folder;
    ReportCallback onReport;
    CollectCallback onCollect;
    ~Installer() {
      MakeDbgReport()->Install(folder.string<TmvWideChar>().c_str(), onReport, onCollect);
    }
  };
  const Installer installer{absolute, onReport, onCollect};
  for (const auto& [stamp, report] : detail::FindOldReports(absolute)) {
    onOldReport(report.archive.empty() ? report.dump : report.archive);
    std::error_code ignored;  // What can't be deleted is reported once more.
    fs::remove(report.dump, ignored);
    fs::remove(report.archive, ignored);
  }
}
inline void WatchForCrashes(const std::filesystem::path& folder) {
  WatchForCrashes(folder, [](const std::filesystem::path&) {});
}

}  // namespace tmv

#endif  // TEMVAR_CRASH_WATCH_H_
