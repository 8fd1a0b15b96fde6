#include "archives/destination.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string_view>
#include <utility>

#include "archives/entry_name.h"
#include "platform/win32.h"
#include "utilities/file/system_path.h"
#include "utilities/string/text.h"

namespace temvar {
namespace {

// Length of what both folders have in common, up to and with a separator.
size_t CommonLength(std::string_view a, std::string_view b) {
  const size_t most = std::min(a.size(), b.size());
  const auto difference =
      std::mismatch(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(most), b.begin());
  return LastComponent(a.substr(0, static_cast<size_t>(difference.first - a.begin())));
}

size_t Components(std::string_view folder) {
  return static_cast<size_t>(std::count(folder.begin(), folder.end(), '\\'));
}

int MakeFolderAt(const std::string& full) { return MakeFolders(ToWide(full.c_str())); }

bool IsFolder(const std::string& full) {
  return LookAlong(SystemPath(full.c_str()).get(), 1).kind == ComponentKind::kFolder;
}

}  // namespace

Destination::Destination(std::string prefix, const char* archive)
    : prefix_(std::move(prefix)), archivePath_(archive) {
  if (CreateDirectoryW(SystemPath(prefix_.c_str()).get(), nullptr)) fresh_ = "";
  IdentifyArchive();
}

Stream Destination::Open(const std::string& path) {
  const std::string_view folder = std::string_view(path).substr(0, LastComponent(path));
  const std::string full = FullPath(path);
  ComponentKind kind = ComponentKind::kFolder;
  const bool isFresh = IsFresh(folder);
  if (!isFresh) {
    kind = LookAt(folder);
    if (kind == ComponentKind::kLink || kind == ComponentKind::kFile) return nullptr;
    if (kind == ComponentKind::kFolder && !IsFree(full)) return nullptr;
  }
  const SystemPath wide(full.c_str());
  Stream output(Opened(_wfopen(wide.get(), TMV_WIDE("wb"))));
  if (output != nullptr || folder.empty() || errno != ENOENT) return output;
  // In a fresh folder nothing has been looked at yet.
  if (isFresh) kind = LookAt(folder);
  if (kind == ComponentKind::kMissing && MakeMissing(folder)) {
    output.reset(Opened(_wfopen(wide.get(), TMV_WIDE("wb"))));
  }
  return output;
}

bool Destination::MakeFolder(const std::string& path) {
  const ComponentKind kind = LookAt(path);
  if (kind == ComponentKind::kLink) return false;
  const std::string full = FullPath(path.substr(0, path.empty() ? 0 : path.size() - 1));
  if (kind == ComponentKind::kMissing && MakeFolderAt(full) == 0) SetMade(path);
  return true;
}

bool Destination::IsFresh(std::string_view folder) const {
  return fresh_ && folder.starts_with(*fresh_);
}

ComponentKind Destination::LookAt(std::string_view folder) {
  const size_t common = CommonLength(folder, known_);
  if (common == folder.size()) return ComponentKind::kFolder;
  // The folder's own text has no separator at its end for the system.
  const std::string full = prefix_ + std::string(folder.substr(0, folder.size() - 1));
  const size_t count = Components(folder.substr(common));
  const Way way = LookAlong(SystemPath(full.c_str()).get(), count);
  if (way.folders == 0) return way.kind;
  // What was found to be folders is known now.
  size_t end = common;
  for (size_t i = 0; i < way.folders; ++i) end = folder.find('\\', end) + 1;
  known_ = folder.substr(0, end);
  return way.kind;
}

bool Destination::IsFree(const std::string& full) {
  const SystemPath path(full.c_str());
  const ComponentKind kind = LookAlong(path.get(), 1).kind;
  if (kind == ComponentKind::kMissing) return true;
  if (kind == ComponentKind::kLink) return false;
  // In doubt the file is the archive, unless that one's file system identifies no file at all.
  if (!archive_) IdentifyArchive();
  FileIdentity identity;
  return !archive_ || (IdentifyFile(path.get(), &identity) && identity != *archive_);
}

void Destination::IdentifyArchive() {
  FileIdentity identity;
  if (IdentifyFile(SystemPath(archivePath_.c_str()).get(), &identity)) archive_ = identity;
}

bool Destination::MakeMissing(std::string_view folder) {
  const std::string whole = FullPath(std::string(folder.substr(0, folder.size() - 1)));
  bool isMade = MakeFolderAt(whole) == 0;
  // One after the other, from below the destination to the first that can't be made.
  for (size_t end = prefix_.size(); !isMade; ++end) {
    end = std::min(whole.find('\\', end), whole.size());
    const std::string part = whole.substr(0, end);
    const int result = MakeFolderAt(part);
    // The line is documented for a result of -1. The function returns error codes, which are never
    // negative, so it is not printed. The test after it ends the loop either way.
    if (result == -1 && errno == ENOENT) {
      std::printf("couldn't create directory %s\n", part.c_str());
    }
    if (result != 0 && !IsFolder(part)) return false;
    isMade = end == whole.size();
  }
  SetMade(folder);
  return true;
}

void Destination::SetMade(std::string_view folder) {
  if (!IsFresh(folder)) fresh_ = folder;
  known_ = folder;
}

}  // namespace temvar
