#include <string_view>

#include "platform/win32.h"
#include "utilities/string/text.h"
#include "utilities/system/utility_sys_impl.h"

namespace temvar {

namespace {

// A path of the system's on its way to UTF-8. The system writes at most MAX_PATH (260) units, which
// leaves room to append to.
class FolderPath {
 public:
  static constexpr DWORD kCapacity = 512;

  TmvWideChar* get() { return units_; }

  void Append(std::basic_string_view<TmvWideChar> text) {
    size_t length = std::basic_string_view<TmvWideChar>(units_).size();
    for (const TmvWideChar unit : text) {
      if (length + 1 == kCapacity) break;
      units_[length++] = unit;
    }
  }

  char* NewUtf8() const { return ToUtf8(units_).release(); }

 private:
  TmvWideChar units_[kCapacity] = {};
};

// A folder that the system doesn't know becomes the temporary one in each operation below, so that
// a host gets a path in every case.
bool GetFolder(int folder, FolderPath& path) {
  return SHGetFolderPathW(nullptr, folder, nullptr, 0, path.get()) == S_OK;
}

}  // namespace

char* TMVUtilitySysImpl::GetAppDataPath() {
  FolderPath path;
  if (!GetFolder(CSIDL_APPDATA | CSIDL_FLAG_CREATE, path)) return GetTempDirectory();
  path.Append(TMV_WIDE("\\"));
  return path.NewUtf8();
}

char* TMVUtilitySysImpl::GetDocumentsPath() {
  FolderPath path;
  if (!SHGetSpecialFolderPathW(nullptr, path.get(), CSIDL_PERSONAL, FALSE)) {
    return GetTempDirectory();
  }
  path.Append(TMV_WIDE("\\"));
  return path.NewUtf8();
}

// The one path to which no backslash is added, since the system's ends in one.
char* TMVUtilitySysImpl::GetTempDirectory() {
  FolderPath path;
  GetTempPathW(FolderPath::kCapacity, path.get());
  return path.NewUtf8();
}

char* TMVUtilitySysImpl::GetDownloadsPath() {
  FolderPath path;
  if (!GetFolder(CSIDL_PROFILE | CSIDL_FLAG_CREATE, path)) return GetTempDirectory();
  // The literal folder below the profile. One that the user has moved isn't followed: the function
  // that knows of it came with Vista.
  path.Append(TMV_WIDE("\\Downloads"));
  if (_waccess(path.get(), 0) != 0 && !CreateDirectoryW(path.get(), nullptr)) {
    return GetTempDirectory();
  }
  path.Append(TMV_WIDE("\\"));
  return path.NewUtf8();
}

}  // namespace temvar
