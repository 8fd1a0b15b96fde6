#ifndef EXAMPLES_BACKUP_OPTIONS_H_
#define EXAMPLES_BACKUP_OPTIONS_H_

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace backup {

// What the command line says; what it leaves open comes from the settings.
struct Options {
  bool again = false;                  // Back up the folder of the last time.
  std::optional<std::string> restore;  // Unpack the archives of this folder instead.
  std::optional<std::string> source;
  std::optional<std::string> destination;
  std::optional<std::string> exclusions;
  std::optional<int32_t> workers;
  std::optional<std::string> settingsFile;
  bool history = false;
  bool help = false;
};

class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

extern const char kUsage[];
inline constexpr int32_t kMostWorkers = 64;

// Throws UsageError with a message for the user.
Options ParseOptions(const std::vector<std::string>& arguments);

}  // namespace backup

#endif  // EXAMPLES_BACKUP_OPTIONS_H_
