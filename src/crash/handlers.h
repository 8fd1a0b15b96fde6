#ifndef TEMVAR_CRASH_HANDLERS_H_
#define TEMVAR_CRASH_HANDLERS_H_

#include "platform/win32.h"

namespace temvar {

// Sees every exception first, whether somebody takes it later or not. Reports an access violation
// without telling the host, since the process may live on; a damaged heap for good. 1 when the exit
// flag is set or the heap is damaged, else 0: execution is never resumed.
LONG CALLBACK VectoredHandler(EXCEPTION_POINTERS* exception);

// Sees what nobody took: reports it, calls the host, and lets the process end without a dialog.
LONG CALLBACK UnhandledFilter(EXCEPTION_POINTERS* exception);

// For the runtime's abort signal: keeps its message away and does nothing else.
void IgnoreAbort(int number);

}  // namespace temvar

#endif  // TEMVAR_CRASH_HANDLERS_H_
