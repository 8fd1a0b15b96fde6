// A path of a host on its way to the system.
#ifndef TEMVAR_UTILITIES_SYSTEM_PATH_H_
#define TEMVAR_UTILITIES_SYSTEM_PATH_H_

#include <utility>

#include "platform/long_path.h"
#include "temvar/types.h"
#include "utilities/text.h"

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

}  // namespace temvar

#endif  // TEMVAR_UTILITIES_SYSTEM_PATH_H_
