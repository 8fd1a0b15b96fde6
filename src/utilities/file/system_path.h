// Paths of a host on their way to the system, and folders made along them.
#ifndef TEMVAR_UTILITIES_FILE_SYSTEM_PATH_H_
#define TEMVAR_UTILITIES_FILE_SYSTEM_PATH_H_

#include <utility>

#include "platform/paths.h"
#include "temvar/types.h"
#include "utilities/string/text.h"

namespace temvar {

// A UTF-8 path as the wide text that the system's file functions take, however long it is. A null
// or malformed path is an empty one, which names no file.
class SystemPath {
 public:
  explicit SystemPath(const char* path) : SystemPath(ToWide(path)) {}
  explicit SystemPath(WideText path) : text_(std::move(path)) {
    if (TmvWideChar* const form = NewLongPath(text_.get())) text_.reset(form);
  }

  const TmvWideChar* get() const { return text_.get(); }

 private:
  WideText text_;
};

// A path as the shell's functions take it: in the form that they want, as a list of one path.
// They know no long paths, so that one that doesn't fit must not reach them.
class ShellPath {
 public:
  explicit ShellPath(const char* path) : ShellPath(ToWide(path)) {}
  explicit ShellPath(WideText path) : text_(std::move(path)) {
    if (TmvWideChar* const form = NewShellPath(text_.get())) text_.reset(form);
  }

  // False for an empty path too, which the shell would take for the current directory.
  bool fits() const { return *text_ != TMV_WIDE('\0') && FitsShell(text_.get()); }
  const TmvWideChar* get() const { return text_.get(); }

 private:
  WideText text_;
};

// SHCreateDirectoryExW for a path of any form and length: makes the folder and its missing parents.
// The result is 0 or the error code.
int MakeFolders(WideText path);

}  // namespace temvar

#endif  // TEMVAR_UTILITIES_FILE_SYSTEM_PATH_H_
