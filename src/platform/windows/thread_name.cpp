#include "platform/thread_name.h"

#include "platform/win32.h"

namespace temvar {

// SetThreadDescription came with Windows 10 1607, so it is looked up.
void SetCurrentThreadName(const char* name) {
  using SetDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
  const FARPROC address = GetProcAddress(GetModuleHandleW(L"kernel32"), "SetThreadDescription");
  if (address == nullptr) return;
  wchar_t wide[16] = {};
  for (int i = 0; i < 15 && name[i] != '\0'; ++i) wide[i] = static_cast<wchar_t>(name[i]);
  reinterpret_cast<SetDescription>(reinterpret_cast<void*>(address))(GetCurrentThread(), wide);
}

}  // namespace temvar
