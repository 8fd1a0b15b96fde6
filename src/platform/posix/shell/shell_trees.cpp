// The shell's operations on trees and folders. Trees can be deeper than a process may have files
// open, so no operation keeps more than one directory listed.
#include "platform/posix/shell/shell_trees.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/posix/errors.h"
#include "platform/posix/files/copy_file.h"
#include "platform/posix/files/find_files.h"
#include "platform/posix/files/narrow_path.h"

namespace {

namespace fs = std::filesystem;
using temvar::posix::Copied;
using temvar::posix::CopyOneFile;
using temvar::posix::ErrorFromErrno;
using temvar::posix::NarrowPath;

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// Opens a folder for listing, below `parent` if the path is relative; null with errno.
Directory OpenFolder(int parent, const char* path) {
  const int descriptor = openat(parent, path, kFolderFlags);
  if (descriptor < 0) return nullptr;
  Directory directory(fdopendir(descriptor));
  if (directory == nullptr) close(descriptor);
  return directory;
}

// The next name but "." and ".."; null at the end, and with errno after a failure.
const char* NextName(DIR* directory) {
  for (;;) {
    errno = 0;
    const dirent* const entry = readdir(directory);
    if (entry == nullptr) return nullptr;
    if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
      return entry->d_name;
    }
  }
}

// Deletes files and links and stops at the first folder, whose name goes to `folder`. 0 or errno.
int DeleteUpToFolder(DIR* directory, std::string& folder) {
  folder.clear();
  while (const char* const name = NextName(directory)) {
    // Another process may delete the same tree: a name that is gone is as good as deleted.
    if (unlinkat(dirfd(directory), name, 0) == 0 || errno == ENOENT) continue;
    if (errno != EISDIR) return errno;
    folder = name;
    return 0;
  }
  return errno;
}

// Goes down into each folder and comes back by "..", which must lead to the folder that it left: a
// folder that somebody moves meanwhile takes nothing else along. 0 or errno.
int DeleteFolder(const char* path) {
  struct Level {
    std::string name;
    dev_t device;
    ino_t inode;
  };
  std::vector<Level> above;
  Directory here = OpenFolder(AT_FDCWD, path);
  if (here == nullptr) return errno;
  for (;;) {
    std::string name;
    const int error = DeleteUpToFolder(here.get(), name);
    if (error != 0) return error;
    struct stat info;
    if (!name.empty()) {
      // Remembered before the way down, so that the way back up can be compared with it.
      if (fstat(dirfd(here.get()), &info) != 0) return errno;
      Directory inner = OpenFolder(dirfd(here.get()), name.c_str());
      if (inner == nullptr) return errno;
      above.push_back({std::move(name), info.st_dev, info.st_ino});
      here = std::move(inner);
      continue;
    }
    if (above.empty()) break;
    const Level level = std::move(above.back());
    above.pop_back();
    Directory outer = OpenFolder(dirfd(here.get()), "..");
    if (outer == nullptr || fstat(dirfd(outer.get()), &info) != 0) return errno;
    if (info.st_dev != level.device || info.st_ino != level.inode) return EBUSY;
    if (unlinkat(dirfd(outer.get()), level.name.c_str(), AT_REMOVEDIR) != 0) return errno;
    here = std::move(outer);
  }
  return rmdir(path) == 0 ? 0 : errno;
}

// A link is deleted and never followed, also one to a folder.
int DeleteTree(const char* path) {
  if (unlink(path) == 0) return 0;
  return errno == EISDIR ? DeleteFolder(path) : errno;
}

// Makes a folder and its missing parents: back to the first parent that is there, then forward
// again. 0 or errno, EEXIST for a folder that exists.
int MakeFolders(std::string path) {
  const size_t size = path.size();
  size_t end = size;  // Where the path is cut at the moment.
  while (mkdir(path.c_str(), 0777) != 0) {
    if (errno == EEXIST && end != size) break;
    if (errno != ENOENT || end == 0) return errno;
    const size_t separator = path.rfind('/', end - 1);
    if (separator == std::string::npos || separator == 0) return ENOENT;
    path[separator] = '\0';
    end = separator;
  }
  while (end != size) {
    path[end] = '/';
    end = std::min(path.find('\0', end), size);
    // A parent that somebody made meanwhile is as good; the folder itself must be this call's.
    if (mkdir(path.c_str(), 0777) != 0 && (errno != EEXIST || end == size)) return errno;
  }
  return 0;
}

// One copy of a tree. A folder gets its own permissions and time once its contents are there: it
// may be read-only, and everything that is made in it changes its time.
class TreeCopy {
 public:
  // 0 or errno. What was done before a failure stays done.
  int Run(fs::path from, fs::path to) {
    pending_.push_back({std::move(from), std::move(to)});
    int error = 0;
    while (error == 0 && !pending_.empty()) {
      const Pair next = std::move(pending_.back());
      pending_.pop_back();
      error = CopyEntry(next.from, next.to);
    }
    // Also after a failure, and inner folders first: a change inside sets the outer one's time.
    for (auto made = made_.rbegin(); made != made_.rend(); ++made) {
      const timespec times[] = {{0, UTIME_OMIT}, made->time};
      // The contents are what counts: some file systems know neither permissions nor times.
      (void)!chmod(made->path.c_str(), made->mode);
      (void)!utimensat(AT_FDCWD, made->path.c_str(), times, 0);
    }
    return error;
  }

 private:
  struct Pair {
    fs::path from;
    fs::path to;
  };
  struct Made {
    fs::path path;
    mode_t mode;
    timespec time;
  };

  int CopyEntry(const fs::path& from, const fs::path& to) {
    struct stat info;
    if (lstat(from.c_str(), &info) != 0) return errno;
    if (S_ISDIR(info.st_mode)) return CopyFolder(from, to, info);
    if (S_ISLNK(info.st_mode)) return CopyLink(from, to);
    // Pipes, sockets and devices have no contents that a copy could hold.
    return S_ISREG(info.st_mode) ? CopyFile(from, to) : 0;
  }

  static int CopyFile(const fs::path& from, const fs::path& to) {
    Copied copied = CopyOneFile(from.c_str(), to.c_str(), false);
    // A file that can't be written is replaced nevertheless, as the shell does when it asks nobody.
    if (copied == Copied::kNoDestination && errno == EACCES && unlink(to.c_str()) == 0) {
      copied = CopyOneFile(from.c_str(), to.c_str(), false);
    }
    return copied == Copied::kWhole ? 0 : copied == Copied::kOntoItself ? EBUSY : errno;
  }

  static int CopyLink(const fs::path& from, const fs::path& to) {
    std::error_code error;
    const fs::path target = fs::read_symlink(from, error);
    if (error) return error.value();
    if (symlink(target.c_str(), to.c_str()) == 0) return 0;
    if (errno != EEXIST) return errno;
    if (unlink(to.c_str()) != 0) return errno;
    return symlink(target.c_str(), to.c_str()) == 0 ? 0 : errno;
  }

  int CopyFolder(const fs::path& from, const fs::path& to, const struct stat& info) {
    struct stat old;
    if (mkdir(to.c_str(), S_IRWXU) == 0) {
      made_.push_back({to, info.st_mode & 0777, info.st_mtim});
    } else if (errno != EEXIST || stat(to.c_str(), &old) != 0 || !S_ISDIR(old.st_mode)) {
      return errno != 0 ? errno : EEXIST;
    } else {
      // A folder that exists keeps its permissions.
      (void)!chmod(to.c_str(), (old.st_mode & 0777) | S_IRWXU);
      made_.push_back({to, old.st_mode & 0777, info.st_mtim});
    }
    const Directory directory = OpenFolder(AT_FDCWD, from.c_str());
    if (directory == nullptr) return errno;
    while (const char* const name = NextName(directory.get())) {
      pending_.push_back({from / name, to / name});
    }
    return errno;
  }

  std::vector<Pair> pending_;
  std::vector<Made> made_;
};

// Whether `path`, which need not exist, lies in `directory` or is that directory.
bool LiesWithin(const fs::path& path, const fs::path& directory, std::error_code& error) {
  const fs::path inner = fs::weakly_canonical(path, error);
  if (error) return false;
  const fs::path outer = fs::canonical(directory, error);
  if (error) return false;
  return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
}

int CopyTree(const fs::path& from, fs::path to) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(from, error);
  if (status.type() == fs::file_type::not_found) return ENOENT;
  if (status.type() == fs::file_type::none) return error.value();
  const fs::file_status target = fs::status(to, error);
  // Where nobody knows what is there, the copy could end up beside its place.
  if (target.type() == fs::file_type::none) return error.value();
  const bool into = fs::is_directory(target);
  // As the shell does: an existing destination receives the source under its own name.
  if (into) to /= from.filename();
  error.clear();
  // A tree copied into itself would grow for ever.
  if (fs::is_directory(status) && LiesWithin(to, from, error)) return EACCES;
  if (error) return error.value();
  if (!into && to.has_parent_path()) {
    const int made = MakeFolders(to.parent_path().string());
    if (made != 0 && made != EEXIST) return made;
  }
  return TreeCopy().Run(from, to);
}

int DoOperation(const SHFILEOPSTRUCTW& operation) {
  NarrowPath from(operation.pFrom);
  if (!from.ok()) return static_cast<int>(GetLastError());
  from.StripTrailingSeparators();
  if (operation.wFunc == FO_DELETE) {
    return static_cast<int>(ErrorFromErrno(DeleteTree(from.c_str())));
  }
  NarrowPath to(operation.pTo);
  if (!to.ok()) return static_cast<int>(GetLastError());
  to.StripTrailingSeparators();
  return static_cast<int>(ErrorFromErrno(CopyTree(from.c_str(), to.c_str())));
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
    return static_cast<int>(ErrorFromErrno(failure.code().value()));
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
  try {
    return static_cast<int>(ErrorFromErrno(MakeFolders(whole.c_str())));
  } catch (const std::bad_alloc&) {
    return static_cast<int>(ERROR_NOT_ENOUGH_MEMORY);
  }
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
  size_t cut = 0;  // The place of the last separator, or after it if it is that of a root.
  for (; path[length] != 0; ++length) {
    if (path[length] != u'\\' && path[length] != u'/') continue;
    cut = length == 0 || path[length - 1] == u':' ? length + 1 : length;
  }
  if (cut == length) return FALSE;
  path[cut] = 0;
  return TRUE;
}
