#include "archives/utility_zip_impl.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/ways.h"
#include "platform/win32.h"
#include "temvar/utility_string.h"
#include "utilities/file/owned_handles.h"
#include "utilities/file/system_path.h"
#include "utilities/string/text.h"

namespace temvar {
namespace {

using WideString = std::basic_string<TmvWideChar>;
using WideView = std::basic_string_view<TmvWideChar>;

// Takes a file's path and the name that it gets in the archive.
using FileVisitor = std::function<void(const char* path, const char* name)>;

SystemPath InSystemForm(const WideString& path) {
  return SystemPath(WideText(NewText(WideView(path))));
}

bool IsSeparator(TmvWideChar unit) { return unit == TMV_WIDE('/') || unit == TMV_WIDE('\\'); }

bool IsSelfOrParent(const TmvWideChar* name) {
  const WideView text(name);
  return text == TMV_WIDE(".") || text == TMV_WIDE("..");
}

// Bytes that a path loses to become a name: the root's and those of a separator after it.
size_t CutOf(const char* root) {
  const size_t length = std::strlen(root);
  const bool hasSeparator = length != 0 && (root[length - 1] == '/' || root[length - 1] == '\\');
  return hasSeparator ? length : length + 1;
}

// Lists a folder and all below it with a stack of its own: the thread's is too small for folders
// that an archive of some kilobytes can make. A folder is listed to its end before the next one is
// opened, so that depth costs no handles either.
class Walk {
 public:
  Walk(size_t cut, const FileVisitor& visit) : cut_(cut), visit_(visit) {}

  void Run(WideString top) {
    if (top.empty()) return;
    path_ = std::move(top);
    if (!IsSeparator(path_.back())) path_ += TMV_WIDE('/');
    List();
    while (!open_.empty()) {
      Folder& folder = open_.back();
      path_.resize(folder.length);
      if (folder.inner.empty()) {
        open_.pop_back();
        continue;
      }
      const Inner inner = std::move(folder.inner.back());
      folder.inner.pop_back();
      path_ += inner.name;
      if (inner.isLink && !IsNew(path_)) continue;
      path_ += TMV_WIDE('/');
      List();
    }
  }

 private:
  struct Inner {
    WideString name;
    bool isLink;
  };
  // A folder on the way to the current one: the first `length` units of `path_`.
  struct Folder {
    size_t length;
    std::vector<Inner> inner = {};  // Folders in it that are still to come.
    std::optional<FileIdentity> identity = {};
  };

  // Visits the files of the folder `path_` and opens it.
  void List() {
    WIN32_FIND_DATAW data;
    const FindHandle find(InSystemForm(path_ + TMV_WIDE('*')).get(), &data);
    if (!find.IsOpen()) return;
    Folder folder{path_.size()};
    do {
      if (IsSelfOrParent(data.cFileName)) continue;
      if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        const bool isLink = (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        folder.inner.push_back({data.cFileName, isLink});
      } else if ((data.dwFileAttributes & FILE_ATTRIBUTE_DEVICE) == 0) {
        const NarrowText text = ToUtf8((path_ + data.cFileName).c_str());
        visit_(text.get(), text.get() + std::min(cut_, std::strlen(text.get())));
      }
    } while (FindNextFileW(find.get(), &data));
    open_.push_back(std::move(folder));
  }

  // Whether a link leads to a folder that is not being walked, which would never end, and that no
  // other link led to: the ways through links that meet would be more than anybody can list.
  bool IsNew(const WideString& link) {
    FileIdentity target;
    if (!IdentifyFile(InSystemForm(link).get(), &target)) return false;
    for (Folder& folder : open_) {
      if (!folder.identity) {
        const WideString path = path_.substr(0, folder.length);
        folder.identity = FileIdentity{};  // A folder that is gone since equals none.
        IdentifyFile(InSystemForm(path).get(), &*folder.identity);
      }
      if (*folder.identity == target) return false;
    }
    return linked_.insert(target).second;
  }

  const size_t cut_;
  const FileVisitor& visit_;
  WideString path_;
  std::vector<Folder> open_;  // From the top to the folder that is walked now.
  std::set<FileIdentity> linked_;
};

}  // namespace

void TMVUtilityZipImpl::AddDirectory(const char* directory, const char* root) {
  if (TmvUtilityString()->IsNullOrEmpty(directory)) return;
  if (TmvUtilityString()->IsNullOrEmpty(root)) root = directory;
  const FileVisitor add = [this](const char* path, const char* name) {
    if (!filter_ || filter_(path)) AddFile(path, name);
  };
  Walk(CutOf(root), add).Run(ToWide(directory).get());
}

void TMVUtilityZipImpl::AddFile(const char* path, const char* name) {
  if (path == nullptr) return;
  entries_[path] = TmvUtilityString()->SafeString(name);
}

namespace {

TMVUtilityZipImpl* ToImpl(TMVUtilityZip* zip) { return dynamic_cast<TMVUtilityZipImpl*>(zip); }

}  // namespace
}  // namespace temvar

TMVUtilityZip* CreateTmvUtilityZip() { return new temvar::TMVUtilityZipImpl; }

void DestroyTmvUtilityZip(TMVUtilityZip* zip) { delete temvar::ToImpl(zip); }
