#include "work.h"

#include <algorithm>
#include <map>
#include <set>

#include "support/text.h"

namespace job_runner {

namespace {

namespace fs = std::filesystem;

class Collector {
 public:
  void AddPath(const fs::path& path) {
    std::error_code error;
    if (fs::is_directory(path, error)) {
      AddFolder(path);
    } else {
      AddFile(path);
    }
  }

  std::vector<PackageWork> Take() { return std::move(packages_); }

 private:
  void AddFolder(const fs::path& folder) {
    std::error_code error;
    std::vector<fs::directory_entry> entries;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
      entries.push_back(*it);
    }
    if (error) AddFile(folder);
    std::sort(entries.begin(), entries.end());
    for (const fs::directory_entry& entry : entries) {
      if (entry.symlink_status(error).type() == fs::file_type::regular) AddFile(entry.path());
    }
    for (const fs::directory_entry& entry : entries) {
      if (entry.symlink_status(error).type() != fs::file_type::directory) continue;
      const std::string name = support::Utf8FromPath(entry.path().filename());
      if (name[0] != '.' && name != "build") AddFolder(entry.path());
    }
  }

  // A file that was named twice is read once.
  void AddFile(const fs::path& file) {
    const fs::path path = file.lexically_normal();
    if (!seen_.insert(path).second) return;
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    const auto [place, isNew] = places_.try_emplace(folder, packages_.size());
    if (isNew) packages_.push_back({support::Utf8FromPath(folder), {}});
    FileWork work;
    work.path = path;
    packages_[place->second].files.push_back(std::move(work));
  }

  std::vector<PackageWork> packages_;
  std::map<fs::path, size_t> places_;
  std::set<fs::path> seen_;
};

}  // namespace

std::string NameOf(const FileWork& file) { return support::Utf8FromPath(file.path); }

std::vector<PackageWork> CollectWork(const std::vector<fs::path>& paths) {
  Collector collector;
  for (const fs::path& path : paths) collector.AddPath(path);
  return collector.Take();
}

}  // namespace job_runner
