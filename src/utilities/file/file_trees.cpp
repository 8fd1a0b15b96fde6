// Directory trees.
#include <memory>
#include <string>
#include <string_view>
#include <utility>

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
  if (length > 0 && wide.get()[length - 1] == TMV_WIDE('\\')) wide.get()[--length] = TMV_WIDE('\0');
  // What is left of "" and of "C:\" would be the current directory to the shell.
  if (length == 0 || wide.get()[length - 1] == TMV_WIDE(':')) return false;
  const ShellPath tree(std::move(wide));
  return tree.fits() &&
         RunShellOperation(FO_DELETE, tree.get(), nullptr, FOF_SILENT | FOF_NOCONFIRMATION);
}

bool TMVUtilityFileImpl::CopyDirectoryTree(const char* source, const char* destination) {
  const ShellPath from(source);
  const ShellPath to(destination);
  return from.fits() && to.fits() &&
         RunShellOperation(FO_COPY, from.get(), to.get(),
                           FOF_SILENT | FOF_NOCONFIRMATION | FOF_NOCONFIRMMKDIR);
}

bool TMVUtilityFileImpl::CreateDirectoryPath(const char* path) {
  return MakeFolders(ToWide(path)) == 0;
}

uint64_t TMVUtilityFileImpl::DirectorySize(const char* path, uint64_t total) {
  const WideText wide = ToWide(path);
  // An empty path would list the root of the disk.
  if (*wide == TMV_WIDE('\0')) return total;
  WideString prefix(wide.get());
  prefix += TMV_WIDE('\\');
  // On the heap, so that a deep tree doesn't eat up the stack.
  const auto data = std::make_unique<WIN32_FIND_DATAW>();
  const WideString pattern = prefix + TMV_WIDE('*');
  const SystemPath system_pattern{WideText(NewText(WideView(pattern)))};
  const FindHandle find(system_pattern.get(), data.get());
  if (!find.IsOpen()) return total;
  do {
    const WideView name(data->cFileName);
    if (name == TMV_WIDE(".") || name == TMV_WIDE("..")) continue;
    if ((data->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
      total += SizeOf(*data);
    } else {
      const NarrowText inner = ToUtf8((prefix + data->cFileName).c_str());
      total = TmvUtilityFile()->DirectorySize(inner.get(), total);
    }
  } while (FindNextFileW(find.get(), data.get()));
  return total;
}

}  // namespace temvar
