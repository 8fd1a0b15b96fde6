// The entry point of libTemvar.dll. The library keeps nothing per thread that would have to be set
// up or torn down, so the system need not call it for each thread of the host.
#include "platform/win32.h"

BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(library);
  return TRUE;
}
