#ifndef TEMVAR_ARCHIVES_ARCHIVE_WRITER_H_
#define TEMVAR_ARCHIVES_ARCHIVE_WRITER_H_

#include <map>
#include <string>

namespace temvar {

// What goes into an archive: a file's path, and the name that it gets, empty for its own.
using ArchiveEntries = std::map<std::string, std::string>;

// TMVUtilityZip::WriteArchive.
bool WriteArchiveFile(const char* archive, const ArchiveEntries& entries, const char* exclusions);

}  // namespace temvar

#endif  // TEMVAR_ARCHIVES_ARCHIVE_WRITER_H_
