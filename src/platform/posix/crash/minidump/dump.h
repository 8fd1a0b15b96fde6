// The minidump of this process: one file that LLDB, and the other readers of the format, open.
//
// In this order: header, directory, system, process number, exception with the crashing thread's
// registers, all threads that could be stopped with theirs, thread names, program and libraries
// with build identifiers, /proc/self/maps and /proc/self/status as they stand, and last the memory:
// the stacks and the code around the fault. No environment and no command line: they hold secrets.
//
// 1. Nothing here takes the heap, a lock of the C library, or a thread-local that is made on use.
// 2. Memory of the process is read through system calls, which fail where a load would fault.
// 3. The exception's code is the signal: readers hang on a code that is none. The code that the
//    handlers saw is its first parameter.
#ifndef TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_DUMP_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_DUMP_H_

#include "platform/posix/crash/exceptions.h"

namespace temvar::posix::minidump {

// Writes the dump to the open, empty file `descriptor`, and to the disk. `exception` and `callback`
// may be null. False when not all of it could be written.
bool WriteDump(int descriptor, const MINIDUMP_EXCEPTION_INFORMATION* exception,
               const MINIDUMP_CALLBACK_INFORMATION* callback);

}  // namespace temvar::posix::minidump

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_DUMP_H_
