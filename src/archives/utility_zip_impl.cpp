#include "archives/utility_zip_impl.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/paths.h"
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

// Bytes that a path loses to become a name: the root's and those of a separator behind it.
size_t CutOf(const char* root) {
  const size_t length = std::strlen(root);
  const bool hasSeparator = length != 0 && (root[length - 1] == '/' || root[length - 1] == '\\');
  return hasSeparator ? length : length + 1;
}

class Walk {
 public:
  Walk(size_t cut, const FileVisitor& visit) : cut_(cut), visit_(visit) {}

  void Enter(WideString directory) {
    if (directory.empty()) return;
    if (!IsSeparator(directory.back())) directory += TMV_WIDE('/');
    WIN32_FIND_DATAW data;
    const FindHandle find(InSystemForm(directory + TMV_WIDE('*')).get(), &data);
    if (!find.IsOpen()) return;
    openDirectories_.push_back(directory);
    do {
      if (!IsSelfOrParent(data.cFileName)) Visit(directory + data.cFileName, data);
    } while (FindNextFileW(find.get(), &data));
    openDirectories_.pop_back();
  }

 private:
  void Visit(const WideString& path, const WIN32_FIND_DATAW& data) {
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
      const bool isLink = (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
      if (!isLink || !LeadsBack(path)) Enter(path);
      return;
    }
    const NarrowText text = ToUtf8(path.c_str());
    visit_(text.get(), text.get() + std::min(cut_, std::strlen(text.get())));
  }

  // Whether a link leads to a directory that is being walked: such a walk would never end.
  bool LeadsBack(const WideString& link) const {
    const SystemPath linkPath = InSystemForm(link);
    return std::any_of(openDirectories_.begin(), openDirectories_.end(),
                       [&](const WideString& directory) {
                         return IsSameFile(linkPath.get(), InSystemForm(directory).get());
                       });
  }

  const size_t cut_;
  const FileVisitor& visit_;
  std::vector<WideString> openDirectories_;  // From the first to the one that is listed now.
};

}  // namespace

void TMVUtilityZipImpl::AddDirectory(const char* directory, const char* root) {
  if (TmvUtilityString()->IsNullOrEmpty(directory)) return;
  if (TmvUtilityString()->IsNullOrEmpty(root)) root = directory;
  const FileVisitor add = [this](const char* path, const char* name) { AddFile(path, name); };
  Walk(CutOf(root), add).Enter(ToWide(directory).get());
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
