#include "archives/entry_name.h"

#include <algorithm>

#include "platform/file_names.h"

namespace temvar {
namespace {

constexpr std::string_view kSeparators = "/\\";

bool IsAbsolute(std::string_view name) {
  return !name.empty() &&
         (kSeparators.find(name.front()) != std::string_view::npos || HasDrive(name));
}

}  // namespace

size_t LastComponent(std::string_view name) {
  const size_t separator = name.find_last_of(kSeparators);
  return separator == std::string_view::npos ? 0 : separator + 1;
}

EntryPlace PlaceOfEntry(std::string_view name) {
  const EntryPlace outside = {EntryPlace::Kind::kOutside, {}};
  // A NUL would cut the path after the checks.
  if (IsAbsolute(name) || name.find('\0') != std::string_view::npos) return outside;
  EntryPlace place = {EntryPlace::Kind::kInside, {}};
  NameKind kind = NameKind::kSelf;
  for (size_t start = 0, end = 0; start <= name.size(); start = end + 1) {
    end = std::min(name.find_first_of(kSeparators, start), name.size());
    const std::string_view component = name.substr(start, end - start);
    kind = KindOfName(component);
    if (kind == NameKind::kParent) {
      if (place.path.empty()) return outside;
      place.path.pop_back();
      place.path.resize(LastComponent(place.path));
    } else if (kind != NameKind::kSelf) {
      place.path.append(component) += '\\';
    }
    // Going on: a later component can still lead outside.
    if (kind == NameKind::kReserved) place.kind = EntryPlace::Kind::kReserved;
  }
  const bool isFolder = LastComponent(name) == name.size();
  if (isFolder || place.kind != EntryPlace::Kind::kInside) return place;
  if (kind != NameKind::kOrdinary) return {EntryPlace::Kind::kReserved, {}};
  place.path.pop_back();
  return place;
}

}  // namespace temvar
