#include "platform/file_names.h"

namespace temvar {

NameKind KindOfName(std::string_view name) {
  if (name.empty() || name == ".") return NameKind::kSelf;
  return name == ".." ? NameKind::kParent : NameKind::kOrdinary;
}

// A colon is a letter of names here, so that only what can be meant as nothing else is a drive.
bool HasDrive(std::string_view path) {
  if (path.size() < 3 || path[1] != ':') return false;
  const char letter = static_cast<char>(path[0] | 0x20);
  return letter >= 'a' && letter <= 'z' && (path[2] == '/' || path[2] == '\\');
}

}  // namespace temvar
