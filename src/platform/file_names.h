// What the system makes of a name of a file.
#ifndef TEMVAR_PLATFORM_FILE_NAMES_H_
#define TEMVAR_PLATFORM_FILE_NAMES_H_

#include <string_view>

namespace temvar {

enum class NameKind {
  kOrdinary,  // A file or folder of this name.
  kSelf,      // The folder that it is looked up in: nothing, or a single dot.
  kParent,    // The folder above.
  kReserved,  // Something else than a file of this name: a device, a stream.
};

// `name` is one component of a UTF-8 path.
NameKind KindOfName(std::string_view name);

// Whether the UTF-8 path begins with a drive.
bool HasDrive(std::string_view path);

}  // namespace temvar

#endif  // TEMVAR_PLATFORM_FILE_NAMES_H_
