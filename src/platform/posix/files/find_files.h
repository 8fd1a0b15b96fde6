// Listing of directories.
#ifndef TEMVAR_PLATFORM_POSIX_FILES_FIND_FILES_H_
#define TEMVAR_PLATFORM_POSIX_FILES_FIND_FILES_H_

#include "platform/posix/win32_types.h"

inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_DEVICE = 0x40;  // Here: a pipe, a socket or a device.
inline constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400;

struct WIN32_FIND_DATAW {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
  WCHAR cFileName[MAX_PATH];  // Without its directory.
};

// Looks at files by `pattern`: "directory\*" lists a directory, "." and ".." among the rest, in the
// order of the disk; any other text is the exact name of one file. Links are followed: a link to a
// directory is a directory (with FILE_ATTRIBUTE_REPARSE_POINT), a link to a file has that file's
// size; a link that leads nowhere is listed as an empty file. A directory that is reached through
// a link and is one of those on the way to that link is not listed again
// (ERROR_CANT_RESOLVE_FILENAME), so that every walk down a tree comes to an end.
// The result goes to FindClose.
HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* data);

// The next file; ERROR_NO_MORE_FILES after the last one.
BOOL FindNextFileW(HANDLE find, WIN32_FIND_DATAW* data);
BOOL FindClose(HANDLE find);

#endif  // TEMVAR_PLATFORM_POSIX_FILES_FIND_FILES_H_
