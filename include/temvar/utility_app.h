#ifndef TEMVAR_UTILITY_APP_H_
#define TEMVAR_UTILITY_APP_H_

#include <cstdint>

#include "temvar/export.h"

// Where the host application lives, and what number comes next.
//
// The application directory is that of the process's executable, never that of this library and
// never the current directory. Nothing is tested for existence. With C:\Prod\bin\app.exe the
// install root is C:\Prod\. Paths are UTF-8; a path of 512 units and more comes back cut.
//
// New text belongs to the caller, who releases it with FreeString of TMVUtilityString. Any thread
// may call any operation at any time. Operations that make text or take it throw std::bad_alloc.
class TMVUtilityApp {
 public:
  // New text: the full path of the executable.
  virtual char* GetExecutablePath() = 0;

  // New text: the folder above the application directory, with a backslash at its end.
  virtual char* GetInstallRoot() = 0;

  // New text: the folders Themes\ and Plugins\ of the install root.
  virtual char* GetThemesDirectory() = 0;
  virtual char* GetPluginsDirectory() = 0;

  // New text: the folder of the executable, with a backslash at its end.
  virtual char* GetApplicationDirectory() = 0;

  // The same for a loaded module, which is an HMODULE on Windows and what dlopen gave elsewhere.
  // Null means the executable. An unknown module returns a lone backslash.
  virtual char* GetModuleDirectory(void* module) = 0;

  // Shows a folder in the desktop's file manager, without waiting. A failure is not reported.
  virtual void ExploreFolder(const char* path) = 0;

  // Opens a file or an address with the program that the desktop has for it, without waiting. The
  // target is ANSI text: non-ASCII characters don't arrive as UTF-8. A failure is not reported.
  virtual void OpenWithShell(const char* target) = 0;

  // A number that is unique in this process: day of the month, hour, minute and second, followed by
  // ten digits of a running count. Numbers of different months may coincide. Throws
  // std::system_error when the system refuses the mutex.
  virtual int64_t NewUniqueId() = 0;

  // New text: `prefix` (null for none), "-" and a NewUniqueId.
  virtual char* NewPrefixedId(const char* prefix) = 0;

  // 3, 5, 7 and so on: unique in this process until 32 bits wrap.
  virtual int64_t NextSerial() = 0;

  // The finished share, in thousandths, of a job of `stepCount` steps of `stepSize` units: steps
  // 0 to `stepIndex` - 1 and `done` units of step `stepIndex` are finished. Nothing is clamped.
  // 0 for a job without steps or units.
  virtual int32_t ProgressPerMille(int64_t done, int64_t stepSize, int32_t stepIndex,
                                   int32_t stepCount) = 0;

 protected:
  ~TMVUtilityApp() = default;
};

// The service; the same pointer on each call, valid while the library is loaded.
TMV_API TMVUtilityApp* TmvUtilityApp();

#endif  // TEMVAR_UTILITY_APP_H_
