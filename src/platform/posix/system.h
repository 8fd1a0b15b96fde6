// System facts: executable, standard folders, version, and the desktop's opener.
#ifndef TEMVAR_PLATFORM_POSIX_SYSTEM_H_
#define TEMVAR_PLATFORM_POSIX_SYSTEM_H_

#include "platform/posix/types.h"

inline constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
inline constexpr DWORD ERROR_PROC_NOT_FOUND = 127;

inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);

// Writes the path of a module, with backslashes: that of the executable for null, else that of what
// dlopen gave. A path that doesn't fit is cut at `capacity` - 1 units; the result is then
// `capacity` and the error ERROR_INSUFFICIENT_BUFFER. 0 for an unknown module
// (ERROR_MOD_NOT_FOUND). Else the result is the length.
DWORD GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD capacity);

// There are no system modules to look into: null, with ERROR_MOD_NOT_FOUND or ERROR_PROC_NOT_FOUND.
using FARPROC = void (*)();
HMODULE GetModuleHandleA(LPCSTR name);
FARPROC GetProcAddress(HMODULE module, LPCSTR name);

// Writes the folder for temporary files with a backslash at its end: $TMPDIR, else /tmp. The result
// is its length, or the room needed, terminator included, if `capacity` is too small.
DWORD GetTempPathW(DWORD capacity, LPWSTR path);

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

// Cuts the last component and the separator before it off a path; the separator of a root stays.
// FALSE if there was nothing to cut.
BOOL PathRemoveFileSpecW(LPWSTR path);

// Hands `file`, a path or an address with a scheme, to the desktop's opener (xdg-open on PATH)
// without waiting for it; "open" and "explore" mean the same. Parameters and directory must be
// null. The result is above 32 if the opener was started, else a code of an error. No shell reads
// the text, and the opener is nobody's zombie afterwards. The A form takes ANSI text.
inline constexpr int SW_SHOWNORMAL = 1;
HINSTANCE ShellExecuteW(HWND window, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters,
                        LPCWSTR directory, int show);
HINSTANCE ShellExecuteA(HWND window, LPCSTR verb, LPCSTR file, LPCSTR parameters, LPCSTR directory,
                        int show);

struct OSVERSIONINFOA {
  DWORD dwOSVersionInfoSize;
  DWORD dwMajorVersion;
  DWORD dwMinorVersion;
  DWORD dwBuildNumber;
  DWORD dwPlatformId;
  CHAR szCSDVersion[128];
};

struct OSVERSIONINFOEXA : OSVERSIONINFOA {
  WORD wServicePackMajor;
  WORD wServicePackMinor;
  WORD wSuiteMask;
  BYTE wProductType;
  BYTE wReserved;
};

// Reports 6.2, which is what a program without a compatibility manifest sees on a Windows of today.
// FALSE for a record of an unknown size.
BOOL GetVersionExA(OSVERSIONINFOA* version);

DWORD GetCurrentProcessId();
HANDLE GetCurrentProcess();

#endif  // TEMVAR_PLATFORM_POSIX_SYSTEM_H_
