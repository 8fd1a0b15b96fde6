#include "platform/posix/files/find_files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "platform/posix/errors.h"
#include "platform/posix/files/file_handle.h"
#include "platform/posix/files/narrow_path.h"

namespace {

using temvar::posix::FileTimeOf;
using temvar::posix::NarrowPath;
using temvar::posix::SetLastErrorForPath;
using temvar::posix::SetLastErrorFromErrno;

// What a find handle points to. `directory` is null for the look at a single name.
struct Find {
  DIR* directory = nullptr;

  ~Find() {
    if (directory != nullptr) closedir(directory);
  }
};

bool SameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

void FillData(const char* name, const struct stat& info, bool link, WIN32_FIND_DATAW* data) {
  const bool directory = S_ISDIR(info.st_mode);
  // A folder's size on disk is not that of any content.
  const uint64_t size = S_ISREG(info.st_mode) ? static_cast<uint64_t>(info.st_size) : 0;
  data->dwFileAttributes = directory ? FILE_ATTRIBUTE_DIRECTORY : 0;
  const bool isFile = S_ISREG(info.st_mode) || S_ISLNK(info.st_mode);
  if (!directory && !isFile) data->dwFileAttributes |= FILE_ATTRIBUTE_DEVICE;
  if (link) data->dwFileAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
  data->ftCreationTime = FileTimeOf(info.st_mtim);
  data->ftLastAccessTime = FileTimeOf(info.st_atim);
  data->ftLastWriteTime = FileTimeOf(info.st_mtim);
  data->nFileSizeHigh = static_cast<DWORD>(size >> 32);
  data->nFileSizeLow = static_cast<DWORD>(size);
  temvar::posix::WideFileName(name, data->cFileName, MAX_PATH);
}

// Describes `path`, below `directory` if it is relative, under `name`. False with errno if nothing
// of that name exists.
bool Describe(int directory, const char* path, const char* name, WIN32_FIND_DATAW* data) {
  struct stat info;
  if (fstatat(directory, path, &info, AT_SYMLINK_NOFOLLOW) != 0) return false;
  if (!S_ISLNK(info.st_mode)) {
    FillData(name, info, false, data);
    return true;
  }
  struct stat target;
  // A link has its target's kind and size, and a broken one its own: walks follow links to folders.
  const bool leadsSomewhere = fstatat(directory, path, &target, 0) == 0;
  FillData(name, leadsSomewhere ? target : info, true, data);
  return true;
}

// Whether `target`, reached by the link `path`, is also one of the directories that lead to it.
// Each is opened from the one before: by their paths, deep ones would cost the square of their
// depth.
bool LeadsBack(const NarrowPath& path, const struct stat& target) {
  constexpr int kFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;
  std::string_view rest(path.c_str(), path.length());
  // The parents of a relative path's "." are no part of the way.
  int above = open(rest.front() == '/' ? "/" : ".", kFlags);
  bool found = false;
  while (above >= 0) {
    struct stat info;
    found = fstat(above, &info) == 0 && SameFile(info, target);
    rest.remove_prefix(std::min(rest.find_first_not_of('/'), rest.size()));
    const size_t end = rest.find('/');
    if (found || end == rest.npos) break;
    const int next = openat(above, std::string(rest.substr(0, end)).c_str(), kFlags);
    rest.remove_prefix(end);
    close(above);
    above = next;
  }
  if (above >= 0) close(above);
  return found;
}

// Opens the directory `path` for listing; -1 and the last error on failure.
int OpenDirectory(const NarrowPath& path) {
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  int descriptor = open(path.c_str(), kFlags | O_NOFOLLOW);
  if (descriptor >= 0) return descriptor;
  // A link, or no directory: only links cost the look at the folders above them.
  descriptor = open(path.c_str(), kFlags);
  struct stat info;
  if (descriptor < 0 || fstat(descriptor, &info) != 0) {
    if (errno == ENOENT) {
      SetLastError(ERROR_PATH_NOT_FOUND);
    } else {
      SetLastErrorFromErrno();
    }
  } else if (LeadsBack(path, info)) {
    SetLastError(ERROR_CANT_RESOLVE_FILENAME);
  } else {
    return descriptor;
  }
  if (descriptor >= 0) close(descriptor);
  return -1;
}

HANDLE ListDirectory(const NarrowPath& pattern, WIN32_FIND_DATAW* data) {
  NarrowPath path(pattern);
  path.CutToParent();
  std::unique_ptr<Find> find(new (std::nothrow) Find);
  if (find == nullptr) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return INVALID_HANDLE_VALUE;
  }
  const int descriptor = OpenDirectory(path);
  if (descriptor < 0) return INVALID_HANDLE_VALUE;
  // From here on the descriptor belongs to the directory, unless this fails.
  find->directory = fdopendir(descriptor);
  if (find->directory == nullptr) {
    SetLastErrorFromErrno();
    close(descriptor);
    return INVALID_HANDLE_VALUE;
  }
  if (!FindNextFileW(find.get(), data)) return INVALID_HANDLE_VALUE;
  return find.release();
}

}  // namespace

HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* data) {
  const NarrowPath narrow(pattern);
  if (!narrow.ok()) return INVALID_HANDLE_VALUE;
  const char* name = narrow.LastComponent();
  if (std::strcmp(name, "*") == 0) return ListDirectory(narrow, data);
  if (*name == '\0') {
    // No name after the last separator.
    SetLastError(ERROR_FILE_NOT_FOUND);
    return INVALID_HANDLE_VALUE;
  }
  if (!Describe(AT_FDCWD, narrow.c_str(), name, data)) {
    SetLastErrorForPath(narrow);
    return INVALID_HANDLE_VALUE;
  }
  Find* find = new (std::nothrow) Find;
  if (find != nullptr) return find;
  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return INVALID_HANDLE_VALUE;
}

BOOL FindNextFileW(HANDLE find, WIN32_FIND_DATAW* data) {
  DIR* const directory = static_cast<Find*>(find)->directory;
  for (;;) {
    // readdir returns null for the end and for failures; only errno distinguishes them.
    errno = 0;
    const dirent* entry = directory == nullptr ? nullptr : readdir(directory);
    if (entry == nullptr) {
      if (errno == 0) {
        SetLastError(ERROR_NO_MORE_FILES);
      } else {
        SetLastErrorFromErrno();
      }
      return FALSE;
    }
    // An entry that went away since it was read is passed over.
    if (Describe(dirfd(directory), entry->d_name, entry->d_name, data)) return TRUE;
  }
}

BOOL FindClose(HANDLE find) {
  if (find == nullptr || find == INVALID_HANDLE_VALUE) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  delete static_cast<Find*>(find);
  return TRUE;
}
