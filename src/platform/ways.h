// Where the way to a file leads: what keeps an extraction inside its destination, and a walk out of
// loops. The system's calls for this differ too much to be called in place.
#ifndef TEMVAR_PLATFORM_WAYS_H_
#define TEMVAR_PLATFORM_WAYS_H_

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>

#include "temvar/types.h"

namespace temvar {

// What a component of a path is by itself. A link is a symbolic link, a mount point (junction), or
// what can't be looked at although it may be there: callers refuse to go through a link.
enum class ComponentKind { kMissing, kLink, kFolder, kFile };

// How far one can go along a path without passing through a link: `folders` of its components are
// folders, and the next one is `kind`; kFolder if all are.
struct Way {
  size_t folders;
  ComponentKind kind;
};

// Looks at the last `count` components of `path`, from the topmost to the last, and stops at the
// first that is no folder. The components before them may be anything, also links. `path` doesn't
// end in a separator. One look a component, however deep the path.
Way LookAlong(const TmvWideChar* path, size_t count);

// Equal for two paths exactly if they lead to the same existing file or folder, links followed.
struct FileIdentity {
  uint64_t volume;
  std::array<uint64_t, 2> file;

  auto operator<=>(const FileIdentity&) const = default;
};

// False if nothing is there, or it can't be looked at.
bool IdentifyFile(const TmvWideChar* path, FileIdentity* identity);

}  // namespace temvar

#endif  // TEMVAR_PLATFORM_WAYS_H_
