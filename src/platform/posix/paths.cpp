#include "platform/paths.h"

#include <sys/stat.h>

#include "platform/posix/files/narrow_path.h"

namespace temvar {

PathKind KindOfPath(const TmvWideChar* path) {
  posix::NarrowPath narrow(path);
  if (!narrow.ok()) return PathKind::kMissing;
  // With a separator behind it, the kernel looks at what the link leads to.
  narrow.StripTrailingSeparators();
  struct stat info;
  if (lstat(narrow.c_str(), &info) != 0) return PathKind::kMissing;
  return S_ISLNK(info.st_mode) ? PathKind::kLink : PathKind::kOther;
}

bool IsSameFile(const TmvWideChar* first, const TmvWideChar* second) {
  const posix::NarrowPath a(first);
  const posix::NarrowPath b(second);
  struct stat info_a;
  struct stat info_b;
  return a.ok() && b.ok() && stat(a.c_str(), &info_a) == 0 && stat(b.c_str(), &info_b) == 0 &&
         info_a.st_dev == info_b.st_dev && info_a.st_ino == info_b.st_ino;
}

TmvWideChar* NewLongPath(const TmvWideChar* /*path*/) { return nullptr; }

TmvWideChar* NewShellPath(const TmvWideChar* /*path*/) { return nullptr; }

bool FitsShell(const TmvWideChar* /*absolute_path*/) { return true; }

}  // namespace temvar
