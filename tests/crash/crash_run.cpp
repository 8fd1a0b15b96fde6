#include "crash/crash_run.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "support/zip_file.h"

namespace temvar_test {
namespace {

std::string ReadAll(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace

CrashRun::CrashRun(FolderKind kind) : folder_(kind) {
  std::filesystem::create_directories(Folder() / "dumps");
}

std::string CrashRun::DumpDirectory() const {
  const std::filesystem::path directory = Folder() / "dumps" / "";
  return Utf8(std::filesystem::path(directory).make_preferred());
}

void CrashRun::Start(const std::string& way, const std::vector<std::string>& options,
                     const std::string& directory) {
  std::vector<std::string> arguments = {way, directory.empty() ? DumpDirectory() : directory,
                                        Utf8(Folder() / "log")};
  arguments.insert(arguments.end(), options.begin(), options.end());
  end_ = RunChild(ProgramFolder() / "crash_child", arguments, Folder() / "output");
}

std::vector<std::string> CrashRun::Lines(const std::string& first) const {
  std::vector<std::string> lines;
  std::istringstream log(ReadAll(Folder() / "log"));
  for (std::string line; std::getline(log, line);) {
    if (line.rfind(first + " ", 0) == 0) lines.push_back(line.substr(first.size() + 1));
  }
  return lines;
}

std::vector<std::filesystem::path> CrashRun::Files(const std::string& extension) const {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(Folder() / "dumps")) {
    if (entry.path().extension() == extension) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

uint64_t CrashRun::FaultAddress() const {
  const std::vector<std::string> lines = Lines("fault");
  return lines.empty() ? 0 : std::stoull(lines.front());
}

std::string CrashRun::Describe() const {
  std::ostringstream text;
  text << "signal " << end_.signal << ", status " << std::hex << end_.status << std::dec
       << (end_.timed_out ? ", timed out" : "") << "\nlog:\n"
       << ReadAll(Folder() / "log") << "output:\n"
       << ReadAll(Folder() / "output") << "files:\n";
  for (const auto& entry : std::filesystem::recursive_directory_iterator(Folder())) {
    text << Utf8(entry.path()) << '\n';
  }
  return text.str();
}

std::vector<std::string> EntryNames(const std::filesystem::path& archive) {
  std::vector<std::string> names;
  for (const ZipEntry& entry : ReadZip(ReadAll(archive))) names.push_back(entry.name);
  return names;
}

}  // namespace temvar_test
