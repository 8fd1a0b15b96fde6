// The file functions that the archives are read and written with: the system's, with a block of
// read-ahead. minizip reads headers byte by byte, and each byte would be a call of the system.
#ifndef TEMVAR_ARCHIVES_ARCHIVE_FILES_H_
#define TEMVAR_ARCHIVES_ARCHIVE_FILES_H_

#include <ioapi.h>

namespace temvar {

// The table for unzOpen2_64 and zipOpen2_64; paths are wide. A write that fails sets
// `*writeFailed`, unless that is null.
zlib_filefunc64_def ArchiveFiles(bool* writeFailed = nullptr);

}  // namespace temvar

#endif  // TEMVAR_ARCHIVES_ARCHIVE_FILES_H_
