// Folders with their parents.
#ifndef TEMVAR_UTILITIES_SYSTEM_FOLDERS_H_
#define TEMVAR_UTILITIES_SYSTEM_FOLDERS_H_

#include "utilities/string/text.h"

namespace temvar {

// SHCreateDirectoryExW for a path of any form and length: makes the folder and its missing parents.
// The result is 0 or the error code.
int MakeFolders(WideText path);

}  // namespace temvar

#endif  // TEMVAR_UTILITIES_SYSTEM_FOLDERS_H_
