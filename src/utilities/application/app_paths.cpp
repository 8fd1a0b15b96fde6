#include <string>
#include <string_view>

#include "platform/win32.h"
#include "utilities/application/utility_app_impl.h"
#include "utilities/string/text.h"

namespace temvar {

namespace {

// The path of a module, cut by the system at 511 units. `units` stays empty for an unknown module.
struct ModulePath {
  static constexpr DWORD kCapacity = 512;

  explicit ModulePath(void* module) {
    GetModuleFileNameW(static_cast<HMODULE>(module), units, kCapacity);
    // Windows XP leaves a path that it cuts without a terminator.
    units[kCapacity - 1] = 0;
  }

  TmvWideChar units[kCapacity] = {};
};

// Takes the block of `directory`, which an operation has made for its caller.
char* NewJoinedText(char* directory, std::string_view name) {
  const NarrowText owned(directory);
  return NewNarrowText(std::string(directory).append(name));
}

}  // namespace

char* TMVUtilityAppImpl::GetExecutablePath() { return ToUtf8(ModulePath(nullptr).units).release(); }

char* TMVUtilityAppImpl::GetApplicationDirectory() { return GetModuleDirectory(nullptr); }

char* TMVUtilityAppImpl::GetModuleDirectory(void* module) {
  ModulePath path(module);
  // At the root of a drive the system leaves the backslash, so the result ends in two. Documented,
  // and the system takes both for one.
  PathRemoveFileSpecW(path.units);
  const std::basic_string<TmvWideChar> directory(path.units);
  return ToUtf8((directory + TMV_WIDE("\\")).c_str()).release();
}

char* TMVUtilityAppImpl::GetInstallRoot() {
  // By the operation, so that one place says where the application is.
  const NarrowText application(GetApplicationDirectory());
  const WideText wide = ToWide(application.get());
  std::basic_string<TmvWideChar> directory(wide.get());
  if (!directory.empty()) directory.pop_back();
  // npos + 1 is 0: without a backslash nothing remains.
  directory.resize(directory.rfind(TMV_WIDE('\\')) + 1);
  return ToUtf8(directory.c_str()).release();
}

// Neither folder is looked for on the disk: a host asks for the path before it makes the folder.
char* TMVUtilityAppImpl::GetThemesDirectory() {
  return NewJoinedText(GetInstallRoot(), "Themes\\");
}

char* TMVUtilityAppImpl::GetPluginsDirectory() {
  return NewJoinedText(GetInstallRoot(), "Plugins\\");
}

}  // namespace temvar
