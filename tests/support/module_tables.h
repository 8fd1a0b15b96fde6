#ifndef TEMVAR_TESTS_SUPPORT_MODULE_TABLES_H_
#define TEMVAR_TESTS_SUPPORT_MODULE_TABLES_H_

#include <filesystem>
#include <string>
#include <vector>

namespace temvar::test {

// What a built program or library file says about itself. Read straight from the file, ELF 64 or PE
// 32 and 64, so that a test sees what a loader would see and not what a tool makes of it.
struct ModuleTables {
  std::vector<std::string> exports;  // Names that others may link to, sorted.
  std::vector<std::string> imports;  // Files that the loader brings in first, sorted.
  bool is_pe = false;
  int bits = 0;  // 32 or 64.
};

// Throws std::runtime_error for a file that can't be read or is neither of the two formats, and
// std::out_of_range for tables that point outside of the file.
ModuleTables ReadModuleTables(const std::filesystem::path& file);

}  // namespace temvar::test

#endif  // TEMVAR_TESTS_SUPPORT_MODULE_TABLES_H_
