// The file functions that the archives are read and written with: the system's, with a block of
// read-ahead. minizip reads headers byte by byte, and each byte would be a call of the system.
#ifndef TEMVAR_ARCHIVES_ARCHIVE_FILES_H_
#define TEMVAR_ARCHIVES_ARCHIVE_FILES_H_

#include <ioapi.h>

#include <cstddef>
#include <new>

namespace temvar {

// The table for unzOpen2_64 and zipOpen2_64; paths are wide. A write that fails sets
// `*writeFailed`, unless that is null.
zlib_filefunc64_def ArchiveFiles(bool* writeFailed = nullptr);

// Throws std::bad_alloc if there is no block of this size at the moment. minizip 1.1 is to be asked
// for nothing then: without memory it writes through a null pointer, leaves an archive open, or
// loses blocks. (A compiler may leave out a new-expression that is deleted at once, but no calls.)
inline void ExpectMemory(size_t size) { ::operator delete(::operator new(size)); }

}  // namespace temvar

#endif  // TEMVAR_ARCHIVES_ARCHIVE_FILES_H_
