#include "platform/paths.h"

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <new>
#include <string>
#include <system_error>

#include "platform/posix/files/narrow_path.h"

namespace temvar {

// No form is needed: the kernel's limit counts for a path as it is written, and NarrowPath checks
// it.
TmvWideChar* NewLongPath(const TmvWideChar* /*path*/) { return nullptr; }

TmvWideChar* NewShellPath(const TmvWideChar* path) {
  const posix::NarrowPath narrow(path);
  if (!narrow.ok()) return nullptr;
  std::filesystem::path form = std::filesystem::path(narrow.c_str()).lexically_normal();
  std::error_code error;
  // "." and ".." name a directory that depends on the current one.
  if (*form.begin() == "." || *form.begin() == "..") {
    form = std::filesystem::absolute(form, error).lexically_normal();
    if (error) return nullptr;
  }
  // Two units more than the text, as the shell's lists want.
  const std::u16string text = form.u16string();
  auto* const block = static_cast<char16_t*>(std::calloc(text.size() + 2, sizeof(char16_t)));
  if (block == nullptr) throw std::bad_alloc();
  text.copy(block, text.size());
  return block;
}

bool IsRootPath(const TmvWideChar* path) {
  posix::NarrowPath narrow(path);
  if (!narrow.ok()) return false;
  narrow.StripTrailingSeparators();
  struct stat info;
  struct stat root;
  // Not through a link: the link itself is no root.
  return lstat(narrow.c_str(), &info) == 0 && lstat("/", &root) == 0 &&
         info.st_dev == root.st_dev && info.st_ino == root.st_ino;
}

bool FitsShell(const TmvWideChar* /*absolutePath*/) { return true; }

}  // namespace temvar
