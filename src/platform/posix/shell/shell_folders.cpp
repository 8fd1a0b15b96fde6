// The user's folders, where the desktop standards put them.
#include "platform/posix/shell/shell_folders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/posix/text/text_conversion.h"

namespace {

namespace fs = std::filesystem;

std::string Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

// $HOME, else what the user database says; empty if neither knows.
std::string HomeFolder() {
  std::string home = Environment("HOME");
  if (!home.empty()) return home;
  // Far more than glibc suggests (1,024 bytes); a longer record counts as unknown.
  std::vector<char> buffer(16384);
  passwd record;
  passwd* found = nullptr;
  if (getpwuid_r(getuid(), &record, buffer.data(), buffer.size(), &found) != 0 ||
      found == nullptr) {
    return {};
  }
  return record.pw_dir;
}

// A relative path in XDG_CONFIG_HOME is to be ignored, as its standard says.
fs::path ConfigFolder(const fs::path& home) {
  const fs::path folder = Environment("XDG_CONFIG_HOME");
  return folder.is_absolute() ? folder : home / ".config";
}

// The documents folder by the desktop's own list, which has lines such as
// XDG_DOCUMENTS_DIR="$HOME/Dokumente".
fs::path DocumentsFolder(const fs::path& home) {
  constexpr std::string_view kKey = "XDG_DOCUMENTS_DIR=\"";
  constexpr std::string_view kHome = "$HOME/";
  std::ifstream list(ConfigFolder(home) / "user-dirs.dirs");
  for (std::string line; std::getline(list, line);) {
    const size_t end = line.rfind('"');
    if (line.compare(0, kKey.size(), kKey) != 0 || end < kKey.size()) continue;
    const std::string value = line.substr(kKey.size(), end - kKey.size());
    if (value.compare(0, kHome.size(), kHome) == 0) return home / value.substr(kHome.size());
    if (fs::path(value).is_absolute()) return value;
  }
  return home / "Documents";
}

fs::path Folder(int folder) {
  const fs::path home = HomeFolder();
  if (home.empty()) return {};
  switch (folder) {
    case CSIDL_PERSONAL:
      return DocumentsFolder(home);
    case CSIDL_APPDATA:
      return ConfigFolder(home);
    case CSIDL_PROFILE:
      return home;
    default:
      return {};
  }
}

// Writes `folder` to `path`, which has room for MAX_PATH units.
bool WriteFolder(const fs::path& folder, LPWSTR path) {
  std::string text = folder.string();
  // Callers append the separator themselves, and would have two.
  while (text.size() > 1 && text.back() == '/') text.pop_back();
  // Strict: a folder whose name is no UTF-8 would come back as a path to nowhere.
  const int size = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.c_str(), -1, path,
                                       static_cast<int>(MAX_PATH));
  if (size == 0) {
    path[0] = 0;
    return false;
  }
  for (; *path != 0; ++path) {
    if (*path == u'/') *path = u'\\';
  }
  return true;
}

}  // namespace

HRESULT SHGetFolderPathW(HWND, int folder, HANDLE, DWORD, LPWSTR path) {
  if (path == nullptr) return E_FAIL;
  path[0] = 0;
  const fs::path found = Folder(folder & ~CSIDL_FLAG_CREATE);
  std::error_code error;
  if ((folder & CSIDL_FLAG_CREATE) != 0) fs::create_directories(found, error);
  // A folder that can't be made is missed here, so the result of making it needs no look.
  if (!fs::is_directory(found, error)) return E_FAIL;
  return WriteFolder(found, path) ? S_OK : E_FAIL;
}

BOOL SHGetSpecialFolderPathW(HWND window, LPWSTR path, int folder, BOOL create) {
  const int flag = create != FALSE ? CSIDL_FLAG_CREATE : 0;
  return SHGetFolderPathW(window, folder | flag, nullptr, 0, path) == S_OK;
}
