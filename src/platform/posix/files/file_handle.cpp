#include "platform/posix/files/file_handle.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace temvar::posix {
namespace {

// Closes without touching errno.
void CloseQuietly(int descriptor) {
  const int error = errno;
  close(descriptor);
  errno = error;
}

// Locks and empties a freshly opened file as `flags` and `sharing` ask.
bool PrepareFile(int descriptor, int flags, Sharing sharing) {
  struct stat info;
  if (fstat(descriptor, &info) != 0) return false;
  if (S_ISDIR(info.st_mode)) {
    errno = EISDIR;
    return false;
  }
  if (!S_ISREG(info.st_mode)) return true;
  const int lock = sharing == Sharing::kAlone ? LOCK_EX : LOCK_SH;
  // A file system without locks is no reason to refuse a file.
  if (flock(descriptor, lock | LOCK_NB) != 0 && errno == EWOULDBLOCK) return false;
  return (flags & O_TRUNC) == 0 || ftruncate(descriptor, 0) == 0;
}

}  // namespace

int OpenFile(const char* path, int flags, Sharing sharing) {
  int descriptor;
  do {
    descriptor = open(path, (flags & ~O_TRUNC) | O_CLOEXEC | O_NOCTTY, 0666);
  } while (descriptor < 0 && errno == EINTR);
  if (descriptor < 0) return -1;
  if (PrepareFile(descriptor, flags, sharing)) return descriptor;
  CloseQuietly(descriptor);
  return -1;
}

}  // namespace temvar::posix
