#ifndef EXAMPLES_BACKUP_SETTINGS_H_
#define EXAMPLES_BACKUP_SETTINGS_H_

#include <temvar/temvar.h>

#include <filesystem>
#include <string>
#include <vector>

#include "folder.h"
#include "options.h"

namespace backup {

// What the program remembers from run to run, in a user defaults store. For the main thread alone:
// a store has no lock.
class Settings {
 public:
  // Opens the settings file, or starts a new one. A file that is no settings file is kept under
  // another name, which `notice` says. Throws std::runtime_error if it can't be moved
  // or is a folder.
  Settings(const std::string& path, std::string& notice);

  // Takes over what the command line says.
  void Apply(const Options& options);

  std::string source() const;
  std::string destination() const;
  std::string exclusions() const;
  uint32_t workers() const;

  // Sets for each folder of `source` the digest of its last backup; empty if there was none.
  void Recall(const std::filesystem::path& source, std::vector<Folder>& folders) const;

  // Keeps the digests of what was packed, and a line on the run, and writes the file; keeps the one
  // before as FILE.last. False if it could not be written.
  bool Remember(const std::filesystem::path& source, const std::vector<Folder>& folders,
                const std::string& summary);

  // The last runs, the oldest first.
  std::vector<std::string> Runs() const;

 private:
  void AddRun(const std::string& line);
  bool Save();
  std::string Text(const char* key) const { return store_->GetString(key, nullptr); }

  TMVUserDefaults* store_;
};

}  // namespace backup

#endif  // EXAMPLES_BACKUP_SETTINGS_H_
