#include "crash/minidump_filter.h"

#include <string_view>

#include "temvar/types.h"

namespace temvar {
namespace {

constexpr size_t kMaxFileName = 256;

// The name as the loader spells it; another case is another module.
bool IsNtdll(const WCHAR* path) {
  WCHAR name[kMaxFileName] = {};
  _wsplitpath(path, nullptr, nullptr, name, nullptr);
  return std::basic_string_view<WCHAR>(name) == TMV_WIDE("ntdll");
}

void FilterModule(const WCHAR* path, PMINIDUMP_CALLBACK_OUTPUT output) {
  if ((output->ModuleWriteFlags & ModuleWriteDataSeg) == 0) return;
  if (path == nullptr || !IsNtdll(path)) {
    output->ModuleWriteFlags &=
        ~static_cast<decltype(output->ModuleWriteFlags)>(ModuleWriteDataSeg);
  }
}

}  // namespace

BOOL CALLBACK FilterMinidump(PVOID, PMINIDUMP_CALLBACK_INPUT input,
                             PMINIDUMP_CALLBACK_OUTPUT output) {
  if (input == nullptr || output == nullptr) return FALSE;
  if (input->CallbackType == ModuleCallback) FilterModule(input->Module.FullPath, output);
  return input->CallbackType <= IncludeModuleCallback ? TRUE : FALSE;
}

}  // namespace temvar
