#ifndef TEMVAR_UTILITIES_APPLICATION_UTILITY_APP_IMPL_H_
#define TEMVAR_UTILITIES_APPLICATION_UTILITY_APP_IMPL_H_

#include "temvar/utility_app.h"

namespace temvar {

// The operations are defined by subject in app_paths.cpp and app_identifiers.cpp, the rest in
// utility_app_impl.cpp. The class has no data; the identifiers' state is in identifier_state.h.
class TMVUtilityAppImpl final : public TMVUtilityApp {
 public:
  char* GetExecutablePath() override;
  char* GetInstallRoot() override;
  char* GetThemesDirectory() override;
  char* GetPluginsDirectory() override;
  char* GetApplicationDirectory() override;
  char* GetModuleDirectory(void* module) override;
  void ExploreFolder(const char* path) override;
  void OpenWithShell(const char* target) override;
  int64_t NewUniqueId() override;
  char* NewPrefixedId(const char* prefix) override;
  int64_t NextSerial() override;
  int32_t ProgressPerMille(int64_t done, int64_t stepSize, int32_t stepIndex,
                           int32_t stepCount) override;
};

}  // namespace temvar

#endif  // TEMVAR_UTILITIES_APPLICATION_UTILITY_APP_IMPL_H_
