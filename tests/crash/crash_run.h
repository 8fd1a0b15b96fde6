#ifndef TEMVAR_TESTS_CRASH_CRASH_RUN_H_
#define TEMVAR_TESTS_CRASH_CRASH_RUN_H_

#include <filesystem>
#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/minidump_reader.h"
#include "support/work_folder.h"

namespace temvar_test {

// One crash of crash_child, in a folder of its own, and what it left.
class CrashRun {
 public:
  explicit CrashRun(FolderKind kind = FolderKind::kPlain);

  // Crashes in the way called `way` and waits for the end. `directory` stands for the dump
  // directory, which is made; others can be named below Folder().
  void Start(const std::string& way, const std::vector<std::string>& options = {},
             const std::string& directory = "");

  const ChildEnd& End() const { return end_; }
  const std::filesystem::path& Folder() const { return folder_.path(); }

  // The dump directory with its separator, as the child was given it.
  std::string DumpDirectory() const;

  // What follows the word `first` in the lines of the child's log that begin with it.
  std::vector<std::string> Lines(const std::string& first) const;

  // Files in the dump directory with this extension, in the order of their names.
  std::vector<std::filesystem::path> Files(const std::string& extension) const;
  std::vector<std::filesystem::path> Dumps() const { return Files(".dmp"); }
  std::vector<std::filesystem::path> Archives() const { return Files(".zip"); }

  // Where the function lies that crashes, as the child has logged it; 0 for none.
  uint64_t FaultAddress() const;

  // End, log, output and files, for the message of a failed check.
  std::string Describe() const;

 private:
  WorkFolder folder_;
  ChildEnd end_;
};

// Names of the files in a zip archive.
std::vector<std::string> EntryNames(const std::filesystem::path& archive);

}  // namespace temvar_test

#endif  // TEMVAR_TESTS_CRASH_CRASH_RUN_H_
