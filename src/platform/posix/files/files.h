// Whole files and folders by their paths.
//
// Paths are UTF-16 and may use `\` and `/` alike; a leading drive letter is dropped. A path longer
// than PATH_MAX fails with ERROR_FILENAME_EXCED_RANGE. Unless a line says otherwise, an operation
// reports failure by FALSE or INVALID_HANDLE_VALUE and leaves the reason in GetLastError. Every
// operation may be called from any thread.
#ifndef TEMVAR_PLATFORM_POSIX_FILES_FILES_H_
#define TEMVAR_PLATFORM_POSIX_FILES_FILES_H_

#include "platform/posix/win32_types.h"

union ULARGE_INTEGER {
  ULONGLONG QuadPart;
};

// Copies a file with its permissions and its last-write time. A file that exists is replaced:
// `failIfExists` must be FALSE. Copying a file onto itself fails with ERROR_SHARING_VIOLATION and
// leaves it alone.
BOOL CopyFileW(LPCWSTR source, LPCWSTR destination, BOOL failIfExists);

// Renames a file or a directory; an existing destination fails with ERROR_ALREADY_EXISTS. A file,
// though no directory, can go to another file system.
BOOL MoveFileW(LPCWSTR source, LPCWSTR destination);

// Deletes a file, or a link and not what it leads to. A directory is ERROR_ACCESS_DENIED.
BOOL DeleteFileW(LPCWSTR path);

// Makes one directory in one that exists.
BOOL CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES security);

// Free bytes of the file system that `directory` lies on; `total` and `free` must be null.
BOOL GetDiskFreeSpaceExW(LPCWSTR directory, ULARGE_INTEGER* freeToCaller, ULARGE_INTEGER* total,
                         ULARGE_INTEGER* free);

#endif  // TEMVAR_PLATFORM_POSIX_FILES_FILES_H_
