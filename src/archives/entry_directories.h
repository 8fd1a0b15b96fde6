// Makes the directories that entries need. Paths are UTF-8.
#ifndef TEMVAR_ARCHIVES_ENTRY_DIRECTORIES_H_
#define TEMVAR_ARCHIVES_ENTRY_DIRECTORIES_H_

#include <string>

namespace temvar {

// Makes the directory `path` and its parents; 0 or an error code of the system.
int MakeDirectory(const std::string& path);

// Makes `path`, a file's path cut before its last separator, as far as it is missing. A prefix that
// can't be made is told in a line.
void MakeParents(std::string path);

}  // namespace temvar

#endif  // TEMVAR_ARCHIVES_ENTRY_DIRECTORIES_H_
