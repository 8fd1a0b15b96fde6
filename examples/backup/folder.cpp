#include "folder.h"

#include <temvar/temvar.h>

#include <algorithm>

#include "support/text.h"

namespace backup {
namespace {

namespace fs = std::filesystem;

// As the library takes paths: UTF-8, with the system's own separators.
std::string LibraryPath(fs::path path) {
  const std::u8string text = path.make_preferred().u8string();
  return std::string(text.begin(), text.end());
}

class Lister {
 public:
  Lister(const fs::path& source, const fs::path& destination, const std::string& exclusions)
      : source_(source), destination_(destination), exclusions_(exclusions) {}

  std::vector<Folder> List() {
    const std::vector<fs::directory_entry> entries = Entries(source_);
    Folder own = MakeFolder(NameForOwnFiles());
    std::vector<Folder> folders;
    for (const fs::directory_entry& entry : entries) {
      if (IsFolder(entry)) {
        Folder folder = MakeFolder(support::Utf8FromPath(entry.path().filename()));
        if (!IsLeftOut(entry.path())) AddBelow(folder, entry.path(), entry.path());
        if (!folder.files.empty()) folders.push_back(std::move(folder));
      } else {
        AddFile(own, entry, source_);
      }
    }
    if (!own.files.empty()) folders.push_back(std::move(own));
    return folders;
  }

 private:
  static std::vector<fs::directory_entry> Entries(const fs::path& folder) {
    std::vector<fs::directory_entry> entries(fs::directory_iterator(folder), {});
    std::sort(entries.begin(), entries.end());
    return entries;
  }

  // For the files that lie in the source itself: a name that no folder there has.
  std::string NameForOwnFiles() const {
    std::string name = "_files";
    while (fs::exists(source_ / name)) name.insert(0, "_");
    return name;
  }

  bool IsFolder(const fs::directory_entry& entry) const {
    return entry.symlink_status().type() == fs::file_type::directory;
  }

  bool IsLeftOut(const fs::path& folder) const {
    const std::string name = support::Utf8FromPath(folder.filename());
    return folder == destination_ || exclusions_.find(';' + name + ';') != std::string::npos;
  }

  Folder MakeFolder(const std::string& name) const {
    Folder folder;
    folder.name = name;
    const std::string base = LibraryPath(destination_ / support::PathFromUtf8(name));
    folder.archive = base + ".zip";
    folder.unfinished = base + ".zip.unfinished";
    folder.unpacked = base + ".zip.unpacked";
    return folder;
  }

  void AddBelow(Folder& folder, const fs::path& directory, const fs::path& root) const {
    for (const fs::directory_entry& entry : Entries(directory)) {
      if (IsFolder(entry)) {
        if (!IsLeftOut(entry.path())) AddBelow(folder, entry.path(), root);
      } else {
        AddFile(folder, entry, root);
      }
    }
  }

  void AddFile(Folder& folder, const fs::directory_entry& entry, const fs::path& root) const {
    if (entry.symlink_status().type() != fs::file_type::regular) return;
    File file;
    file.path = LibraryPath(entry.path());
    if (TmvUtilityFile()->ExtensionInList(file.path.c_str(), exclusions_.c_str())) return;
    file.name = support::Utf8FromPath(entry.path().lexically_relative(root));
    file.bytes = entry.file_size();
    folder.bytes += file.bytes;
    folder.files.push_back(std::move(file));
  }

  const fs::path& source_;
  const fs::path& destination_;
  const std::string& exclusions_;
};

}  // namespace

std::vector<Folder> ListFolders(const fs::path& source, const fs::path& destination,
                                const std::string& exclusions) {
  return Lister(source, destination, exclusions).List();
}

void RemoveLeftovers(const Folder& folder) {
  TMVUtilityFile* const files = TmvUtilityFile();
  files->RemoveFile(folder.unfinished.c_str());
  if (files->PathExists(folder.unpacked.c_str())) {
    files->DeleteDirectoryTree(folder.unpacked.c_str());
  }
}

}  // namespace backup
