#ifndef EXAMPLES_BACKUP_FOLDER_H_
#define EXAMPLES_BACKUP_FOLDER_H_

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace backup {

struct File {
  std::string path;    // Absolute.
  std::string name;    // Relative to its folder, with slashes.
  std::string stored;  // The name in the archive, see stored_names.h.
  uint64_t bytes = 0;
  std::string digest;
};

// What could not be read, and why. It is not in the backup.
struct PassedOver {
  std::string path;
  std::string reason;
};

// One folder of the source: the work of one lane. Its callables write the results, one after the
// other; the main thread reads them after the end of the job.
struct Folder {
  enum class Outcome { kUnfinished, kUnchanged, kPacked, kFailed };

  std::string name;
  bool holdsOwnFiles = false;  // The files that lie in the source itself.
  std::string archive;         // Where its archive lies, with these beside it for a while:
  std::string unfinished;      // the archive that is being made,
  std::string unpacked;        // what was unpacked from it for the check,
  std::string namesFile;       // and the list of names that goes into it.
  std::vector<File> files;
  std::vector<PassedOver> passedOver;
  uint64_t bytes = 0;
  std::string lastDigest;

  std::string digest;
  Outcome outcome = Outcome::kUnfinished;
};

// The folders in `source` that have files, and its own files as one more. Links are not followed,
// files whose extension is in `exclusions` are left out, and so are folders whose name is there,
// and `destination`. A folder or a file that can't be read is passed over. Throws
// std::filesystem::filesystem_error if `source` itself can't be listed.
std::vector<Folder> ListFolders(const std::filesystem::path& source,
                                const std::filesystem::path& destination,
                                const std::string& exclusions);

// Removes what a run that was cancelled or killed may have left of this folder's archive.
void RemoveLeftovers(const Folder& folder);

}  // namespace backup

#endif  // EXAMPLES_BACKUP_FOLDER_H_
