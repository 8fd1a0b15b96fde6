// Where the names of archive entries lead, by their text alone.
#ifndef TEMVAR_ARCHIVES_ENTRY_NAME_H_
#define TEMVAR_ARCHIVES_ENTRY_NAME_H_

#include <string>
#include <string_view>

namespace temvar {

// Position after the last slash or backslash of `name`; 0 if there is none.
size_t LastComponent(std::string_view name);

struct EntryPlace {
  enum class Kind {
    kInside,    // A file or folder below the destination.
    kReserved,  // Inside, but no file of that name can be made: a device, a stream, no name at all.
    kOutside,   // Absolute, a drive, cut by a NUL, or with more `..` than components before them.
  };
  Kind kind;
  // For kInside: the path from the destination on, with `\` between its components and without `.`
  // and `..`, so that every component of it is looked at before anything is opened there. Ends with
  // `\` for a folder; empty for the destination itself.
  std::string path;
};

// Both separators count on every system; which names are reserved is the system's choice.
EntryPlace PlaceOfEntry(std::string_view name);

}  // namespace temvar

#endif  // TEMVAR_ARCHIVES_ENTRY_NAME_H_
