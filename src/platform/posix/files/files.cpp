#include "platform/posix/files/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/posix/errors.h"
#include "platform/posix/files/copy_file.h"
#include "platform/posix/files/narrow_path.h"

namespace {

using temvar::posix::Copied;
using temvar::posix::CopyOneFile;
using temvar::posix::NarrowPath;
using temvar::posix::SetLastErrorForPath;
using temvar::posix::SetLastErrorFromErrno;

// rename() that refuses an existing destination; errno on failure.
bool RenameToFreeName(const char* source, const char* destination) {
  if (renameat2(AT_FDCWD, source, AT_FDCWD, destination, RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // A file system without that flag. The test and the renaming are two steps there.
  struct stat info;
  if (lstat(destination, &info) == 0) {
    errno = EEXIST;
    return false;
  }
  // What can't be looked at may be there.
  if (errno != ENOENT) return false;
  return rename(source, destination) == 0;
}

// Sets the last error for a copy that failed.
void SetLastErrorForCopy(Copied copied, const NarrowPath& source, const NarrowPath& destination) {
  if (copied == Copied::kNoSource) {
    SetLastErrorForPath(source);
  } else if (copied == Copied::kOntoItself) {
    SetLastError(ERROR_SHARING_VIOLATION);
  } else {
    SetLastErrorForPath(destination);
  }
}

// The second way of MoveFileW: to another file system.
BOOL MoveByCopy(const NarrowPath& source, const NarrowPath& destination) {
  struct stat info;
  if (lstat(source.c_str(), &info) != 0) {
    SetLastErrorForPath(source);
    return FALSE;
  }
  // Folders don't move to another drive on Windows either.
  if (!S_ISREG(info.st_mode)) {
    SetLastError(ERROR_NOT_SAME_DEVICE);
    return FALSE;
  }
  const Copied copied = CopyOneFile(source.c_str(), destination.c_str(), true);
  if (copied != Copied::kWhole) {
    SetLastErrorForCopy(copied, source, destination);
    // A half copy of our own must not stay; whatever else has that name is not ours.
    if (copied == Copied::kPart) unlink(destination.c_str());
    return FALSE;
  }
  if (unlink(source.c_str()) == 0) return TRUE;
  // A move that leaves the source is none, so the copy goes. The error code is the source's.
  SetLastErrorFromErrno();
  unlink(destination.c_str());
  return FALSE;
}

}  // namespace

BOOL CopyFileW(LPCWSTR source, LPCWSTR destination, BOOL /*failIfExists*/) {
  const NarrowPath from(source);
  if (!from.ok()) return FALSE;
  const NarrowPath to(destination);
  if (!to.ok()) return FALSE;
  const Copied copied = CopyOneFile(from.c_str(), to.c_str(), false);
  if (copied == Copied::kWhole) return TRUE;
  SetLastErrorForCopy(copied, from, to);
  return FALSE;
}

BOOL MoveFileW(LPCWSTR source, LPCWSTR destination) {
  const NarrowPath from(source);
  if (!from.ok()) return FALSE;
  const NarrowPath to(destination);
  if (!to.ok()) return FALSE;
  if (RenameToFreeName(from.c_str(), to.c_str())) return TRUE;
  if (errno == EXDEV) return MoveByCopy(from, to);
  // A missing path is the destination's folder if the source is there.
  const int error = errno;
  struct stat info;
  const bool sourceExists = lstat(from.c_str(), &info) == 0;
  errno = error;
  SetLastErrorForPath(sourceExists ? to : from);
  return FALSE;
}

BOOL DeleteFileW(LPCWSTR path) {
  const NarrowPath narrow(path);
  if (!narrow.ok()) return FALSE;
  if (unlink(narrow.c_str()) == 0) return TRUE;
  SetLastErrorForPath(narrow);
  return FALSE;
}

BOOL CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES /*security*/) {
  const NarrowPath narrow(path);
  if (!narrow.ok()) return FALSE;
  if (mkdir(narrow.c_str(), 0777) == 0) return TRUE;
  SetLastErrorForPath(narrow);
  return FALSE;
}

BOOL GetDiskFreeSpaceExW(LPCWSTR directory, ULARGE_INTEGER* freeToCaller, ULARGE_INTEGER* /*total*/,
                         ULARGE_INTEGER* /*free*/) {
  const NarrowPath narrow(directory);
  if (!narrow.ok()) return FALSE;
  struct stat info;
  struct statvfs space;
  if (stat(narrow.c_str(), &info) != 0 || statvfs(narrow.c_str(), &space) != 0) {
    SetLastErrorForPath(narrow);
    return FALSE;
  }
  if (!S_ISDIR(info.st_mode)) {
    SetLastError(ERROR_DIRECTORY);
    return FALSE;
  }
  // f_bavail and not f_bfree: without the blocks reserved for root, like a quota on Windows.
  freeToCaller->QuadPart = space.f_bavail * ULONGLONG{space.f_frsize};
  return TRUE;
}
