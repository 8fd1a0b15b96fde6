#include <chrono>
#include <cstring>
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

// The date of this version's build. A fixed text, so that builds are reproducible.
constexpr std::string_view kBuildDate = "Oct 15 2025";

}  // namespace

char* TMVUtilitySysImpl::GetBuildYear() {
  const size_t blank = kBuildDate.rfind(' ');
  if (blank == std::string_view::npos) return NewBlock<char>(1);
  return NewNarrowText(kBuildDate.substr(blank + 1));
}

// Nobody in the library calls it. It keeps its slot, since those after it must not move.
bool TMVUtilitySysImpl::AlwaysTrue() { return true; }

void TMVUtilitySysImpl::SleepMilliseconds(int32_t milliseconds) {
  using Clock = std::chrono::steady_clock;  // A user who sets the clock must not change the sleep.
  // The end is fixed once, so that waking up early or late adds nothing. For 0 and negative values
  // it isn't later than now, and nothing sleeps.
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
  std::string fileName = TmvUtilityString()->SafeString(name.get());
  // An extension that begins in a folder's name is none of the file's.
  if (extension != nullptr && std::strpbrk(extension.get(), "/\\") == nullptr) {
    fileName += extension.get();
  }
  return NewNarrowText(fileName);
}

uint32_t TMVUtilitySysImpl::GetProcessId() { return GetCurrentProcessId(); }

}  // namespace temvar

TMVUtilitySys* TmvUtilitySys() { return &temvar::instance; }
