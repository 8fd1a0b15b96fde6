#include "platform/system_archive_files.h"

#include <new>

#include "platform/win32.h"

namespace temvar {

namespace {

struct ArchiveFile {
  HANDLE handle;
  DWORD error;  // Of the last failed call; 0 as long as none failed.
};

// The archive library asks for the error of a file after any number of calls, so the last failure
// is kept. A read at the end is none.
void Keep(ArchiveFile* file, DWORD error) {
  file->error = error == ERROR_HANDLE_EOF ? ERROR_SUCCESS : error;
}

voidpf Open(voidpf, const void* path, int mode) noexcept {
  DWORD access = 0;
  DWORD share = 0;
  DWORD disposition = 0;
  if ((mode & ZLIB_FILEFUNC_MODE_READWRITEFILTER) == ZLIB_FILEFUNC_MODE_READ) {
    access = GENERIC_READ;
    share = FILE_SHARE_READ;
    disposition = OPEN_EXISTING;
  } else if ((mode & ZLIB_FILEFUNC_MODE_EXISTING) != 0) {
    access = GENERIC_READ | GENERIC_WRITE;
    disposition = OPEN_EXISTING;
  } else if ((mode & ZLIB_FILEFUNC_MODE_CREATE) != 0) {
    access = GENERIC_READ | GENERIC_WRITE;
    disposition = CREATE_ALWAYS;
  }
  // A mode that is none of the three.
  if (path == nullptr || access == 0) return nullptr;
  const HANDLE handle = CreateFileW(static_cast<const TmvWideChar*>(path), access, share, nullptr,
                                    disposition, 0, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return nullptr;
  auto* file = new (std::nothrow) ArchiveFile{handle, ERROR_SUCCESS};
  if (file == nullptr) CloseHandle(handle);
  return file;
}

uLong Read(voidpf, voidpf stream, void* data, uLong size) noexcept {
  auto* file = static_cast<ArchiveFile*>(stream);
  DWORD moved = 0;
  if (!ReadFile(file->handle, data, static_cast<DWORD>(size), &moved, nullptr)) {
    Keep(file, GetLastError());
  }
  return moved;
}

uLong Write(voidpf, voidpf stream, const void* data, uLong size) noexcept {
  auto* file = static_cast<ArchiveFile*>(stream);
  DWORD moved = 0;
  if (!WriteFile(file->handle, data, static_cast<DWORD>(size), &moved, nullptr)) {
    Keep(file, GetLastError());
  }
  return moved;
}

// Moves the file's position and returns the new one; false if the system refuses.
bool Move(ArchiveFile* file, ZPOS64_T offset, DWORD method, ZPOS64_T* position) {
  auto high = static_cast<LONG>(static_cast<DWORD>(offset >> 32));
  const auto low = static_cast<LONG>(static_cast<DWORD>(offset));
  const DWORD moved = SetFilePointer(file->handle, low, &high, method);
  // The value is also a valid low half of a position: only the error code decides.
  if (moved == INVALID_SET_FILE_POINTER && GetLastError() != ERROR_SUCCESS) {
    Keep(file, GetLastError());
    return false;
  }
  *position = static_cast<ZPOS64_T>(static_cast<DWORD>(high)) << 32 | moved;
  return true;
}

ZPOS64_T Tell(voidpf, voidpf stream) noexcept {
  ZPOS64_T position = 0;
  if (!Move(static_cast<ArchiveFile*>(stream), 0, FILE_CURRENT, &position)) {
    return static_cast<ZPOS64_T>(-1);
  }
  return position;
}

long Seek(voidpf, voidpf stream, ZPOS64_T offset, int origin) noexcept {
  DWORD method = FILE_BEGIN;
  if (origin == ZLIB_FILEFUNC_SEEK_CUR) method = FILE_CURRENT;
  if (origin == ZLIB_FILEFUNC_SEEK_END) method = FILE_END;
  ZPOS64_T position = 0;
  return Move(static_cast<ArchiveFile*>(stream), offset, method, &position) ? 0 : -1;
}

int Close(voidpf, voidpf stream) noexcept {
  auto* file = static_cast<ArchiveFile*>(stream);
  // Network file systems report here that what was written is lost.
  const BOOL isClosed = CloseHandle(file->handle);
  delete file;
  return isClosed ? 0 : -1;
}

int Error(voidpf, voidpf stream) noexcept {
  return static_cast<int>(static_cast<ArchiveFile*>(stream)->error);
}

}  // namespace

void FillSystemArchiveFiles(zlib_filefunc64_def* table) {
  *table = {Open, Read, Write, Tell, Seek, Close, Error, nullptr};
}

}  // namespace temvar
