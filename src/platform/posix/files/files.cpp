#include "platform/posix/files/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/posix/errors.h"
#include "platform/posix/files/file_handle.h"
#include "platform/posix/files/narrow_path.h"

namespace {

using temvar::posix::NarrowPath;
using temvar::posix::SetLastErrorForPath;
using temvar::posix::SetLastErrorFromErrno;
using temvar::posix::Sharing;

// A descriptor that closes itself and keeps errno.
class Descriptor {
 public:
  Descriptor(const char* path, int flags)
      : value_(temvar::posix::OpenFile(path, flags, Sharing::kTogether)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    const int error = errno;
    if (value_ >= 0) close(value_);
    errno = error;
  }

  int get() const { return value_; }

 private:
  const int value_;
};

// Moves bytes from one file to the other with a buffer, for what the kernel can't copy by itself.
bool PumpBytes(int from, int to) {
  char buffer[64 * 1024];
  for (;;) {
    const ssize_t count = read(from, buffer, sizeof(buffer));
    if (count == 0) return true;
    if (count < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    for (ssize_t done = 0; done < count;) {
      const ssize_t written = write(to, buffer + done, static_cast<size_t>(count - done));
      if (written < 0 && errno != EINTR) return false;
      if (written > 0) done += written;
    }
  }
}

bool CopyBytes(int from, int to) {
  constexpr size_t kChunk = size_t{1} << 30;
  ssize_t count;
  do {
    count = copy_file_range(from, nullptr, to, nullptr, kChunk, 0);
  } while (count > 0 || (count < 0 && errno == EINTR));
  // The end as the kernel sees it may be no end: files of /proc have no size. The pump goes on from
  // where the kernel stopped, and copes with a pair of file systems that the kernel can't serve.
  return PumpBytes(from, to);
}

// Copies contents, permissions and last-write time; errno on failure.
bool CopyOpenFiles(int from, const struct stat& info, int to) {
  if (ftruncate(to, 0) != 0 && errno != EINVAL) return false;
  if (!CopyBytes(from, to)) return false;
  const timespec times[] = {{0, UTIME_OMIT}, info.st_mtim};
  // The bytes are what counts: some file systems know neither permissions nor times.
  (void)!fchmod(to, info.st_mode & 0777);
  (void)!futimens(to, times);
  return true;
}

// Copies a file over another one or, if `exclusive`, to a new one only.
BOOL CopyOneFile(const NarrowPath& source, const NarrowPath& destination, bool exclusive) {
  const Descriptor from(source.c_str(), O_RDONLY);
  struct stat from_info;
  if (from.get() < 0 || fstat(from.get(), &from_info) != 0) {
    SetLastErrorForPath(source);
    return FALSE;
  }
  // Not emptied before it is known to be another file than the source.
  const Descriptor to(destination.c_str(), O_WRONLY | O_CREAT | (exclusive ? O_EXCL : 0));
  struct stat to_info;
  if (to.get() < 0 || fstat(to.get(), &to_info) != 0) {
    if (errno == EEXIST) {
      SetLastError(ERROR_FILE_EXISTS);
    } else {
      SetLastErrorForPath(destination);
    }
    return FALSE;
  }
  if (from_info.st_dev == to_info.st_dev && from_info.st_ino == to_info.st_ino) {
    SetLastError(ERROR_SHARING_VIOLATION);
    return FALSE;
  }
  if (CopyOpenFiles(from.get(), from_info, to.get())) return TRUE;
  SetLastErrorFromErrno();
  return FALSE;
}

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
  return rename(source, destination) == 0;
}

// The second way of MoveFileW: to another file system.
BOOL MoveByCopy(const NarrowPath& source, const NarrowPath& destination) {
  struct stat info;
  if (lstat(source.c_str(), &info) == 0 && !S_ISREG(info.st_mode)) {
    SetLastError(ERROR_NOT_SAME_DEVICE);
    return FALSE;
  }
  if (!CopyOneFile(source, destination, true)) {
    // A half copy must not stay; a file that was there before is not ours.
    const DWORD error = GetLastError();
    if (error != ERROR_FILE_EXISTS) unlink(destination.c_str());
    SetLastError(error == ERROR_FILE_EXISTS ? ERROR_ALREADY_EXISTS : error);
    return FALSE;
  }
  if (unlink(source.c_str()) == 0) return TRUE;
  SetLastErrorFromErrno();
  unlink(destination.c_str());
  return FALSE;
}

}  // namespace

BOOL CopyFileW(LPCWSTR source, LPCWSTR destination, BOOL fail_if_exists) {
  const NarrowPath from(source);
  if (!from.ok()) return FALSE;
  const NarrowPath to(destination);
  if (!to.ok()) return FALSE;
  return CopyOneFile(from, to, fail_if_exists != FALSE);
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
  const bool source_exists = lstat(from.c_str(), &info) == 0;
  errno = error;
  SetLastErrorForPath(source_exists ? to : from);
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

BOOL GetDiskFreeSpaceExW(LPCWSTR directory, ULARGE_INTEGER* free_to_caller, ULARGE_INTEGER* total,
                         ULARGE_INTEGER* free) {
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
  const ULONGLONG unit = space.f_frsize;
  if (free_to_caller != nullptr) free_to_caller->QuadPart = space.f_bavail * unit;
  if (total != nullptr) total->QuadPart = space.f_blocks * unit;
  if (free != nullptr) free->QuadPart = space.f_bfree * unit;
  return TRUE;
}
