// Open files: handles, bytes, position, times.
//
// Sharing. The kernel has no share modes, so that each open file carries an advisory lock instead:
// a handle opened without sharing (share mode 0) is alone, and opening a file that is open already
// fails with ERROR_SHARING_VIOLATION, and so does opening a file that such a handle holds. Handles
// with any other share mode, and streams, go together. Locks of programs that don't use this
// surface are ignored, and an open file can be deleted and moved.
#ifndef TEMVAR_PLATFORM_POSIX_FILES_FILE_IO_H_
#define TEMVAR_PLATFORM_POSIX_FILES_FILE_IO_H_

#include "platform/posix/win32_types.h"

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;

inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;
inline constexpr DWORD FILE_SHARE_DELETE = 4;

inline constexpr DWORD CREATE_ALWAYS = 2;  // Makes the file, or empties one that exists.
inline constexpr DWORD OPEN_EXISTING = 3;

inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_FLAG_SEQUENTIAL_SCAN = 0x08000000;

inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;

// Opens or makes a file. Safe in a signal handler. A directory can't be opened
// (ERROR_ACCESS_DENIED); a missing file is ERROR_FILE_NOT_FOUND, a missing folder
// ERROR_PATH_NOT_FOUND. `security` and `templateFile` are ignored; of `flags` only
// FILE_FLAG_SEQUENTIAL_SCAN has an effect. Child programs don't inherit the file.
HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD flags, HANDLE templateFile);

// Reads `size` bytes, fewer only at the end of the file: there the result is TRUE with 0 bytes.
// `overlapped` must be null.
BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, DWORD* read, void* overlapped);

// Writes all `size` bytes or fails; `written` is set to how many were written. Safe in a signal
// handler.
BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, DWORD* written, void* overlapped);

// Closes a handle of CreateFileW. Safe in a signal handler.
BOOL CloseHandle(HANDLE handle);

// Moves the position of `file`; `high` is the upper half of the distance and of the new position,
// or null for distances of 32 bits. The result is the lower half of the new position. It can equal
// INVALID_SET_FILE_POINTER without a failure: the last error is then ERROR_SUCCESS.
DWORD SetFilePointer(HANDLE file, LONG distance, LONG* high, DWORD method);

// The times of an open file. The kernel keeps no creation time that can be set, so that the
// last-write time takes its place: GetFileTime reports it, and setting the creation time alone has
// no effect. A time that is null or 0 is left unchanged.
BOOL GetFileTime(HANDLE file, FILETIME* creation, FILETIME* access, FILETIME* write);
BOOL SetFileTime(HANDLE file, const FILETIME* creation, const FILETIME* access,
                 const FILETIME* write);

#endif  // TEMVAR_PLATFORM_POSIX_FILES_FILE_IO_H_
