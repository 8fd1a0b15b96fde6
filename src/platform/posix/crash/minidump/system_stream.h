#ifndef TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_SYSTEM_STREAM_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_SYSTEM_STREAM_H_

#include "platform/posix/crash/minidump/dump_file.h"

namespace temvar::posix::minidump {

// Processor and system.
void WriteSystemInfo(DumpFile& file);

// The process's number.
void WriteMiscInfo(DumpFile& file);

}  // namespace temvar::posix::minidump

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_SYSTEM_STREAM_H_
