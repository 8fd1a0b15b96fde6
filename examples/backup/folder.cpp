#include "folder.h"

#include <temvar/temvar.h>

#include <algorithm>

#include "stored_names.h"
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
    Folder own = MakeFolder(NameForOwnFiles());
    own.holdsOwnFiles = true;
    std::vector<Folder> folders;
    fs::directory_iterator check(source_);  // Throws: without the source there is nothing to do.
    for (const fs::directory_entry& entry : Entries(own, source_)) {
      if (IsFolder(entry)) {
        AddFolder(folders, own, entry.path());
      } else {
        AddFile(own, entry, source_);
      }
    }
    if (HasContent(own)) folders.push_back(std::move(own));
    return folders;
  }

 private:
  static bool HasContent(const Folder& folder) {
    return !folder.files.empty() || !folder.passedOver.empty();
  }

  static void PassOver(Folder& folder, const fs::path& path, const std::string& reason) {
    folder.passedOver.push_back({support::Utf8FromPath(path), reason});
  }

  // In the order of their names, as far as the folder can be read.
  static std::vector<fs::directory_entry> Entries(Folder& folder, const fs::path& directory) {
    std::vector<fs::directory_entry> entries;
    std::error_code error;
    for (fs::directory_iterator it(directory, error), end; !error && it != end;
         it.increment(error)) {
      entries.push_back(*it);
    }
    if (error) PassOver(folder, directory, error.message());
    std::sort(entries.begin(), entries.end());
    return entries;
  }

  // For the files that lie in the source itself: a name that no folder there has.
  std::string NameForOwnFiles() const {
    std::string name = "_files";
    while (fs::exists(source_ / name)) name.insert(0, "_");
    return name;
  }

  static bool IsFolder(const fs::directory_entry& entry) {
    std::error_code error;
    return entry.symlink_status(error).type() == fs::file_type::directory;
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
    folder.namesFile = base + ".zip.names";
    return folder;
  }

  void AddFolder(std::vector<Folder>& folders, Folder& own, const fs::path& path) const {
    try {
      if (IsLeftOut(path)) return;
      Folder folder = MakeFolder(support::Utf8FromPath(path.filename()));
      AddBelow(folder, path, path);
      if (HasContent(folder)) folders.push_back(std::move(folder));
    } catch (const std::exception& error) {
      // On Windows a name can be no UTF-16, and then it has no UTF-8 form.
      PassOver(own, path.parent_path(), std::string("a folder in it: ") + error.what());
    }
  }

  void AddBelow(Folder& folder, const fs::path& directory, const fs::path& root) const {
    for (const fs::directory_entry& entry : Entries(folder, directory)) {
      if (IsFolder(entry)) {
        if (!IsLeftOut(entry.path())) AddBelow(folder, entry.path(), root);
      } else {
        AddFile(folder, entry, root);
      }
    }
  }

  void AddFile(Folder& folder, const fs::directory_entry& entry, const fs::path& root) const {
    try {
      const fs::file_type type = entry.symlink_status().type();
      // It was listed a moment ago. On Windows that is how a path of more than 260 characters
      // shows.
      if (type == fs::file_type::not_found) {
        PassOver(folder, entry.path(), "can't be found; is its path too long?");
      }
      if (type != fs::file_type::regular) return;
      File file;
      file.path = LibraryPath(entry.path());
      if (TmvUtilityFile()->ExtensionInList(file.path.c_str(), exclusions_.c_str())) return;
      file.name = support::Utf8FromPath(entry.path().lexically_relative(root));
      file.stored = IsStorableName(file.name) ? file.name : NumberedName(folder.files.size());
      file.bytes = entry.file_size();
      folder.bytes += file.bytes;
      folder.files.push_back(std::move(file));
    } catch (const std::exception& error) {
      PassOver(folder, entry.path().parent_path(), std::string("a file in it: ") + error.what());
    }
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
  files->RemoveFile(folder.namesFile.c_str());
  if (files->PathExists(folder.unpacked.c_str())) {
    files->DeleteDirectoryTree(folder.unpacked.c_str());
  }
}

}  // namespace backup
