// Owners of what the file functions of the system and of the runtime return: closed on every way
// out.
#ifndef TEMVAR_UTILITIES_FILE_OWNED_HANDLES_H_
#define TEMVAR_UTILITIES_FILE_OWNED_HANDLES_H_

#include <cstdio>
#include <memory>

#include "platform/win32.h"
#include "temvar/types.h"

namespace temvar {

// A handle of CreateFileW.
class FileHandle {
 public:
  explicit FileHandle(HANDLE handle) : handle_(handle) {}
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
      : handle_(FindFirstFileW(pattern, data)) {}
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

}  // namespace temvar

#endif  // TEMVAR_UTILITIES_FILE_OWNED_HANDLES_H_
