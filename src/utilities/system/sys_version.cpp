#include "platform/win32.h"
#include "utilities/system/utility_sys_impl.h"

namespace temvar {

namespace {

struct Version {
  DWORD major = 0;
  DWORD minor = 0;
};

// Without a manifest that names newer systems, a process gets at most 6.2 from 8.1 on.
bool GetWindowsVersion(Version& version) {
  OSVERSIONINFOEXA info = {};
  // The system takes the record by its size and refuses one that it doesn't know.
  static_assert(sizeof(info) == 156);
  info.dwOSVersionInfoSize = sizeof(info);
  if (!GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&info))) return false;
  version = {info.dwMajorVersion, info.dwMinorVersion};
  return true;
}

}  // namespace

// A system that can't say its version is taken for a new one in the first two tests, and for an old
// one in the third. Documented, although it looks like a slip.
bool TMVUtilitySysImpl::IsVistaOrLater() {
  Version version;
  return !GetWindowsVersion(version) || version.major > 5;
}

bool TMVUtilitySysImpl::IsWindows7OrLater() {
  Version version;
  return !GetWindowsVersion(version) || version.major > 6 ||
         (version.major == 6 && version.minor != 0);
}

bool TMVUtilitySysImpl::IsWindows8OrLater() {
  Version version;
  return GetWindowsVersion(version) &&
         (version.major > 6 || (version.major == 6 && version.minor > 1));
}

bool TMVUtilitySysImpl::Is64BitSystem() {
  if (Is64BitProcess()) return true;
  using IsWow64ProcessFunction = BOOL(WINAPI*)(HANDLE, BOOL*);
  // Through void (*)(): the look-up's own type can't be cast to another straight.
  const auto found =
      reinterpret_cast<void (*)()>(GetProcAddress(GetModuleHandleA("kernel32"), "IsWow64Process"));
  const auto isWow64Process = reinterpret_cast<IsWow64ProcessFunction>(found);
  if (isWow64Process == nullptr) return false;
  // The call's own success isn't looked at: the preset result is right for its failure.
  BOOL result = FALSE;
  isWow64Process(GetCurrentProcess(), &result);
  return result != FALSE;
}

// Of the product, which is a 32-bit library. 64-bit builds answer the same, as documented.
bool TMVUtilitySysImpl::Is64BitProcess() { return false; }

}  // namespace temvar
