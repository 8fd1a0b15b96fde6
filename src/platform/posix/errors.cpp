#include "platform/posix/errors.h"

#include <cerrno>

namespace {
constinit thread_local DWORD lastError = ERROR_SUCCESS;
}  // namespace

DWORD GetLastError() { return lastError; }

void SetLastError(DWORD code) { lastError = code; }

namespace temvar::posix {

// ENOENT is a missing file here; SetLastErrorForPath looks whether its folder is missing instead.
// EISDIR is refused access, which is how Windows answers to a folder in a file's place.
DWORD ErrorFromErrno(int error) {
  switch (error) {
    case 0:
      return ERROR_SUCCESS;
    case ENOENT:
      return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
      return ERROR_PATH_NOT_FOUND;
    case EMFILE:
    case ENFILE:
      return ERROR_TOO_MANY_OPEN_FILES;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
      return ERROR_ACCESS_DENIED;
    case EBADF:
      return ERROR_INVALID_HANDLE;
    case ENOMEM:
      return ERROR_NOT_ENOUGH_MEMORY;
    case ETXTBSY:
    case EBUSY:
    case EWOULDBLOCK:
      return ERROR_SHARING_VIOLATION;
    case EEXIST:
      return ERROR_ALREADY_EXISTS;
    case ENOTEMPTY:
      return ERROR_DIR_NOT_EMPTY;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return ERROR_DISK_FULL;
    case EINVAL:
      return ERROR_INVALID_PARAMETER;
    case ENAMETOOLONG:
      return ERROR_FILENAME_EXCED_RANGE;
    case ELOOP:
      return ERROR_CANT_RESOLVE_FILENAME;
    case EXDEV:
      return ERROR_NOT_SAME_DEVICE;
    case EILSEQ:
      return ERROR_INVALID_NAME;
    case ENOSYS:
    case EOPNOTSUPP:
      return ERROR_NOT_SUPPORTED;
    case EIO:
      return ERROR_READ_FAULT;
    default:
      return ERROR_GEN_FAILURE;
  }
}

void SetLastErrorFromErrno() { SetLastError(ErrorFromErrno(errno)); }

}  // namespace temvar::posix
