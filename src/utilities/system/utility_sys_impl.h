#ifndef TEMVAR_UTILITIES_SYSTEM_UTILITY_SYS_IMPL_H_
#define TEMVAR_UTILITIES_SYSTEM_UTILITY_SYS_IMPL_H_

#include "temvar/utility_sys.h"

namespace temvar {

// The operations are defined by subject in sys_dates.cpp, sys_durations.cpp, sys_folders.cpp and
// sys_version.cpp, the rest in utility_sys_impl.cpp. Nothing is kept from one call to the next: a
// folder, the zone or the clock may change in between.
class TMVUtilitySysImpl final : public TMVUtilitySys {
 public:
  char* GetAppDataPath() override;
  char* GetDocumentsPath() override;
  char* GetTempDirectory() override;
  char* GetDownloadsPath() override;
  char* GetBuildYear() override;
  void FormatTime(int64_t time, char* buffer, size_t size, const char* format) override;
  void FormatCurrentTime(char* buffer, size_t size, const char* format) override;
  bool AlwaysTrue() override;
  char* FormatSecondsSince(int64_t seconds, int32_t baseYear) override;
  char* FormatSecondsSince1970(int64_t seconds) override;
  char* FormatSecondsSince2001(int64_t seconds) override;
  char* FormatLocalTime(int64_t time) override;
  char* FormatDuration(double seconds) override;
  char* UtcTextToLocalText(std::tm* out, const char* text) override;
  char* LocalTextToUtcText(std::tm* out, const char* text) override;
  void SleepMilliseconds(int32_t milliseconds) override;
  bool IsVistaOrLater() override;
  bool IsWindows7OrLater() override;
  bool IsWindows8OrLater() override;
  bool Is64BitSystem() override;
  bool Is64BitProcess() override;
  char* GetExecutableFileName() override;
  char* FormatSeconds(int64_t seconds) override;
  uint32_t GetProcessId() override;
};

}  // namespace temvar

#endif  // TEMVAR_UTILITIES_SYSTEM_UTILITY_SYS_IMPL_H_
