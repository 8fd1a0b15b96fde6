#ifndef EXAMPLES_BACKUP_FOLDER_H_
#define EXAMPLES_BACKUP_FOLDER_H_

#include <cstdint>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

namespace backup {

struct File {
  std::string path;  // Absolute.
  std::string name;  // In the archive: relative to its folder, with slashes.
  uint64_t bytes = 0;
  std::string digest;
};

// One folder of the source: the work of one package. Its workers write the results, one after the
// other; the main thread reads them when the pool has stopped.
struct Folder {
  enum class Outcome { kUnfinished, kUnchanged, kPacked, kFailed };

  std::string name;
  std::string archive;     // Where its archive lies, with these two beside it for a while:
  std::string unfinished;  // the archive that is being made,
  std::string unpacked;    // and what was unpacked from it for the check.
  std::vector<File> files;
  uint64_t bytes = 0;
  std::string lastDigest;

  std::string digest;
  Outcome outcome = Outcome::kUnfinished;
  std::exception_ptr error;
};

// The folders in `source` that have files, and its own files as one more. Links are not followed,
// files whose extension stands in `exclusions` are left out, and so are folders whose name stands
// there, and `destination`.
// Throws std::filesystem::filesystem_error for what can't be listed.
std::vector<Folder> ListFolders(const std::filesystem::path& source,
                                const std::filesystem::path& destination,
                                const std::string& exclusions);

// Removes what a run that was cancelled or killed may have left of this folder's archive.
void RemoveLeftovers(const Folder& folder);

}  // namespace backup

#endif  // EXAMPLES_BACKUP_FOLDER_H_
