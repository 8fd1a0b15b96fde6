#include "platform/system_archive_files.h"

#include "platform/win32.h"

// Needs the declarations of windows.h.
#include <iowin32.h>

namespace temvar {

void FillSystemArchiveFiles(zlib_filefunc64_def* table) { fill_win32_filefunc64W(table); }

}  // namespace temvar
