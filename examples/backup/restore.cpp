#include "restore.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "stored_names.h"
#include "support/text.h"

namespace backup {

namespace {

namespace fs = std::filesystem;

// A rename replaces a file on some systems and not on others.
void MoveTo(const fs::path& from, const fs::path& to) {
  if (fs::exists(fs::symlink_status(to))) {
    throw std::runtime_error(support::Utf8FromPath(to) + " is there already");
  }
  fs::create_directories(to.parent_path());
  fs::rename(from, to);
}

class Restorer {
 public:
  Restorer(const fs::path& archive, const fs::path& target)
      : archive_(archive),
        target_(target),
        unpacked_(WorkFolder(target) / "unpacked" / archive.stem()),
        numbered_(WorkFolder(target) / "numbered" / archive.stem()) {}

  void Unpack() const {
    fs::create_directories(unpacked_.parent_path());
    const std::string from = support::Utf8FromPath(archive_);
    // An absolute path with the separators of the system, as the library takes it.
    fs::path into = unpacked_;
    const std::u8string text = into.make_preferred().u8string();
    if (!TmvUtilityUnzip()->ExtractArchive(from.c_str(),
                                           std::string(text.begin(), text.end()).c_str())) {
      throw std::runtime_error(from + " can't be unpacked");
    }
  }

  void Place(tmv::JobContext& context) const {
    // Out of the way first: the backup may hold a folder of that name.
    MoveTo(unpacked_ / "_backup", numbered_);
    const StoredNames stored = ReadNames(numbered_ / fs::path(kNamesEntry).filename());
    for (const auto& [number, name] : stored.names) {
      if (!context.KeepGoing()) return;
      MoveTo(numbered_ / fs::path(number).filename(), unpacked_ / support::PathFromUtf8(name));
    }
    if (!stored.folder.empty()) {
      MoveTo(unpacked_, target_ / support::PathFromUtf8(stored.folder));
      return;
    }
    // The list is made first: a folder is not walked while it changes.
    const std::vector<fs::directory_entry> entries(fs::directory_iterator(unpacked_), {});
    for (const fs::directory_entry& entry : entries) {
      MoveTo(entry.path(), target_ / entry.path().filename());
    }
  }

 private:
  fs::path archive_;
  fs::path target_;
  fs::path unpacked_;
  fs::path numbered_;
};

}  // namespace

// Beside the target and not in it: there it could be in the way of a folder of the backup.
fs::path WorkFolder(const fs::path& target) {
  fs::path folder = target;
  folder += ".restoring";
  return folder;
}

size_t AddArchives(tmv::Job& job, const fs::path& backup, const fs::path& target) {
  std::vector<fs::path> archives;
  for (const fs::directory_entry& entry : fs::directory_iterator(backup)) {
    if (entry.path().extension() == ".zip" && entry.is_regular_file()) {
      archives.push_back(entry.path());
    }
  }
  std::sort(archives.begin(), archives.end());
  for (const fs::path& archive : archives) {
    const Restorer restorer(archive, target);
    job.AddLane(support::Utf8FromPath(archive.filename()))
        .StopAtFailure()
        .Then("unpack", [restorer] { restorer.Unpack(); })
        .Then("place", [restorer](tmv::JobContext& context) { restorer.Place(context); });
  }
  return archives.size();
}

}  // namespace backup
