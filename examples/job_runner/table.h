#ifndef EXAMPLES_JOB_RUNNER_TABLE_H_
#define EXAMPLES_JOB_RUNNER_TABLE_H_

#include <temvar/job.h>

#include <iosfwd>
#include <vector>

#include "work.h"

namespace job_runner {

// Sums over files. `crc` is the CRC-32 of the read files' bytes, one file after the other.
struct Totals {
  uint64_t files = 0;
  uint64_t failed = 0;
  uint64_t notRun = 0;
  uint64_t bytes = 0;
  uint64_t lines = 0;
  uint32_t crc = 0;

  void Add(const FileWork& file);
};

// Prints one row for each package, with `listFiles` one for each file too, and then what failed.
// Returns the sums over everything.
Totals PrintTable(std::ostream& out, const std::vector<PackageWork>& packages,
                  const std::vector<tmv::JobFailure>& failures, bool listFiles);

}  // namespace job_runner

#endif  // EXAMPLES_JOB_RUNNER_TABLE_H_
