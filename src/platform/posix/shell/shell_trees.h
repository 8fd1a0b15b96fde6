// The shell's functions for trees, folders and paths.
#ifndef TEMVAR_PLATFORM_POSIX_SHELL_SHELL_TREES_H_
#define TEMVAR_PLATFORM_POSIX_SHELL_SHELL_TREES_H_

#include "platform/posix/win32_types.h"

inline constexpr UINT FO_COPY = 2;
inline constexpr UINT FO_DELETE = 3;

// Flags of a file operation. The stand-in has no windows and asks nobody, so that it always acts as
// if all of them were set.
using FILEOP_FLAGS = WORD;
inline constexpr FILEOP_FLAGS FOF_SILENT = 0x4;
inline constexpr FILEOP_FLAGS FOF_NOCONFIRMATION = 0x10;
inline constexpr FILEOP_FLAGS FOF_NOCONFIRMMKDIR = 0x200;

struct SHFILEOPSTRUCTW {
  HWND hwnd;
  UINT wFunc;
  LPCWSTR pFrom;  // One path; it is taken literally, `*` and `?` are ordinary letters.
  LPCWSTR pTo;    // The destination of FO_COPY.
  FILEOP_FLAGS fFlags;
  BOOL fAnyOperationsAborted;
  PVOID hNameMappings;
  LPCWSTR lpszProgressTitle;
};

// Copies or deletes a file or a whole tree; 0, or the error code.
//
// FO_DELETE deletes for good, read-only files too, and ends at links: the link is deleted, what it
// leads to is not.
// FO_COPY to a directory that exists copies into it, under the source's own name; else the
// destination becomes the copy, and its missing parents are made. Files and links that exist are
// replaced, directories are merged. Links are copied as links; pipes, sockets and devices are left
// out. Copies keep permissions and last-write times. A directory can't be copied into itself.
// What was done before a failure stays done.
int SHFileOperationW(SHFILEOPSTRUCTW* operation);

// Makes a directory and its missing parents; 0, or the error code: ERROR_ALREADY_EXISTS for a
// directory that exists, ERROR_FILE_EXISTS for a file of that name.
int SHCreateDirectoryExW(HWND window, LPCWSTR path, const SECURITY_ATTRIBUTES* security);

// FILE_ATTRIBUTE_DIRECTORY if `path` is a directory or a link to one, else FALSE.
BOOL PathIsDirectoryW(LPCWSTR path);

// Cuts the last component and the separator before it off a path; the separator of a root stays.
// FALSE if there was nothing to cut.
BOOL PathRemoveFileSpecW(LPWSTR path);

#endif  // TEMVAR_PLATFORM_POSIX_SHELL_SHELL_TREES_H_
