// Paths on their way from wide text to the kernel and back.
#ifndef TEMVAR_PLATFORM_POSIX_FILES_NARROW_PATH_H_
#define TEMVAR_PLATFORM_POSIX_FILES_NARROW_PATH_H_

#include <climits>
#include <cstddef>

#include "platform/posix/win32_types.h"

namespace temvar::posix {

// A wide path as the bytes that the kernel takes: UTF-8, `\` as `/`, without a drive letter. It
// lives in a buffer of the object, so that making one is safe in a signal handler.
//
// A path that is null, empty, longer than PATH_MAX or no valid UTF-16 is not ok: errno and the
// thread's last error then say why. It is never cut or patched, since that would name another
// file.
class NarrowPath {
 public:
  explicit NarrowPath(LPCWSTR wide);

  bool ok() const { return ok_; }
  const char* c_str() const { return bytes_; }
  size_t length() const { return length_; }

  // Removes the separators at the end; a root keeps its only one.
  void StripTrailingSeparators();
  // Cuts off the last component and the separators before it: "." for a bare name, "/" below it.
  void CutToParent();
  // The last component; empty if the path ends in a separator.
  const char* LastComponent() const;

 private:
  bool Convert(LPCWSTR wide);

  char bytes_[PATH_MAX];
  size_t length_ = 0;
  bool ok_ = false;
};

// Sets the last error for a failed operation on `path` from errno. What errno calls a missing file
// is reported as a missing folder (3) if the folder isn't there, as Windows does. Safe in a signal
// handler.
void SetLastErrorForPath(const NarrowPath& path);

// Writes the wide form of a file name into `wide`, which has room for `capacity` units. What wide
// text can't say (bytes that are no UTF-8, and a `\`, which would be read as a separator) becomes
// U+FFFD: such a file is listed but can't be opened by its name.
void WideFileName(const char* name, LPWSTR wide, size_t capacity);

}  // namespace temvar::posix

#endif  // TEMVAR_PLATFORM_POSIX_FILES_NARROW_PATH_H_
