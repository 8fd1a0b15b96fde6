// Paths in the forms that the system's functions ask for.
#ifndef TEMVAR_PLATFORM_LONG_PATH_H_
#define TEMVAR_PLATFORM_LONG_PATH_H_

#include "temvar/types.h"

namespace temvar {

// The form in which the system takes `path` however long it is, as a new block of malloc; null if
// that is `path` itself. Windows takes more than 260 characters only of an absolute path behind
// `\\?\`; elsewhere the result is always null. Throws std::bad_alloc.
TmvWideChar* NewLongPath(const TmvWideChar* path);

// The absolute form of `path` where the shell's folder functions insist on one, in the same way.
TmvWideChar* NewShellPath(const TmvWideChar* path);

}  // namespace temvar

#endif  // TEMVAR_PLATFORM_LONG_PATH_H_
