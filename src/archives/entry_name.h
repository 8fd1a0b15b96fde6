// Which names of archive entries may become paths.
#ifndef TEMVAR_ARCHIVES_ENTRY_NAME_H_
#define TEMVAR_ARCHIVES_ENTRY_NAME_H_

#include <string>
#include <string_view>
#include <utility>

#include "platform/paths.h"

namespace temvar {

// Position behind the last slash or backslash of `name`; 0 if there is none.
size_t LastComponent(std::string_view name);

// Whether `name`, appended to a directory, names something in it by its text alone. The rules are
// those of Windows on every system, so that an archive unpacks in the same way everywhere: both
// separators count, trailing dots and blanks of a component don't, and devices have names.
bool IsInnerName(std::string_view name);

// Tells whether the entries of one extraction reach their places without passing through a link
// inside the destination. Remembers the directory that it looked at last.
class LinkGuard {
 public:
  // `destination` is the text that the names are appended to.
  explicit LinkGuard(std::string destination) : destination_(std::move(destination)) {}

  // `name` as IsInnerName accepts it.
  bool IsFreeOfLinks(std::string_view name);

 private:
  PathKind KindBelow(std::string_view name) const;

  const std::string destination_;
  std::string knownDirectory_;  // Holds no link; empty or with its separator at the end.
};

}  // namespace temvar

#endif  // TEMVAR_ARCHIVES_ENTRY_NAME_H_
