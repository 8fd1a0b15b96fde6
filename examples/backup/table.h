#ifndef EXAMPLES_BACKUP_TABLE_H_
#define EXAMPLES_BACKUP_TABLE_H_

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
};

// Prints what became of each folder, and why not.
Totals PrintTable(std::FILE* out, const std::vector<Folder>& folders);

// "3 packed, 10 unchanged, 0 failed, 0 left"
std::string Summary(const Totals& totals);

}  // namespace backup

#endif  // EXAMPLES_BACKUP_TABLE_H_
