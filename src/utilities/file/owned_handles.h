// Owners of what the file functions of the system and of the runtime return: closed on every way
// out. Where the system lacked memory, opening throws std::bad_alloc: "can't be opened" would be
// read as a file that isn't there.
#ifndef TEMVAR_UTILITIES_FILE_OWNED_HANDLES_H_
#define TEMVAR_UTILITIES_FILE_OWNED_HANDLES_H_

#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>

#include "platform/win32.h"
#include "temvar/types.h"

namespace temvar {

// For a handle that the system has just refused.
inline void ThrowIfNoMemory(bool isOpen) {
  if (!isOpen && GetLastError() == ERROR_NOT_ENOUGH_MEMORY) throw std::bad_alloc();
}

// A handle of CreateFileW.
class FileHandle {
 public:
  explicit FileHandle(HANDLE handle) : handle_(handle) { ThrowIfNoMemory(IsOpen()); }
  ~FileHandle() {
    if (IsOpen()) CloseHandle(handle_);
  }
  FileHandle(const FileHandle&) = delete;
  FileHandle& operator=(const FileHandle&) = delete;

  bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE get() const { return handle_; }

 private:
  const HANDLE handle_;
};

// A handle of FindFirstFileW, which is called with these arguments.
class FindHandle {
 public:
  FindHandle(const TmvWideChar* pattern, WIN32_FIND_DATAW* data)
      : handle_(FindFirstFileW(pattern, data)) {
    ThrowIfNoMemory(IsOpen());
  }
  ~FindHandle() {
    if (IsOpen()) FindClose(handle_);
  }
  FindHandle(const FindHandle&) = delete;
  FindHandle& operator=(const FindHandle&) = delete;

  // False if nothing was found.
  bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE get() const { return handle_; }

 private:
  const HANDLE handle_;
};

// The result of fclose is lost, so a writer must not leave bytes in the buffer for it.
struct CloseStream {
  void operator()(FILE* stream) const noexcept { std::fclose(stream); }
};

// A stream of fopen and its kin.
using Stream = std::unique_ptr<FILE, CloseStream>;

// What fopen or its kin has just returned.
inline FILE* Opened(FILE* stream) {
  if (stream == nullptr && errno == ENOMEM) throw std::bad_alloc();
  return stream;
}

}  // namespace temvar

#endif  // TEMVAR_UTILITIES_FILE_OWNED_HANDLES_H_
