// The user's folders.
#ifndef TEMVAR_PLATFORM_POSIX_SHELL_SHELL_FOLDERS_H_
#define TEMVAR_PLATFORM_POSIX_SHELL_SHELL_FOLDERS_H_

#include "platform/posix/win32_types.h"

inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);

// Folders of the user, without a backslash at the end:
//   CSIDL_PERSONAL  documents, as the desktop has them (XDG_DOCUMENTS_DIR), else ~/Documents
//   CSIDL_APPDATA   $XDG_CONFIG_HOME, else ~/.config
//   CSIDL_PROFILE   the home directory
// With CSIDL_FLAG_CREATE a missing folder is made. A folder that is missing, or whose path doesn't
// fit into MAX_PATH units, is a failure: E_FAIL, or FALSE. `path` has room for MAX_PATH units.
// Window, token and flags are ignored.
inline constexpr int CSIDL_PERSONAL = 0x0005;
inline constexpr int CSIDL_APPDATA = 0x001A;
inline constexpr int CSIDL_PROFILE = 0x0028;
inline constexpr int CSIDL_FLAG_CREATE = 0x8000;
HRESULT SHGetFolderPathW(HWND window, int folder, HANDLE token, DWORD flags, LPWSTR path);
BOOL SHGetSpecialFolderPathW(HWND window, LPWSTR path, int folder, BOOL create);

#endif  // TEMVAR_PLATFORM_POSIX_SHELL_SHELL_FOLDERS_H_
