#include "platform/crash_steps.h"

#include <algorithm>
#include <string_view>

#include "platform/ways.h"

namespace temvar {

void PrepareCrashSteps() noexcept {
  HMODULE library = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                     reinterpret_cast<const WCHAR*>(&PrepareCrashSteps), &library);
}

HANDLE CreateDumpFile(const TmvWideChar* path) noexcept {
  return CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                     nullptr);
}

bool PrepareArchiveFile(const TmvWideChar*) noexcept { return true; }

bool IsPlainFile(const TmvWideChar* path, size_t directoryLength) {
  const std::wstring_view below = std::wstring_view(path).substr(directoryLength);
  const auto isSeparator = [](wchar_t unit) { return unit == L'/' || unit == L'\\'; };
  const auto folders = static_cast<size_t>(std::count_if(below.begin(), below.end(), isSeparator));
  const Way way = LookAlong(path, folders + 1);
  return way.folders == folders && way.kind == ComponentKind::kFile;
}

bool HeapServesInCrash() noexcept { return true; }

// Never called: the heap always serves.
void PackWithoutHeap(const TmvWideChar*, const TmvWideChar*) noexcept {}

bool RunCrashStep(void (*step)(void*), void* argument) noexcept {
  try {
    step(argument);
    return true;
  } catch (...) {
    // What the host throws concerns the host's step alone.
    return false;
  }
}

}  // namespace temvar
