#ifndef EXAMPLES_BACKUP_WINDOW_IDS_H_
#define EXAMPLES_BACKUP_WINDOW_IDS_H_

namespace backup_window {

// The class of the window and the numbers of its controls, by which another program finds them.
inline constexpr wchar_t kWindowClass[] = L"TemvarBackupWindow";

enum Control : int {
  kSource = 101,
  kBrowseSource,
  kDestination,
  kBrowseDestination,
  kStart,
  kPause,
  kResume,
  kCancel,
  kTotal,
  kStatus,
  kLanes,
  kFailures,
};

}  // namespace backup_window

#endif  // EXAMPLES_BACKUP_WINDOW_IDS_H_
