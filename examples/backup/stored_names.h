#ifndef EXAMPLES_BACKUP_STORED_NAMES_H_
#define EXAMPLES_BACKUP_STORED_NAMES_H_

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>

#include "folder.h"

// The names of files in an archive. The library stores names in the ANSI code page and reads them
// as UTF-8 when it unpacks, so that only ASCII comes back. A name that has more, or that some
// system can't make a file of, is replaced by a number, and the archive holds a list of such names.
// It is a text that people can read too:
//
//   folder photos
//   _backup/3 Ελλάδα/θάλασσα.jpg
namespace backup {

inline constexpr char kNamesEntry[] = "_backup/names.txt";

// Whether a relative name with slashes comes back as it is from an archive, on every system.
bool IsStorableName(const std::string& name);

// The name that replaces another in the archive: "_backup/3".
std::string NumberedName(size_t number);

// Writes the list of a folder's names. False if the file can't be written.
bool WriteNames(const Folder& folder);

struct StoredNames {
  std::string folder;                        // Empty for files of the source itself.
  std::map<std::string, std::string> names;  // The name of a file by that in the archive.
};

// Reads a list. Throws std::runtime_error if it is damaged, or holds a name that leads elsewhere.
StoredNames ReadNames(const std::filesystem::path& file);

}  // namespace backup

#endif  // EXAMPLES_BACKUP_STORED_NAMES_H_
