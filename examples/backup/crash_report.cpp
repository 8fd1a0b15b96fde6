#include "crash_report.h"

#include <temvar/handles.h>

#include "support/text.h"

namespace backup {

void InstallCrashReport(const std::filesystem::path& folder,
                        void (*notify)(const TmvWideChar* archive)) {
  std::filesystem::create_directories(folder);
  // With a separator at its end, since the names of dumps are put right after it.
  const std::string path = support::Utf8FromPath(folder / "");
  const tmv::WideText wide(TmvUtilityString()->Utf8ToWide(path.c_str()));
  tmv::MakeDbgReport()->Install(wide.c_str(), notify, nullptr);
}

}  // namespace backup
