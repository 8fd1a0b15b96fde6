#include "platform/long_path.h"

namespace temvar {

TmvWideChar* NewLongPath(const TmvWideChar* /*path*/) { return nullptr; }

TmvWideChar* NewAbsolutePath(const TmvWideChar* /*path*/) { return nullptr; }

bool FitsShell(const TmvWideChar* /*absolute_path*/) { return true; }

}  // namespace temvar
