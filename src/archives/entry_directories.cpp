#include "archives/entry_directories.h"

#include <cerrno>
#include <cstdio>

#include "platform/long_path.h"
#include "platform/win32.h"
#include "utilities/text.h"

namespace temvar {

namespace {

bool IsSeparator(char character) { return character == '/' || character == '\\'; }

// Makes a directory and its parents; 0, -1 or an error code of the system.
int MakeDirectory(const std::string& path) {
  WideText wide = ToWide(path.c_str());
  // The shell's calls are made for backslashes.
  for (TmvWideChar* unit = wide.get(); *unit != 0; ++unit) {
    if (*unit == TMV_WIDE('/')) *unit = TMV_WIDE('\\');
  }
  // Paths too long for the shell are made by the file system, whose parents must be there.
  if (const WideText long_form{NewLongPath(wide.get())}) {
    if (CreateDirectoryW(long_form.get(), nullptr)) return ERROR_SUCCESS;
    return static_cast<int>(GetLastError());
  }
  if (TmvWideChar* const full = NewShellPath(wide.get())) wide.reset(full);
  return SHCreateDirectoryExW(nullptr, wide.get(), nullptr);
}

}  // namespace

void MakeEntryDirectory(const std::string& path) {
  if (MakeDirectory(path) == static_cast<int>(ERROR_PATH_NOT_FOUND)) MakeParents(path);
}

void MakeParents(std::string path) {
  if (path.empty()) return;
  if (IsSeparator(path.back())) path.pop_back();
  if (MakeDirectory(path) == static_cast<int>(ERROR_SUCCESS)) return;
  for (size_t end = 1; end <= path.size(); ++end) {
    if (end < path.size() && !IsSeparator(path[end])) continue;
    const std::string prefix = path.substr(0, end);
    if (MakeDirectory(prefix) == -1 && errno == ENOENT) {
      std::printf("couldn't create directory %s\n", prefix.c_str());
      return;
    }
  }
}

}  // namespace temvar
