#ifndef TEMVAR_CRASH_REPORT_H_
#define TEMVAR_CRASH_REPORT_H_

#include "platform/win32.h"

namespace temvar {

// Makes one report, on the crashing thread: dump, collect callback, archive, and with `notify` the
// report callback. A step that fails is passed over (platform/crash_steps.h). Until the dump is on
// the disk nothing takes the heap; the archive is left out where the heap would hang.
void MakeReport(EXCEPTION_POINTERS* exception, bool notify);

// The minidump callback, asked about each module. It keeps dumps small: no module but ntdll may
// bring its data sections. Safe in a crash.
BOOL CALLBACK FilterMinidump(PVOID parameter, PMINIDUMP_CALLBACK_INPUT input,
                             PMINIDUMP_CALLBACK_OUTPUT output);

}  // namespace temvar

#endif  // TEMVAR_CRASH_REPORT_H_
