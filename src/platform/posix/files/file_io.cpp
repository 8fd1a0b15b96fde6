// What is done with an open file: bytes, position, times.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "platform/posix/errors.h"
#include "platform/posix/files/file_handle.h"
#include "platform/posix/files/files.h"

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
  const bool is_open = error == EBADF && fcntl(descriptor, F_GETFD) >= 0;
  SetLastError(is_open ? ERROR_ACCESS_DENIED : ErrorFromErrno(error));
}

}  // namespace

FILETIME FileTimeOf(const timespec& time) {
  const int64_t seconds = static_cast<int64_t>(time.tv_sec) + kSecondsFrom1601To1970;
  const auto ticks = static_cast<uint64_t>(seconds * kTicksPerSecond + time.tv_nsec / 100);
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

}  // namespace temvar::posix

using temvar::posix::DescriptorOfHandle;
using temvar::posix::SetLastErrorFromErrno;

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, DWORD* read, void* /*overlapped*/) {
  const int descriptor = DescriptorOfHandle(file);
  DWORD done = 0;
  while (done < size) {
    const ssize_t count = ::read(descriptor, static_cast<char*>(buffer) + done, size - done);
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

BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position, DWORD method) {
  if (method > FILE_END) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  constexpr int kOrigins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
  const off_t result = lseek(DescriptorOfHandle(file), distance.QuadPart, kOrigins[method]);
  if (result < 0) {
    // The kernel calls a position before the start an invalid argument.
    if (errno == EINVAL) {
      SetLastError(ERROR_NEGATIVE_SEEK);
    } else {
      SetLastErrorFromErrno();
    }
    return FALSE;
  }
  if (position != nullptr) position->QuadPart = result;
  return TRUE;
}

DWORD SetFilePointer(HANDLE file, LONG distance, LONG* high, DWORD method) {
  LARGE_INTEGER wanted{distance};
  if (high != nullptr) {
    const uint64_t upper = static_cast<uint32_t>(*high);
    wanted.QuadPart = static_cast<int64_t>((upper << 32) | static_cast<uint32_t>(distance));
  }
  LARGE_INTEGER position;
  if (!SetFilePointerEx(file, wanted, &position, method)) return INVALID_SET_FILE_POINTER;
  if (high != nullptr) *high = static_cast<LONG>(position.QuadPart >> 32);
  SetLastError(ERROR_SUCCESS);
  return static_cast<DWORD>(position.QuadPart);
}

BOOL GetFileTime(HANDLE file, FILETIME* creation, FILETIME* access, FILETIME* write) {
  struct stat info;
  if (fstat(DescriptorOfHandle(file), &info) != 0) {
    SetLastErrorFromErrno();
    return FALSE;
  }
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
