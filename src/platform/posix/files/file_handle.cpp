#include "platform/posix/files/file_handle.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix/errors.h"
#include "platform/posix/files/files.h"
#include "platform/posix/files/path.h"

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

// The disposition of CreateFileW as flags of open(); -1 for an unknown one.
int FlagsOfDisposition(DWORD disposition) {
  switch (disposition) {
    case CREATE_NEW:
      return O_CREAT | O_EXCL;
    case CREATE_ALWAYS:
      return O_CREAT | O_TRUNC;
    case OPEN_EXISTING:
      return 0;
    case OPEN_ALWAYS:
      return O_CREAT;
    case TRUNCATE_EXISTING:
      return O_TRUNC;
    default:
      return -1;
  }
}

int FlagsOfAccess(DWORD access) {
  if ((access & GENERIC_WRITE) == 0) return O_RDONLY;
  return (access & GENERIC_READ) == 0 ? O_WRONLY : O_RDWR;
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

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES /*security*/,
                   DWORD disposition, DWORD flags, HANDLE /*template_file*/) {
  using namespace temvar::posix;
  const int disposition_flags = FlagsOfDisposition(disposition);
  if (disposition_flags < 0) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return INVALID_HANDLE_VALUE;
  }
  const NarrowPath narrow(path);
  if (!narrow.ok()) return INVALID_HANDLE_VALUE;
  const bool tells_existence = disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
  const bool existed = tells_existence && ::access(narrow.c_str(), F_OK) == 0;
  const Sharing sharing = share == 0 ? Sharing::kAlone : Sharing::kTogether;
  const int descriptor =
      OpenFile(narrow.c_str(), FlagsOfAccess(access) | disposition_flags, sharing);
  if (descriptor < 0) {
    if (errno == EEXIST) {
      SetLastError(ERROR_FILE_EXISTS);
    } else {
      SetLastErrorForPath(narrow);
    }
    return INVALID_HANDLE_VALUE;
  }
  if ((flags & FILE_FLAG_SEQUENTIAL_SCAN) != 0) {
    posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
  }
  SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
  return HandleOfDescriptor(descriptor);
}

BOOL CloseHandle(HANDLE handle) {
  if (close(temvar::posix::DescriptorOfHandle(handle)) == 0) return TRUE;
  temvar::posix::SetLastErrorFromErrno();
  return FALSE;
}
