#ifndef TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_MODULE_STREAM_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_MODULE_STREAM_H_

#include "platform/posix/crash/minidump/dump.h"
#include "platform/posix/crash/minidump/dump_file.h"

namespace temvar::posix::minidump {

// The program first, as readers expect, then the libraries. The callback, which may be null, is
// asked about each.
void WriteModuleList(DumpFile& file, const MINIDUMP_CALLBACK_INFORMATION* callback);

}  // namespace temvar::posix::minidump

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_MODULE_STREAM_H_
