#ifndef TEMVAR_CRASH_MINIDUMP_FILTER_H_
#define TEMVAR_CRASH_MINIDUMP_FILTER_H_

#include "platform/win32.h"

namespace temvar {

// Keeps dumps small: no module but ntdll may bring its data sections. The minidump callback, asked
// about each module. Safe in a crash.
BOOL CALLBACK FilterMinidump(PVOID parameter, PMINIDUMP_CALLBACK_INPUT input,
                             PMINIDUMP_CALLBACK_OUTPUT output);

}  // namespace temvar

#endif  // TEMVAR_CRASH_MINIDUMP_FILTER_H_
