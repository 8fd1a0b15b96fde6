#ifndef EXAMPLES_BACKUP_SETTINGS_H_
#define EXAMPLES_BACKUP_SETTINGS_H_

#include <temvar/temvar.h>

#include <string>
#include <vector>

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

  // The digest of a folder at its last backup; empty if there was none.
  std::string Digest(const std::string& folder) const;
  void SetDigest(const std::string& folder, const std::string& digest);

  void AddRun(const std::string& summary);
  // The last runs, the oldest first.
  std::vector<std::string> Runs() const;

  // Writes the file, and keeps the one before as FILE.last. False if it could not be written.
  bool Save();

 private:
  std::string Text(const char* key) const { return store_->GetString(key, nullptr); }

  TMVUserDefaults* store_;
};

}  // namespace backup

#endif  // EXAMPLES_BACKUP_SETTINGS_H_
