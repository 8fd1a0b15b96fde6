#ifndef TEMVAR_CRASH_REPORT_H_
#define TEMVAR_CRASH_REPORT_H_

#include "platform/win32.h"

namespace temvar {

// Makes one report, on the crashing thread: dump, collect callback, archive, and with `notify` the
// report callback. A step that fails is passed over. Until the dump is on the disk nothing takes
// the heap; what follows does, and may hang or fail where the crash has damaged it.
void MakeReport(EXCEPTION_POINTERS* exception, bool notify);

}  // namespace temvar

#endif  // TEMVAR_CRASH_REPORT_H_
