// The file surface of Windows and of its C runtime, as far as the library calls it.
//
// Paths are UTF-16 and may use `\` and `/` alike; a leading drive letter is dropped. A path longer
// than PATH_MAX fails with ERROR_FILENAME_EXCED_RANGE. Unless a line says otherwise, an operation
// tells failure by FALSE or INVALID_HANDLE_VALUE and leaves the reason in GetLastError. Every
// operation may be called from any thread.
//
// Sharing. The kernel has no share modes, so that each open file carries an advisory lock instead:
// a handle opened without sharing (share mode 0) is alone, and opening a file that is open already
// fails with ERROR_SHARING_VIOLATION, and so does opening a file that such a handle holds. Handles
// with any other share mode, and streams, go together. What never went through this surface is not
// seen, and an open file can be deleted and moved.
#ifndef TEMVAR_PLATFORM_POSIX_FILES_FILES_H_
#define TEMVAR_PLATFORM_POSIX_FILES_FILES_H_

#include <cstdio>

#include "platform/posix/types.h"

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;

inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;
inline constexpr DWORD FILE_SHARE_DELETE = 4;

inline constexpr DWORD CREATE_NEW = 1;     // Fails with ERROR_FILE_EXISTS if the file exists.
inline constexpr DWORD CREATE_ALWAYS = 2;  // Empties a file that exists.
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;        // Makes the file if it is missing.
inline constexpr DWORD TRUNCATE_EXISTING = 5;  // Empties a file that must exist.

inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_ARCHIVE = 0x20;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400;
inline constexpr DWORD FILE_FLAG_SEQUENTIAL_SCAN = 0x08000000;

inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;

inline constexpr size_t MAX_PATH = 260;

union LARGE_INTEGER {
  LONGLONG QuadPart;
};

union ULARGE_INTEGER {
  ULONGLONG QuadPart;
};

// Opens or makes a file. Safe in a signal handler. A directory can't be opened
// (ERROR_ACCESS_DENIED); a missing file is ERROR_FILE_NOT_FOUND, a missing folder
// ERROR_PATH_NOT_FOUND. When CREATE_ALWAYS and OPEN_ALWAYS meet an existing file the last error is
// ERROR_ALREADY_EXISTS although they succeed. `security` and `template_file` are ignored; of
// `flags` only FILE_FLAG_SEQUENTIAL_SCAN does something. Child programs don't inherit the file.
HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD flags, HANDLE template_file);

// Read `size` bytes, fewer only at the end of the file: there the result is TRUE with 0 bytes.
// `overlapped` must be null.
BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, DWORD* read, void* overlapped);

// Writes all `size` bytes or fails; `written` tells how many went out. Safe in a signal handler.
BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, DWORD* written, void* overlapped);

// Closes a handle of CreateFileW. Safe in a signal handler.
BOOL CloseHandle(HANDLE handle);

// Moves the position of `file`; `high` is the upper half of the distance and of the new position,
// or null for distances of 32 bits. The result is the lower half of the new position.
DWORD SetFilePointer(HANDLE file, LONG distance, LONG* high, DWORD method);
BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position, DWORD method);

// The times of an open file. The kernel keeps no creation time that can be set, so that the
// last-write time stands for it: it is what GetFileTime reports, and setting it alone does nothing.
// A time that is null or 0 is passed over.
BOOL GetFileTime(HANDLE file, FILETIME* creation, FILETIME* access, FILETIME* write);
BOOL SetFileTime(HANDLE file, const FILETIME* creation, const FILETIME* access,
                 const FILETIME* write);

// Copies a file with its permissions and its last-write time. A file that exists is replaced, or
// fails the call with ERROR_FILE_EXISTS if `fail_if_exists` is not 0. Copying a file onto itself
// fails with ERROR_SHARING_VIOLATION and leaves it alone.
BOOL CopyFileW(LPCWSTR source, LPCWSTR destination, BOOL fail_if_exists);

// Renames a file or a directory; an existing destination fails with ERROR_ALREADY_EXISTS. A file,
// though no directory, can go to another file system.
BOOL MoveFileW(LPCWSTR source, LPCWSTR destination);

// Deletes a file, or a link and not what it leads to. A directory is ERROR_ACCESS_DENIED.
BOOL DeleteFileW(LPCWSTR path);

// Makes one directory in one that exists.
BOOL CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES security);

// Bytes of the file system that `directory` lies on. Each result may be null.
BOOL GetDiskFreeSpaceExW(LPCWSTR directory, ULARGE_INTEGER* free_to_caller, ULARGE_INTEGER* total,
                         ULARGE_INTEGER* free);

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

// The next file; ERROR_NO_MORE_FILES behind the last one.
BOOL FindNextFileW(HANDLE find, WIN32_FIND_DATAW* data);
BOOL FindClose(HANDLE find);

// The C runtime. Failures are told by errno.

// Opens a stream with the mode of fopen. A directory fails with EACCES, a file that a handle
// without sharing holds with EACCES. Text mode changes no byte. Child programs don't inherit it.
FILE* _wfopen(LPCWSTR path, LPCWSTR mode);

// The same; streams deny nobody whatever `share` says.
inline constexpr int _SH_DENYNO = 0x40;
FILE* _wfsopen(LPCWSTR path, LPCWSTR mode, int share);

// 0 if the file or directory exists and allows `mode`: 0 existence, 2 writing, 4 reading, else -1.
int _waccess(LPCWSTR path, int mode);

int _fseeki64(FILE* stream, int64_t offset, int origin);
int64_t _ftelli64(FILE* stream);
int _fileno(FILE* stream);

// Cuts or extends a file with zeros; 0, or the error number, EINVAL for a negative size.
int _chsize_s(int descriptor, int64_t size);

// A copy of `text` on the heap, null if there is no memory.
char* _strdup(const char* text);

#endif  // TEMVAR_PLATFORM_POSIX_FILES_FILES_H_
