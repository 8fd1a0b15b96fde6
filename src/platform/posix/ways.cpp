#include "platform/ways.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include "platform/posix/files/narrow_path.h"

namespace temvar {
namespace {

// A folder that the next components are looked up from. The kernel walks a path from its start each
// time, so that a look at each component of a deep one would cost the square of its depth.
class Base {
 public:
  Base() = default;
  Base(const Base&) = delete;
  Base& operator=(const Base&) = delete;
  ~Base() { Close(); }

  int get() const { return descriptor_; }

  bool MoveTo(const char* path) {
    const int next = openat(descriptor_, path, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (next < 0) return false;
    Close();
    descriptor_ = next;
    return true;
  }

 private:
  void Close() {
    if (descriptor_ != AT_FDCWD) close(descriptor_);
  }

  int descriptor_ = AT_FDCWD;
};

// What is there if a look at it fails with errno: in doubt a link, unless there is no such name or
// nothing can have it.
ComponentKind KindInDoubt() {
  const bool isMissing = errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG;
  return isMissing ? ComponentKind::kMissing : ComponentKind::kLink;
}

ComponentKind KindOf(int base, const char* path) {
  struct stat info;
  if (fstatat(base, path, &info, AT_SYMLINK_NOFOLLOW) != 0) return KindInDoubt();
  if (S_ISLNK(info.st_mode)) return ComponentKind::kLink;
  return S_ISDIR(info.st_mode) ? ComponentKind::kFolder : ComponentKind::kFile;
}

}  // namespace

Way LookAlong(const TmvWideChar* path, size_t count) {
  constexpr size_t kStride = 32;  // Components that are looked up from one base.
  const posix::NarrowPath narrow(path);
  if (!narrow.ok()) return {0, ComponentKind::kMissing};
  std::string text(narrow.c_str(), narrow.length());
  // The end of the part before the components.
  size_t end = text.size();
  for (size_t i = 0; i < count && end != std::string::npos && end > 0; ++i) {
    end = text.rfind('/', end - 1);
  }
  Base base;
  size_t start = 0;  // Of the text below `base`.
  end = end == std::string::npos ? 0 : end + 1;
  for (size_t i = 0; i < count; ++i, ++end) {
    end = std::min(text.find('/', end), text.size());
    text[end] = '\0';
    const ComponentKind kind = KindOf(base.get(), text.c_str() + start);
    if (kind != ComponentKind::kFolder) return {i, kind};
    if (i % kStride == kStride - 1 && end < text.size()) {
      // Gone since the look, or no descriptor is free.
      if (!base.MoveTo(text.c_str() + start)) return {i, KindInDoubt()};
      start = end + 1;
    } else {
      text[end] = '/';
    }
  }
  return {count, ComponentKind::kFolder};
}

bool IdentifyFile(const TmvWideChar* path, FileIdentity* identity) {
  const posix::NarrowPath narrow(path);
  struct stat info;
  if (!narrow.ok() || stat(narrow.c_str(), &info) != 0) return false;
  *identity = {info.st_dev, {info.st_ino}};
  return true;
}

}  // namespace temvar
