// What a path really leads to: needed to keep an extraction inside its directory and a walk out of
// loops. The Win32 calls behind it differ too much between file systems to be called in place.
#ifndef TEMVAR_PLATFORM_LINKS_H_
#define TEMVAR_PLATFORM_LINKS_H_

#include "temvar/types.h"

namespace temvar {

// What the last component of a path is. A link is a symbolic link or a mount point (junction).
enum class PathKind { kMissing, kLink, kOther };
PathKind KindOfPath(const TmvWideChar* path);

// Whether both paths lead to the same existing file or directory, links followed.
bool IsSameFile(const TmvWideChar* first, const TmvWideChar* second);

}  // namespace temvar

#endif  // TEMVAR_PLATFORM_LINKS_H_
