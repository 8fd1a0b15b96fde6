#include "platform/posix/files/file_handle.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace temvar::posix {
namespace {

// The handles of this layer exclude each other by flock(). Other programs lock files that way for
// purposes of their own, and must not make reads of them fail. So each handle also marks a byte
// beyond all content, with a kind of lock that nobody else puts there.
struct flock Mark(short type) {
  struct flock mark = {};
  mark.l_type = type;
  mark.l_whence = SEEK_SET;
  mark.l_start = INT64_MAX - 1;
  mark.l_len = 1;
  return mark;
}

void SetMark(int descriptor, int flags) {
  // A write lock where the descriptor allows no other: of several such handles one has the mark.
  struct flock mark = Mark((flags & O_ACCMODE) == O_WRONLY ? F_WRLCK : F_RDLCK);
  fcntl(descriptor, F_OFD_SETLK, &mark);
}

// Whether another handle of this layer has the file open.
bool IsMarked(int descriptor) {
  struct flock mark = Mark(F_WRLCK);
  return fcntl(descriptor, F_OFD_GETLK, &mark) == 0 && mark.l_type != F_UNLCK && mark.l_pid == -1;
}

// Locks and empties a freshly opened file as `flags` and `sharing` ask.
bool PrepareFile(int descriptor, int flags, Sharing sharing) {
  struct stat info;
  if (fstat(descriptor, &info) != 0) return false;
  if (S_ISDIR(info.st_mode)) {
    errno = EISDIR;
    return false;
  }
  // Pipes and devices are opened without waiting, and read and written with it.
  if (!S_ISREG(info.st_mode)) return fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK) == 0;
  // The mark comes first, so that whoever sees the lock sees the mark.
  SetMark(descriptor, flags);
  const int lock = sharing == Sharing::kAlone ? LOCK_EX : LOCK_SH;
  if (flock(descriptor, lock | LOCK_NB) != 0 && errno == EWOULDBLOCK && IsMarked(descriptor)) {
    errno = EWOULDBLOCK;
    return false;
  }
  // Emptied only now: a file that is refused must keep its contents.
  return (flags & O_TRUNC) == 0 || ftruncate(descriptor, 0) == 0;
}

}  // namespace

int OpenFile(const char* path, int flags, Sharing sharing) {
  int descriptor;
  do {
    // Without O_NONBLOCK a pipe that nobody writes to would hold the caller for ever.
    descriptor = open(path, (flags & ~O_TRUNC) | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
  } while (descriptor < 0 && errno == EINTR);
  if (descriptor < 0) return -1;
  if (PrepareFile(descriptor, flags, sharing)) return descriptor;
  const int error = errno;
  close(descriptor);
  // An exclusive file is this call's own and must not stay, unless another has taken it since.
  if ((flags & O_EXCL) != 0 && error != EWOULDBLOCK) unlink(path);
  errno = error;
  return -1;
}

}  // namespace temvar::posix
