#include "platform/large_stack.h"

#include "platform/win32.h"

namespace temvar {

namespace {

struct Call {
  void (*function)(void*);
  void* argument;
};

DWORD WINAPI Run(void* call) {
  const Call& told = *static_cast<Call*>(call);
  told.function(told.argument);
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
