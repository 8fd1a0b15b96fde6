#include "platform/paths.h"

namespace temvar {

TmvWideChar* NewLongPath(const TmvWideChar* /*path*/) { return nullptr; }

TmvWideChar* NewShellPath(const TmvWideChar* /*path*/) { return nullptr; }

bool FitsShell(const TmvWideChar* /*absolute_path*/) { return true; }

}  // namespace temvar
