#include "archives/entry_name.h"

#include <algorithm>
#include <array>

#include "utilities/file/system_path.h"

namespace temvar {
namespace {

constexpr std::string_view kSeparators = "/\\";

// Without the dots and blanks that Windows drops from the end of a name.
std::string_view Trimmed(std::string_view component) {
  const size_t last = component.find_last_not_of(". ");
  return component.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

bool EqualsUpper(std::string_view text, std::string_view upper) {
  return std::equal(text.begin(), text.end(), upper.begin(), upper.end(), [](char a, char b) {
    return (a >= 'a' && a <= 'z' ? static_cast<char>(a - 'a' + 'A') : a) == b;
  });
}

// COM1 to COM9 and LPT1 to LPT9, with 0 and the three raised digits that Windows counts as digits.
bool IsPort(std::string_view stem) {
  if (stem.size() < 4) return false;
  const std::string_view kind = stem.substr(0, 3);
  const std::string_view number = stem.substr(3);
  if (!EqualsUpper(kind, "COM") && !EqualsUpper(kind, "LPT")) return false;
  if (number.size() == 1) return number[0] >= '0' && number[0] <= '9';
  return number == "\xC2\xB9" || number == "\xC2\xB2" || number == "\xC2\xB3";
}

// A device is one whatever extension follows its name.
bool IsDevice(std::string_view component) {
  static constexpr std::array<std::string_view, 7> kDevices = {"CON",    "PRN",     "AUX",   "NUL",
                                                               "CONIN$", "CONOUT$", "CLOCK$"};
  const std::string_view stem = Trimmed(component.substr(0, component.find('.')));
  return IsPort(stem) || std::any_of(kDevices.begin(), kDevices.end(),
                                     [stem](auto device) { return EqualsUpper(stem, device); });
}

// A single dot stays where it is; any other run of dots and blanks may lead up.
bool IsInnerComponent(std::string_view component) {
  if (component.empty() || component == ".") return true;
  return !Trimmed(component).empty() && !IsDevice(component);
}

}  // namespace

size_t LastComponent(std::string_view name) {
  const size_t separator = name.find_last_of(kSeparators);
  return separator == std::string_view::npos ? 0 : separator + 1;
}

bool IsInnerName(std::string_view name) {
  if (!name.empty() && kSeparators.find(name.front()) != std::string_view::npos) return false;
  // A colon makes a drive or a stream of another file; a NUL would cut the path behind the checks.
  if (name.find(':') != std::string_view::npos) return false;
  if (name.find('\0') != std::string_view::npos) return false;
  for (size_t start = 0; start <= name.size();) {
    const size_t end = std::min(name.find_first_of(kSeparators, start), name.size());
    if (!IsInnerComponent(name.substr(start, end - start))) return false;
    start = end + 1;
  }
  return true;
}

PathKind LinkGuard::KindBelow(std::string_view name) const {
  std::string path = destination_;
  path += name;
  return KindOfPath(SystemPath(path.c_str()).get());
}

bool LinkGuard::IsFreeOfLinks(std::string_view name) {
  const std::string_view directory = name.substr(0, LastComponent(name));
  if (directory != knownDirectory_) {
    for (size_t end = 0; (end = directory.find_first_of(kSeparators, end)) != directory.npos;
         ++end) {
      const PathKind kind = KindBelow(directory.substr(0, end));
      if (kind == PathKind::kLink) return false;
      // What is missing will be made, and nothing lies below it.
      if (kind == PathKind::kMissing) return true;
    }
    knownDirectory_ = directory;
  }
  return directory.size() == name.size() || KindBelow(name) != PathKind::kLink;
}

}  // namespace temvar
