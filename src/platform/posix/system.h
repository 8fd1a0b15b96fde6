// System facts: modules, the folder for temporary files, version, process.
#ifndef TEMVAR_PLATFORM_POSIX_SYSTEM_H_
#define TEMVAR_PLATFORM_POSIX_SYSTEM_H_

#include "platform/posix/win32_types.h"

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
