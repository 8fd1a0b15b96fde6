#ifndef TEMVAR_UTILITIES_FILE_UTILITY_FILE_IMPL_H_
#define TEMVAR_UTILITIES_FILE_UTILITY_FILE_IMPL_H_

#include "temvar/utility_file.h"

namespace temvar {

// One file of sources for each kind of operation: file_paths.cpp, file_streams.cpp,
// file_timestamp.cpp, file_trees.cpp, file_search.cpp, and utility_file_impl.cpp for the rest. The
// class has no data and takes no lock: two calls on one path meet only in the file system.
class TMVUtilityFileImpl final : public TMVUtilityFile {
 public:
  bool DeleteDirectoryTree(const char* path) override;
  bool CopyDirectoryTree(const char* source, const char* destination) override;
  bool CreateDirectoryPath(const char* path) override;
  uint64_t DirectorySize(const char* path, uint64_t total) override;
  bool CopyFileTo(const char* source, const char* destination) override;
  bool MoveFileTo(const char* source, const char* destination) override;
  bool RemoveFile(const char* path) override;
  char* FormatSize(uint64_t bytes) override;
  char* MakeUniquePath(const char* path) override;
  bool PathExists(const char* path) override;
  int64_t FileSize(const char* path) override;
  bool SetFileTimestamp(const char* path, const char* time) override;
  PathParts SplitPath(const char* path) override;
  void FreePathParts(PathParts* parts) override;
  bool ExtensionInList(const char* path, const char* list) override;
  FILE* OpenFile(const char* path, const char* mode) override;
  bool ReadWholeFile(BinaryDataResult* result, const char* path) override;
  bool WriteWholeFile(const void* data, uint64_t size, const char* path) override;
  int32_t FileContainsText(const char* path, const char* text) override;
  bool CreateFileOfSize(const char* path, uint64_t size) override;
  bool GetFreeDiskSpace(uint64_t* result, const char* path) override;
  bool IsDirectory(const char* path) override;
};

}  // namespace temvar

#endif  // TEMVAR_UTILITIES_FILE_UTILITY_FILE_IMPL_H_
