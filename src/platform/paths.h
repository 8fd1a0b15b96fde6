// The forms in which the system's functions take a path, which no Win32 name makes alike on each
// system. New text is a block of malloc that ends in two NUL units; null means that the path is
// right as it is. Functions that make text throw std::bad_alloc.
#ifndef TEMVAR_PLATFORM_PATHS_H_
#define TEMVAR_PLATFORM_PATHS_H_

#include "temvar/types.h"

namespace temvar {

// The form in which the system's file functions take `path` however long it is. Windows takes more
// than 260 characters only of an absolute path after `\\?\`, and none of more than 32,767: that
// one becomes the empty path, which names no file.
TmvWideChar* NewLongPath(const TmvWideChar* path);

// The form for the shell's functions, without "." and ".." components: the system of Windows takes
// them out before it looks at the disk, so that what comes before a ".." need not exist and a link
// there is not followed. On Windows the form is absolute, with backslashes.
TmvWideChar* NewShellPath(const TmvWideChar* path);

// Whether a path in the form of NewShellPath is the root of a disk or of a network share.
bool IsRootPath(const TmvWideChar* path);

// Whether the shell's functions take an absolute path of this length. Windows' take some 250
// characters and know no way around that; Wine's (seen in 8.0) write beyond their buffers instead
// of failing, so that they must never see a longer one.
bool FitsShell(const TmvWideChar* absolutePath);

}  // namespace temvar

#endif  // TEMVAR_PLATFORM_PATHS_H_
