#ifndef TEMVAR_ARCHIVES_DIRECTORY_WALK_H_
#define TEMVAR_ARCHIVES_DIRECTORY_WALK_H_

#include <functional>

namespace temvar {

// Takes a file's path and the name that it gets in an archive.
using FileVisitor = std::function<void(const char* path, const char* name)>;

// Visits every file below `directory`, which isn't empty, as TMVUtilityZip::AddDirectory tells it.
void WalkFiles(const char* directory, const char* root, const FileVisitor& visit);

}  // namespace temvar

#endif  // TEMVAR_ARCHIVES_DIRECTORY_WALK_H_
