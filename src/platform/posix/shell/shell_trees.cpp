// The shell's operations on trees and folders, done by the C++ filesystem library.
#include "platform/posix/shell/shell_trees.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>
#include <system_error>

#include "platform/posix/errors.h"
#include "platform/posix/files/find_files.h"
#include "platform/posix/files/narrow_path.h"

namespace {

namespace fs = std::filesystem;
using temvar::posix::ErrorFromErrno;
using temvar::posix::NarrowPath;

int ErrorOf(const std::error_code& error) {
  return static_cast<int>(ErrorFromErrno(error.value()));
}

int DeleteTree(const NarrowPath& path) {
  std::error_code error;
  const fs::path tree(path.c_str());
  const fs::file_status status = fs::symlink_status(tree, error);
  if (status.type() == fs::file_type::not_found) return static_cast<int>(ERROR_FILE_NOT_FOUND);
  if (!fs::is_symlink(status) && fs::equivalent(tree, "/", error)) {
    return static_cast<int>(ERROR_ACCESS_DENIED);
  }
  error.clear();
  fs::remove_all(tree, error);
  return ErrorOf(error);
}

// Whether `path`, which need not exist, lies in `directory` or is that directory.
bool LiesWithin(const fs::path& path, const fs::path& directory, std::error_code& error) {
  const fs::path inner = fs::weakly_canonical(path, error);
  if (error) return false;
  const fs::path outer = fs::canonical(directory, error);
  if (error) return false;
  return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
}

int CopyTree(const NarrowPath& source, const NarrowPath& destination) {
  std::error_code error;
  const fs::path from(source.c_str());
  fs::path to(destination.c_str());
  const fs::file_status status = fs::symlink_status(from, error);
  if (status.type() == fs::file_type::not_found) return static_cast<int>(ERROR_FILE_NOT_FOUND);
  const bool into = fs::is_directory(to, error);
  if (into) to /= from.filename();
  error.clear();
  if (fs::is_directory(status) && LiesWithin(to, from, error)) {
    return static_cast<int>(ERROR_ACCESS_DENIED);
  }
  if (error) return ErrorOf(error);
  if (!into && to.has_parent_path()) fs::create_directories(to.parent_path(), error);
  if (error) return ErrorOf(error);
  fs::copy(from, to,
           fs::copy_options::recursive | fs::copy_options::copy_symlinks |
               fs::copy_options::overwrite_existing,
           error);
  return ErrorOf(error);
}

int DoOperation(const SHFILEOPSTRUCTW& operation) {
  NarrowPath from(operation.pFrom);
  if (!from.ok()) return static_cast<int>(GetLastError());
  from.StripTrailingSeparators();
  if (operation.wFunc == FO_DELETE) return DeleteTree(from);
  NarrowPath to(operation.pTo);
  if (!to.ok()) return static_cast<int>(GetLastError());
  to.StripTrailingSeparators();
  return CopyTree(from, to);
}

}  // namespace

int SHFileOperationW(SHFILEOPSTRUCTW* operation) {
  operation->fAnyOperationsAborted = FALSE;
  if (operation->wFunc != FO_COPY && operation->wFunc != FO_DELETE) {
    return static_cast<int>(ERROR_INVALID_PARAMETER);
  }
  try {
    return DoOperation(*operation);
  } catch (const std::bad_alloc&) {
    return static_cast<int>(ERROR_NOT_ENOUGH_MEMORY);
  } catch (const fs::filesystem_error& failure) {
    return ErrorOf(failure.code());
  }
}

int SHCreateDirectoryExW(HWND /*window*/, LPCWSTR path, const SECURITY_ATTRIBUTES* /*security*/) {
  NarrowPath whole(path);
  if (!whole.ok()) return static_cast<int>(GetLastError());
  whole.StripTrailingSeparators();
  struct stat info;
  if (stat(whole.c_str(), &info) == 0) {
    return static_cast<int>(S_ISDIR(info.st_mode) ? ERROR_ALREADY_EXISTS : ERROR_FILE_EXISTS);
  }
  std::error_code error;
  try {
    fs::create_directories(whole.c_str(), error);
  } catch (const std::bad_alloc&) {
    return static_cast<int>(ERROR_NOT_ENOUGH_MEMORY);
  }
  return ErrorOf(error);
}

BOOL PathIsDirectoryW(LPCWSTR path) {
  const NarrowPath narrow(path);
  struct stat info;
  if (!narrow.ok() || stat(narrow.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) return FALSE;
  return static_cast<BOOL>(FILE_ATTRIBUTE_DIRECTORY);
}

BOOL PathRemoveFileSpecW(LPWSTR path) {
  if (path == nullptr) return FALSE;
  size_t length = 0;
  size_t cut = 0;  // Where the last separator stands, or behind it if it is that of a root.
  for (; path[length] != 0; ++length) {
    if (path[length] != u'\\' && path[length] != u'/') continue;
    cut = length == 0 || path[length - 1] == u':' ? length + 1 : length;
  }
  if (cut == length) return FALSE;
  path[cut] = 0;
  return TRUE;
}
