#include "platform/posix/system.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "platform/posix/errors.h"
#include "platform/posix/text/text_conversion.h"

namespace {

// The kernel's path as Windows would report it.
std::u16string ToWindowsPath(const std::string& path) {
  std::u16string wide(path.size() + 1, u'\0');
  const int size =
      MultiByteToWideChar(CP_UTF8, 0, path.c_str(), -1, wide.data(), static_cast<int>(wide.size()));
  // No more units than bytes, so the first room was enough. Without strictness a name that is no
  // UTF-8 still gets a path, if not one that opens.
  wide.resize(size > 0 ? static_cast<size_t>(size) - 1 : 0);
  for (char16_t& unit : wide) {
    if (unit == u'/') unit = u'\\';
  }
  return wide;
}

std::string ExecutablePath() {
  char path[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof(path));
  if (length < 0) {
    temvar::posix::SetLastErrorFromErrno();
    return {};
  }
  return std::string(path, static_cast<size_t>(length));
}

int CollectName(dl_phdr_info* info, size_t, void* names) {
  static_cast<std::vector<std::string>*>(names)->emplace_back(info->dlpi_name);
  return 0;
}

// The path of the loaded object that dlopen calls `module`. Handles are compared and never looked
// into, so that any value is harmless.
std::string ModulePath(HMODULE module) {
  std::vector<std::string> names;
  dl_iterate_phdr(CollectName, &names);
  for (const std::string& name : names) {
    const bool isExecutable = name.empty();
    void* const handle = dlopen(isExecutable ? nullptr : name.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (handle == nullptr) continue;
    // RTLD_NOLOAD counted a reference up, which must not keep the object loaded.
    dlclose(handle);
    if (handle != module) continue;
    if (isExecutable) return ExecutablePath();
    // The name is as dlopen was given it, which may be relative.
    char path[PATH_MAX];
    return realpath(name.c_str(), path) != nullptr ? path : name;
  }
  SetLastError(ERROR_MOD_NOT_FOUND);
  return {};
}

}  // namespace

DWORD GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD capacity) {
  const std::u16string name =
      ToWindowsPath(module == nullptr ? ExecutablePath() : ModulePath(module));
  if (name.empty() || capacity == 0) return 0;
  const size_t length = name.copy(path, capacity - 1);
  path[length] = 0;
  if (length == name.size()) return static_cast<DWORD>(length);
  SetLastError(ERROR_INSUFFICIENT_BUFFER);
  return capacity;
}

// Neither finds anything: the library looks up functions that some versions of Windows lack, and
// has a way without each.
HMODULE GetModuleHandleA(LPCSTR) {
  SetLastError(ERROR_MOD_NOT_FOUND);
  return nullptr;
}

FARPROC GetProcAddress(HMODULE, LPCSTR) {
  SetLastError(ERROR_PROC_NOT_FOUND);
  return nullptr;
}

DWORD GetTempPathW(DWORD capacity, LPWSTR path) {
  const char* const folder = std::getenv("TMPDIR");
  std::u16string name = ToWindowsPath(folder != nullptr && *folder != '\0' ? folder : "/tmp");
  if (name.empty()) return 0;
  if (name.back() != u'\\') name += u'\\';
  // The room needed, terminator included, where success returns the length without it: as on
  // Windows.
  if (capacity <= name.size()) return static_cast<DWORD>(name.size() + 1);
  name.copy(path, name.size());
  path[name.size()] = 0;
  return static_cast<DWORD>(name.size());
}

BOOL GetVersionExA(OSVERSIONINFOA* version) {
  const DWORD size = version == nullptr ? 0 : version->dwOSVersionInfoSize;
  if (size != sizeof(OSVERSIONINFOA) && size != sizeof(OSVERSIONINFOEXA)) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return FALSE;
  }
  constexpr DWORD kPlatformNt = 2;
  std::memset(reinterpret_cast<char*>(version) + sizeof(DWORD), 0, size - sizeof(DWORD));
  // Windows 8, which newer systems report to programs that declare no compatibility.
  version->dwMajorVersion = 6;
  version->dwMinorVersion = 2;
  version->dwBuildNumber = 9200;
  version->dwPlatformId = kPlatformNt;
  return TRUE;
}

DWORD GetCurrentProcessId() { return static_cast<DWORD>(getpid()); }

// As on Windows, a value that means "this process" and is no real handle.
HANDLE GetCurrentProcess() { return INVALID_HANDLE_VALUE; }
