#include "platform/posix/files/file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "platform/posix/errors.h"
#include "platform/posix/files/file_handle.h"
#include "platform/posix/files/narrow_path.h"

namespace temvar::posix {
namespace {

constexpr int64_t kTicksPerSecond = 10'000'000;
constexpr int64_t kSecondsFrom1601To1970 = 11'644'473'600;

// A time for futimens; a null or zero one is left as it is.
timespec TimeToSet(const FILETIME* time) {
  timespec result{0, UTIME_OMIT};
  if (time == nullptr) return result;
  const uint64_t ticks = (uint64_t{time->dwHighDateTime} << 32) | time->dwLowDateTime;
  if (ticks == 0) return result;
  const uint64_t seconds = ticks / static_cast<uint64_t>(kTicksPerSecond);
  const uint64_t rest = ticks % static_cast<uint64_t>(kTicksPerSecond);
  result.tv_sec = static_cast<int64_t>(seconds) - kSecondsFrom1601To1970;
  result.tv_nsec = static_cast<long>(rest * 100);
  return result;
}

// Sets the last error for a read or write that failed. The kernel calls a descriptor that isn't
// open for it bad, as if it were closed.
void SetLastErrorForTransfer(int descriptor) {
  const int error = errno;
  const bool isOpen = error == EBADF && fcntl(descriptor, F_GETFD) >= 0;
  SetLastError(isOpen ? ERROR_ACCESS_DENIED : ErrorFromErrno(error));
}

}  // namespace

FILETIME FileTimeOf(const timespec& time) {
  const int64_t seconds = static_cast<int64_t>(time.tv_sec) + kSecondsFrom1601To1970;
  const auto ticks = static_cast<uint64_t>(seconds * kTicksPerSecond + time.tv_nsec / 100);
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

}  // namespace temvar::posix

using temvar::posix::DescriptorOfHandle;
using temvar::posix::HandleOfDescriptor;
using temvar::posix::NarrowPath;
using temvar::posix::OpenFile;
using temvar::posix::SetLastErrorForPath;
using temvar::posix::SetLastErrorFromErrno;
using temvar::posix::Sharing;

namespace {

int FlagsOfAccess(DWORD access) {
  if ((access & GENERIC_WRITE) == 0) return O_RDONLY;
  return (access & GENERIC_READ) == 0 ? O_WRONLY : O_RDWR;
}

}  // namespace

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES /*security*/,
                   DWORD disposition, DWORD flags, HANDLE /*templateFile*/) {
  if (disposition != CREATE_ALWAYS && disposition != OPEN_EXISTING) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return INVALID_HANDLE_VALUE;
  }
  const NarrowPath narrow(path);
  if (!narrow.ok()) return INVALID_HANDLE_VALUE;
  const int dispositionFlags = disposition == CREATE_ALWAYS ? O_CREAT | O_TRUNC : 0;
  const Sharing sharing = share == 0 ? Sharing::kAlone : Sharing::kTogether;
  const int descriptor =
      OpenFile(narrow.c_str(), FlagsOfAccess(access) | dispositionFlags, sharing);
  if (descriptor < 0) {
    SetLastErrorForPath(narrow);
    return INVALID_HANDLE_VALUE;
  }
  if ((flags & FILE_FLAG_SEQUENTIAL_SCAN) != 0) {
    posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
  }
  return HandleOfDescriptor(descriptor);
}

BOOL CloseHandle(HANDLE handle) {
  if (close(DescriptorOfHandle(handle)) == 0) return TRUE;
  SetLastErrorFromErrno();
  return FALSE;
}

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, DWORD* read, void* /*overlapped*/) {
  const int descriptor = DescriptorOfHandle(file);
  DWORD done = 0;
  while (done < size) {
    const ssize_t count = ::read(descriptor, static_cast<char*>(buffer) + done, size - done);
    // The end of the file is a success with fewer bytes, as on Windows.
    if (count == 0) break;
    if (count < 0) {
      if (errno == EINTR) continue;
      temvar::posix::SetLastErrorForTransfer(descriptor);
      if (read != nullptr) *read = done;
      return FALSE;
    }
    done += static_cast<DWORD>(count);
  }
  if (read != nullptr) *read = done;
  return TRUE;
}

BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, DWORD* written, void* /*overlapped*/) {
  const int descriptor = DescriptorOfHandle(file);
  DWORD done = 0;
  while (done < size) {
    const ssize_t count = write(descriptor, static_cast<const char*>(buffer) + done, size - done);
    if (count < 0) {
      if (errno == EINTR) continue;
      temvar::posix::SetLastErrorForTransfer(descriptor);
      if (written != nullptr) *written = done;
      return FALSE;
    }
    done += static_cast<DWORD>(count);
  }
  if (written != nullptr) *written = done;
  return TRUE;
}

DWORD SetFilePointer(HANDLE file, LONG distance, LONG* high, DWORD method) {
  if (method > FILE_END) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return INVALID_SET_FILE_POINTER;
  }
  off_t wanted = distance;
  if (high != nullptr) {
    const uint64_t upper = static_cast<uint32_t>(*high);
    wanted = static_cast<off_t>((upper << 32) | static_cast<uint32_t>(distance));
  }
  constexpr int kOrigins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
  const off_t position = lseek(DescriptorOfHandle(file), wanted, kOrigins[method]);
  if (position < 0) {
    // The kernel reports a position before the start as an invalid argument.
    SetLastError(errno == EINVAL ? ERROR_NEGATIVE_SEEK : temvar::posix::ErrorFromErrno(errno));
    return INVALID_SET_FILE_POINTER;
  }
  if (high != nullptr) *high = static_cast<LONG>(position >> 32);
  // The low half may equal the value for failure: callers then ask for the error code.
  SetLastError(ERROR_SUCCESS);
  return static_cast<DWORD>(position);
}

BOOL GetFileTime(HANDLE file, FILETIME* creation, FILETIME* access, FILETIME* write) {
  struct stat info;
  if (fstat(DescriptorOfHandle(file), &info) != 0) {
    SetLastErrorFromErrno();
    return FALSE;
  }
  // File systems of Linux have no creation time that can be set, so the last-write time serves.
  if (creation != nullptr) *creation = temvar::posix::FileTimeOf(info.st_mtim);
  if (access != nullptr) *access = temvar::posix::FileTimeOf(info.st_atim);
  if (write != nullptr) *write = temvar::posix::FileTimeOf(info.st_mtim);
  return TRUE;
}

BOOL SetFileTime(HANDLE file, const FILETIME* /*creation*/, const FILETIME* access,
                 const FILETIME* write) {
  const timespec times[] = {temvar::posix::TimeToSet(access), temvar::posix::TimeToSet(write)};
  if (futimens(DescriptorOfHandle(file), times) == 0) return TRUE;
  SetLastErrorFromErrno();
  return FALSE;
}
