// How the stand-in opens files and what its file handles are.
#ifndef TEMVAR_PLATFORM_POSIX_FILES_FILE_HANDLE_H_
#define TEMVAR_PLATFORM_POSIX_FILES_FILE_HANDLE_H_

#include "platform/posix/win32_types.h"

struct stat;
struct timespec;

namespace temvar::posix {

// A file handle is its descriptor plus 1, so that no handle is null.
inline HANDLE HandleOfDescriptor(int descriptor) {
  return reinterpret_cast<HANDLE>(static_cast<intptr_t>(descriptor) + 1);
}

// The descriptor of a handle, -1 for null and other values that are none.
inline int DescriptorOfHandle(HANDLE handle) {
  const auto value = reinterpret_cast<intptr_t>(handle);
  return value > 0 && value <= INT32_MAX ? static_cast<int>(value - 1) : -1;
}

enum class Sharing { kAlone, kTogether };

// open() for this layer: never inherited, no directory (EISDIR), and locked for `sharing`
// (EWOULDBLOCK if the sharing of another handle of this layer forbids it). A file is emptied for
// O_TRUNC only once the lock is held. Opening a pipe never waits: it reads as empty as long as
// nobody writes to it. -1 with errno on failure. Safe in a signal handler.
int OpenFile(const char* path, int flags, Sharing sharing);

FILETIME FileTimeOf(const timespec& time);

}  // namespace temvar::posix

#endif  // TEMVAR_PLATFORM_POSIX_FILES_FILE_HANDLE_H_
