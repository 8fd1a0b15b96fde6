#ifndef TESTS_CRASH_CRASH_RUN_H_
#define TESTS_CRASH_CRASH_RUN_H_

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "support/child_process.h"
#include "support/minidump_reader.h"
#include "support/work_folder.h"
#include "support/zip_file.h"

namespace test {

inline std::string ReadAll(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

// One crash of crash_child, in a folder of its own, and what it left.
class CrashRun {
 public:
  explicit CrashRun(FolderKind kind = FolderKind::kPlain) : folder_(kind) {
    std::filesystem::create_directories(Folder() / "dumps");
  }

  // Crashes in the way called `way` and waits for the end. An empty `directory` is the dump
  // directory, which is made; others can be named below Folder().
  void Start(const std::string& way, const std::vector<std::string>& options = {},
             const std::string& directory = "",
             const std::filesystem::path& program = ProgramFolder() / "crash_child") {
    std::vector<std::string> arguments = {way, directory.empty() ? DumpDirectory() : directory,
                                          Utf8(Folder() / "log")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    end_ = RunChild(program, arguments, Folder() / "output");
  }

  const ChildEnd& End() const { return end_; }
  const std::filesystem::path& Folder() const { return folder_.path(); }

  // The dump directory with its separator, as the child was given it.
  std::string DumpDirectory() const {
    std::filesystem::path directory = Folder() / "dumps" / "";
    return Utf8(directory.make_preferred());
  }

  // What follows the word `first` in the lines of the child's log that begin with it.
  std::vector<std::string> Lines(const std::string& first) const {
    std::vector<std::string> lines;
    std::istringstream log(ReadAll(Folder() / "log"));
    for (std::string line; std::getline(log, line);) {
      if (line.rfind(first + " ", 0) == 0) lines.push_back(line.substr(first.size() + 1));
    }
    return lines;
  }

  // Files in the dump directory, in the order of their names.
  std::vector<std::filesystem::path> Dumps() const { return Files(".dmp"); }
  std::vector<std::filesystem::path> Archives() const { return Files(".zip"); }

  // Where the function is that crashes, as the child has logged it; 0 for none.
  uint64_t FaultAddress() const {
    const std::vector<std::string> lines = Lines("fault");
    return lines.empty() ? 0 : std::stoull(lines.front());
  }

  // End, log, output and files, for the message of a failed check.
  std::string Describe() const {
    std::ostringstream text;
    text << "signal " << end_.signal << ", status " << std::hex << end_.status << std::dec
         << (end_.timedOut ? ", timed out" : "") << "\nlog:\n"
         << ReadAll(Folder() / "log") << "output:\n"
         << ReadAll(Folder() / "output") << "files:\n";
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Folder())) {
      text << Utf8(entry.path()) << '\n';
    }
    return text.str();
  }

 private:
  std::vector<std::filesystem::path> Files(const std::string& extension) const {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(Folder() / "dumps")) {
      if (entry.path().extension() == extension) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
  }

  WorkFolder folder_;
  ChildEnd end_;
};

// Names of the files in a zip archive.
inline std::vector<std::string> EntryNames(const std::filesystem::path& archive) {
  std::vector<std::string> names;
  for (const ZipEntry& entry : ReadZip(ReadAll(archive))) names.push_back(entry.name);
  return names;
}

}  // namespace test

#endif  // TESTS_CRASH_CRASH_RUN_H_
