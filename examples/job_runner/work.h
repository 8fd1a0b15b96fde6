#ifndef EXAMPLES_JOB_RUNNER_WORK_H_
#define EXAMPLES_JOB_RUNNER_WORK_H_

#include <atomic>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

namespace job_runner {

// What the main thread may read while the job runs.
struct Progress {
  std::atomic<uint64_t> filesDone{0};
  std::atomic<uint64_t> filesFailed{0};
  std::atomic<uint64_t> bytes{0};
};

// One file: the work of one task. The task's worker writes the results; the main thread reads them
// when the pool has stopped.
struct FileWork {
  enum class Outcome { kNotRun, kDone, kFailed };

  std::filesystem::path path;

  Outcome outcome = Outcome::kNotRun;
  std::exception_ptr error;
  uint64_t bytes = 0;
  uint64_t lines = 0;
  uint32_t crc = 0;
};

// One folder: the work of one package, whose files are read in this order.
struct PackageWork {
  std::string name;
  std::vector<FileWork> files;
};

// The files below `paths`, one entry for each folder that has any. Hidden folders and folders named
// "build" below a path are left out, and so is what is neither file nor folder; links are not
// followed. A path that can't be read stays in as a file, so that its task fails and is reported.
std::vector<PackageWork> CollectWork(const std::vector<std::filesystem::path>& paths);

}  // namespace job_runner

#endif  // EXAMPLES_JOB_RUNNER_WORK_H_
