#ifndef EXAMPLES_JOB_RUNNER_WORK_H_
#define EXAMPLES_JOB_RUNNER_WORK_H_

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace job_runner {

// What the main thread may read while the job runs, beside what the job itself says.
struct Progress {
  std::atomic<uint64_t> bytes{0};
};

// One file: the work of one callable, which writes the results; the main thread reads them after
// the end of the job.
struct FileWork {
  enum class Outcome { kNotRun, kDone, kFailed };

  std::filesystem::path path;

  Outcome outcome = Outcome::kNotRun;
  uint64_t bytes = 0;
  uint64_t lines = 0;
  uint32_t crc = 0;
};

// One folder: the work of one lane, whose files are read in this order.
struct PackageWork {
  std::string name;
  std::vector<FileWork> files;
};

// The path of the file, for people.
std::string NameOf(const FileWork& file);

// The files below `paths`, one entry for each folder that has any. Hidden folders and folders named
// "build" below a path are left out, and so is anything but files and folders; links are not
// followed. A path that can't be read stays in as a file, so that its callable fails and is
// reported.
std::vector<PackageWork> CollectWork(const std::vector<std::filesystem::path>& paths);

}  // namespace job_runner

#endif  // EXAMPLES_JOB_RUNNER_WORK_H_
