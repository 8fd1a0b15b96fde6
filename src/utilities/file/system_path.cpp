#include "utilities/file/system_path.h"

#include <string>
#include <string_view>
#include <utility>

#include "platform/win32.h"

namespace temvar {
namespace {

using WideView = std::basic_string_view<TmvWideChar>;

// Makes one folder in one that exists.
int MakeFolder(WideView path) {
  const SystemPath systemPath{WideText(NewText(path))};
  return CreateDirectoryW(systemPath.get(), nullptr) ? 0 : static_cast<int>(GetLastError());
}

// What the shell does, for a path that is too long for it: the folder, else its parents first.
int MakeFoldersOneByOne(WideView path) {
  const int result = MakeFolder(path);
  if (result != static_cast<int>(ERROR_PATH_NOT_FOUND)) return result;
  // No recursion: a path of 32,767 units can have half as many components.
  size_t end = 0;
  while ((end = path.find_first_of(TMV_WIDE("\\/"), end + 1)) != WideView::npos) {
    MakeFolder(path.substr(0, end));
  }
  return MakeFolder(path);
}

}  // namespace

int MakeFolders(WideText path) {
  const ShellPath folder(std::move(path));
  if (folder.fits()) return SHCreateDirectoryExW(nullptr, folder.get(), nullptr);
  WideView text(folder.get());
  // Else the folder would be made as the parent of nothing, and then be found to exist.
  while (text.size() > 1 && (text.back() == TMV_WIDE('\\') || text.back() == TMV_WIDE('/'))) {
    text.remove_suffix(1);
  }
  return MakeFoldersOneByOne(text);
}

}  // namespace temvar
