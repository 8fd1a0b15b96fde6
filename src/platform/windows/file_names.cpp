#include "platform/file_names.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace temvar {
namespace {

// Without the dots and blanks that the system drops from the end of a name.
std::string_view Trimmed(std::string_view name) {
  const size_t last = name.find_last_not_of(". ");
  return name.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

bool EqualsUpper(std::string_view text, std::string_view upper) {
  return std::equal(text.begin(), text.end(), upper.begin(), upper.end(), [](char a, char b) {
    return (a >= 'a' && a <= 'z' ? static_cast<char>(a - 'a' + 'A') : a) == b;
  });
}

// COM1 to COM9 and LPT1 to LPT9, with 0 and the three raised digits that the system counts as
// digits.
bool IsPort(std::string_view stem) {
  if (stem.size() < 4) return false;
  const std::string_view kind = stem.substr(0, 3);
  const std::string_view number = stem.substr(3);
  if (!EqualsUpper(kind, "COM") && !EqualsUpper(kind, "LPT")) return false;
  if (number.size() == 1) return number[0] >= '0' && number[0] <= '9';
  return number == "\xC2\xB9" || number == "\xC2\xB2" || number == "\xC2\xB3";
}

// A device is one whatever extension follows its name.
bool IsDevice(std::string_view name) {
  static constexpr std::array<std::string_view, 7> kDevices = {"CON",    "PRN",     "AUX",   "NUL",
                                                               "CONIN$", "CONOUT$", "CLOCK$"};
  const std::string_view stem = Trimmed(name.substr(0, name.find('.')));
  return IsPort(stem) || std::any_of(kDevices.begin(), kDevices.end(),
                                     [stem](auto device) { return EqualsUpper(stem, device); });
}

}  // namespace

NameKind KindOfName(std::string_view name) {
  if (name.empty() || name == ".") return NameKind::kSelf;
  // Nothing but dots and blanks: what the system leaves of a run of them differs between versions,
  // and can be the folder above.
  if (Trimmed(name).empty()) return name.size() > 1 ? NameKind::kParent : NameKind::kReserved;
  const bool hasStream = name.find(':') != std::string_view::npos;
  return hasStream || IsDevice(name) ? NameKind::kReserved : NameKind::kOrdinary;
}

// Also "C:name", which is relative to the drive's own current folder: no name for an archive's
// entry.
bool HasDrive(std::string_view path) {
  if (path.size() < 2 || path[1] != ':') return false;
  const char letter = static_cast<char>(path[0] | 0x20);
  return letter >= 'a' && letter <= 'z';
}

}  // namespace temvar
