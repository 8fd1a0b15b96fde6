// The file functions that minizip works through, over the Win32 file calls with wide paths.
#ifndef TEMVAR_PLATFORM_SYSTEM_ARCHIVE_FILES_H_
#define TEMVAR_PLATFORM_SYSTEM_ARCHIVE_FILES_H_

#include <ioapi.h>

namespace temvar {

// Fills `table` with functions that take a path of TmvWideChar. Reading opens an existing file and
// shares it with other readers; writing creates or replaces a file and shares it with nobody. A
// failed read or write, other than at the end of the file, is kept in the stream, and its error
// function reports the code.
void FillSystemArchiveFiles(zlib_filefunc64_def* table);

}  // namespace temvar

#endif  // TEMVAR_PLATFORM_SYSTEM_ARCHIVE_FILES_H_
