#ifndef TEMVAR_PLATFORM_POSIX_CRASH_STORED_ARCHIVE_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_STORED_ARCHIVE_H_

namespace temvar::posix {

// Packs the plain files below `directory` into a zip archive, uncompressed, by system calls alone:
// for a crash in which the heap, which the ordinary writer needs, can't be used. Archives are left
// out, links are not followed, and folders are entered sixteen levels deep. `archive` is open for
// writing and empty. What can't be read or is too large for the format (4 GB) is left out. Safe in
// a signal handler.
void StoreDirectory(const char* directory, int archive);

}  // namespace temvar::posix

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_STORED_ARCHIVE_H_
