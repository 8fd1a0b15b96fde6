#include <chrono>
#include <string>
#include <string_view>
#include <thread>

#include "platform/win32.h"
#include "temvar/utility_app.h"
#include "temvar/utility_file.h"
#include "utilities/string/text.h"
#include "utilities/system/utility_sys_impl.h"

namespace temvar {

namespace {

constinit TMVUtilitySysImpl instance;

// Set by the compiler, in the form "Oct 15 2025". For a reproducible build set SOURCE_DATE_EPOCH,
// which GCC from version 7 and clang from version 16 take for it.
constexpr std::string_view kBuildDate = __DATE__;

}  // namespace

char* TMVUtilitySysImpl::GetBuildYear() {
  const size_t blank = kBuildDate.rfind(' ');
  if (blank == std::string_view::npos) return NewBlock<char>(1);
  return NewNarrowText(kBuildDate.substr(blank + 1));
}

bool TMVUtilitySysImpl::AlwaysTrue() { return true; }

void TMVUtilitySysImpl::SleepMilliseconds(int32_t milliseconds) {
  using Clock = std::chrono::steady_clock;  // A user who sets the clock must not change the sleep.
  const Clock::time_point end = Clock::now() + std::chrono::milliseconds(milliseconds);
  // Once is not enough: the runtime of mingw was seen (10.0) to wake up a fraction too early.
  for (auto now = Clock::now(); now < end; now = Clock::now()) {
    std::this_thread::sleep_for(end - now);
  }
}

char* TMVUtilitySysImpl::GetExecutableFileName() {
  const NarrowText path(TmvUtilityApp()->GetExecutablePath());
  PathParts parts = TmvUtilityFile()->SplitPath(path.get());
  const NarrowText directory(parts.Directory);
  const NarrowText name(parts.Name);
  const NarrowText extension(parts.Extension);
  std::string file_name = TmvUtilityString()->SafeString(name.get());
  if (extension != nullptr) file_name += extension.get();
  return NewNarrowText(file_name);
}

uint32_t TMVUtilitySysImpl::GetProcessId() { return GetCurrentProcessId(); }

}  // namespace temvar

TMVUtilitySys* TmvUtilitySys() { return &temvar::instance; }
