#include "platform/threads.h"

#include "platform/win32.h"

namespace temvar {

// SetThreadDescription came with Windows 10 1607, so it is looked up.
void SetCurrentThreadName(const char* name) {
  using SetDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
  const FARPROC address = GetProcAddress(GetModuleHandleW(L"kernel32"), "SetThreadDescription");
  // A name serves debuggers only: without the function the thread stays nameless.
  if (address == nullptr) return;
  wchar_t wide[16] = {};
  for (int i = 0; i < 15 && name[i] != '\0'; ++i) wide[i] = static_cast<wchar_t>(name[i]);
  reinterpret_cast<SetDescription>(reinterpret_cast<void*>(address))(GetCurrentThread(), wide);
}

namespace {

struct Call {
  void (*function)(void*);
  void* argument;
};

DWORD WINAPI Run(void* call) {
  const Call& typed = *static_cast<Call*>(call);
  typed.function(typed.argument);
  return 0;
}

}  // namespace

bool RunOnLargeStack(size_t size, void (*function)(void*), void* argument) {
  Call call{function, argument};
  // The size is what to reserve, not what to commit.
  const HANDLE thread =
      CreateThread(nullptr, size, Run, &call, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
  if (thread == nullptr) return false;
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
  return true;
}

}  // namespace temvar
