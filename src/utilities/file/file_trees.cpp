// Directory trees.
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/paths.h"
#include "platform/ways.h"
#include "utilities/file/owned_handles.h"
#include "utilities/file/system_path.h"
#include "utilities/file/utility_file_impl.h"
#include "utilities/string/text.h"

namespace temvar {
namespace {

using WideString = std::basic_string<TmvWideChar>;
using WideView = std::basic_string_view<TmvWideChar>;

uint64_t SizeOf(const WIN32_FIND_DATAW& data) {
  return (uint64_t{data.nFileSizeHigh} << 32) | data.nFileSizeLow;
}

// The walk of DirectorySize. No recursion and one open listing at a time, since a tree can be
// deeper than a thread's stack and than the number of files that a process may have open.
class SizeWalk {
 public:
  explicit SizeWalk(WideString top) { folders_.push_back({std::move(top), false}); }

  uint64_t Run() {
    while (!folders_.empty()) {
      const Folder folder = std::move(folders_.back());
      folders_.pop_back();
      List(folder);
    }
    return total_;
  }

 private:
  struct Folder {
    WideString path;
    bool belowLink;  // Whether a link was followed on the way here.
  };

  void List(const Folder& folder) {
    const WideString prefix = folder.path + TMV_WIDE('\\');
    // A folder that can't be listed counts as empty: the operation has no result for a failure.
    const FindHandle find(InSystemForm(prefix + TMV_WIDE('*')).get(), &data_);
    if (!find.IsOpen()) return;
    do {
      const WideView name(data_.cFileName);
      if (name == TMV_WIDE(".") || name == TMV_WIDE("..")) continue;
      if ((data_.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        total_ += SizeOf(data_);
        continue;
      }
      const bool isLink = (data_.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
      WideString path = prefix + data_.cFileName;
      if (isLink && !MayFollow(path, folder)) continue;
      folders_.push_back({std::move(path), folder.belowLink || isLink});
    } while (FindNextFileW(find.get(), &data_));
  }

  // Links back to a folder above would make the walk endless. And folders that link to each other
  // have more ways through them than any walk could take, so a folder below a link is entered
  // once; links in the tree itself are each followed.
  bool MayFollow(const WideString& link, const Folder& folder) {
    FileIdentity target;
    if (!IdentifyFile(InSystemForm(link).get(), &target)) return false;
    WideString above = folder.path;
    for (;;) {
      FileIdentity folderAbove;
      if (IdentifyFile(InSystemForm(above).get(), &folderAbove) && folderAbove == target) {
        return false;
      }
      const size_t separator = above.find_last_of(TMV_WIDE("/\\"));
      if (separator == WideString::npos || above.size() <= 1) break;
      above.resize(separator);
    }
    return !folder.belowLink || metBelowLinks_.insert(target).second;
  }

  static SystemPath InSystemForm(const WideString& path) {
    return SystemPath(WideText(NewText(WideView(path))));
  }

  std::vector<Folder> folders_;  // To be listed yet.
  std::set<FileIdentity> metBelowLinks_;
  WIN32_FIND_DATAW data_ = {};
  uint64_t total_ = 0;
};

bool RunShellOperation(UINT operation, const TmvWideChar* from, const TmvWideChar* to, int flags) {
  SHFILEOPSTRUCTW request{};
  request.wFunc = operation;
  request.pFrom = from;
  request.pTo = to;
  request.fFlags = static_cast<FILEOP_FLAGS>(flags);
  return SHFileOperationW(&request) == 0;
}

}  // namespace

bool TMVUtilityFileImpl::DeleteDirectoryTree(const char* path) {
  if (path == nullptr) return false;
  WideText wide = ToWide(path);
  size_t length = WideView(wide.get()).size();
  // One backslash only, as documented: a second one or a slash is left to the shell.
  if (length > 0 && wide.get()[length - 1] == TMV_WIDE('\\')) wide.get()[--length] = TMV_WIDE('\0');
  // What is left of "" and of "C:\" would be the current directory to the shell.
  if (length == 0 || wide.get()[length - 1] == TMV_WIDE(':')) return false;
  const ShellPath tree(std::move(wide));
  // A root too, in whatever way it is written: "C:/", "\\", "C:\\folder\\..".
  return tree.fits() && !IsRootPath(tree.get()) &&
         RunShellOperation(FO_DELETE, tree.get(), nullptr, FOF_SILENT | FOF_NOCONFIRMATION);
}

bool TMVUtilityFileImpl::CopyDirectoryTree(const char* source, const char* destination) {
  // Trailing separators stay here: what they mean for a destination is the shell's decision.
  const ShellPath from(source);
  const ShellPath to(destination);
  return from.fits() && to.fits() &&
         RunShellOperation(FO_COPY, from.get(), to.get(),
                           FOF_SILENT | FOF_NOCONFIRMATION | FOF_NOCONFIRMMKDIR);
}

bool TMVUtilityFileImpl::CreateDirectoryPath(const char* path) {
  // A folder that is there already counts as a failure, as it does for the shell.
  return MakeFolders(ToWide(path)) == 0;
}

uint64_t TMVUtilityFileImpl::DirectorySize(const char* path, uint64_t total) {
  const WideText wide = ToWide(path);
  // An empty path would list the root of the disk.
  if (*wide == TMV_WIDE('\0')) return total;
  // The start value lets a host sum several trees.
  SizeWalk walk(wide.get());
  return total + walk.Run();
}

}  // namespace temvar
