// Makes the system's file calls fail, below the C runtime, so that what the library calls itself
// and what the runtime calls for it fail alike.
#ifndef TESTS_FAULTS_FILE_FAULTS_H_
#define TESTS_FAULTS_FILE_FAULTS_H_

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>

namespace test {

// Kinds of calls. Creates are opens of files that may be new; changes are flushes, sizes, times,
// new folders and deletions; looks are attributes, listings, positions and locks.
inline constexpr unsigned kOpens = 1, kCreates = 2, kReads = 4, kWrites = 8, kCloses = 16,
                          kRenames = 32, kChanges = 64, kLooks = 128, kAllCalls = 255;
inline constexpr int kHalf = -1;  // An "error": half of the bytes are moved.

struct FileFault {
  const char* name;
  int error;  // As errno has it.
  unsigned calls;
  bool stays;  // Whether all later calls of these kinds fail too.
};

struct FaultRun {
  FileFault fault;
  int n;            // The call of these kinds that fails.
  int renames = 0;  // What renames fail with besides: EXDEV all, EINVAL those with options.
  int seen = 0;
  int failed = 0;        // Calls that failed.
  int leftOpen = 0;      // Files that stayed open.
  bool able = true;      // False if the system doesn't let calls fail.
  std::string cut = {};  // The first file that a write to it failed for.

  // The error of the next call; 0 if it passes.
  int ErrorFor(unsigned kind, bool hasOptions) {
    const bool isNext = (kind & fault.calls) != 0 && ++seen >= n && (seen == n || fault.stays);
    if (isNext) return ++failed, fault.error;
    return kind == kRenames && (renames == EXDEV || hasOptions) ? renames : 0;
  }
};

// Runs `operation` on a thread whose calls on files below `folder`, and whose child processes',
// fail as `run` says; and completes `run`.
void RunWithFault(const std::filesystem::path& folder, FaultRun& run,
                  const std::function<void()>& operation);

// Puts an empty disk of that many bytes at a folder, where the system lets the test do so; none for
// 0 bytes.
bool PutSmallDisk(const std::filesystem::path& folder, size_t bytes);

}  // namespace test

#endif  // TESTS_FAULTS_FILE_FAULTS_H_
