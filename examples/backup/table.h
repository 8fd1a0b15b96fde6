#ifndef EXAMPLES_BACKUP_TABLE_H_
#define EXAMPLES_BACKUP_TABLE_H_

#include <temvar/job.h>

#include <cstdio>
#include <string>
#include <vector>

#include "folder.h"

namespace backup {

struct Totals {
  size_t packed = 0;
  size_t unchanged = 0;
  size_t failed = 0;
  size_t unfinished = 0;
  size_t passedOver = 0;  // Files and folders that could not be read.
};

Totals Count(const std::vector<Folder>& folders);

// Prints what became of each folder, in lines of up to `columns`, what failed and what was passed
// over.
Totals PrintTable(std::FILE* out, size_t columns, const std::vector<Folder>& folders,
                  const std::vector<tmv::JobFailure>& failures);

// One line for each failure: "failed: LANE: message".
void PrintFailures(std::FILE* out, const std::vector<tmv::JobFailure>& failures);

// "3 packed, 10 unchanged, 0 failed, 0 left", and ", 2 passed over" if there are some.
std::string Summary(const Totals& totals);

}  // namespace backup

#endif  // EXAMPLES_BACKUP_TABLE_H_
