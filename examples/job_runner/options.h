#ifndef EXAMPLES_JOB_RUNNER_OPTIONS_H_
#define EXAMPLES_JOB_RUNNER_OPTIONS_H_

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace job_runner {

struct Options {
  uint32_t workers = 2;
  bool listFiles = false;
  bool help = false;
  std::vector<std::filesystem::path> paths;
};

class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

extern const char kUsage[];

// Reads the arguments; throws UsageError with a message for the user. Without paths the job is the
// tree of the project itself.
Options ParseOptions(const std::vector<std::string>& arguments);

}  // namespace job_runner

#endif  // EXAMPLES_JOB_RUNNER_OPTIONS_H_
