// The minidump of this process: one file that LLDB, and the other readers of the format, open.
//
// In this order: header, directory, system, process number, exception with the crashing thread's
// registers, all threads that could be stopped with theirs, thread names, program and libraries
// with build identifiers, /proc/self/maps and /proc/self/status unchanged, and last the memory:
// the stacks and the code around the fault. No environment and no command line: they hold secrets.
//
// 1. Nothing here takes the heap, a lock of the C library, or a thread-local that is made on use.
// 2. Memory of the process is read through system calls, which fail where a load would fault.
// 3. The exception's code is the signal: readers hang on a code that is none. The code that the
//    handlers saw is its first parameter.
#ifndef TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_DUMP_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_DUMP_H_

#include "platform/posix/crash/exceptions.h"

enum MINIDUMP_TYPE { MiniDumpNormal = 0 };

struct MINIDUMP_EXCEPTION_INFORMATION {
  DWORD ThreadId;
  EXCEPTION_POINTERS* ExceptionPointers;
  BOOL ClientPointers;
};
using PMINIDUMP_EXCEPTION_INFORMATION = MINIDUMP_EXCEPTION_INFORMATION*;

struct MINIDUMP_USER_STREAM_INFORMATION;
using PMINIDUMP_USER_STREAM_INFORMATION = MINIDUMP_USER_STREAM_INFORMATION*;

enum MINIDUMP_CALLBACK_TYPE {
  ModuleCallback = 0,
  ThreadCallback = 1,
  ThreadExCallback = 2,
  IncludeThreadCallback = 3,
  IncludeModuleCallback = 4,
  MemoryCallback = 5,
};

enum MODULE_WRITE_FLAGS {
  ModuleWriteModule = 0x1,
  ModuleWriteDataSeg = 0x2,
  ModuleWriteMiscRecord = 0x4,
  ModuleWriteCvRecord = 0x8,
};

struct MINIDUMP_MODULE_CALLBACK {
  WCHAR* FullPath;
  ULONGLONG BaseOfImage;
  DWORD SizeOfImage;
};

struct MINIDUMP_CALLBACK_INPUT {
  DWORD ProcessId;
  HANDLE ProcessHandle;
  DWORD CallbackType;
  MINIDUMP_MODULE_CALLBACK Module;
};
using PMINIDUMP_CALLBACK_INPUT = MINIDUMP_CALLBACK_INPUT*;

struct MINIDUMP_CALLBACK_OUTPUT {
  DWORD ModuleWriteFlags;
};
using PMINIDUMP_CALLBACK_OUTPUT = MINIDUMP_CALLBACK_OUTPUT*;

using MINIDUMP_CALLBACK_ROUTINE = BOOL(CALLBACK*)(PVOID, PMINIDUMP_CALLBACK_INPUT,
                                                  PMINIDUMP_CALLBACK_OUTPUT);

struct MINIDUMP_CALLBACK_INFORMATION {
  MINIDUMP_CALLBACK_ROUTINE CallbackRoutine;
  PVOID CallbackParam;
};
using PMINIDUMP_CALLBACK_INFORMATION = MINIDUMP_CALLBACK_INFORMATION*;

// Writes a minidump of this process to the open file; see the top of this file for what is in it.
// Safe in a signal handler: no heap, no lock of the C library, nothing read that could fault. When
// it returns, the dump is complete and on disk. The callback is asked about each module, which
// stays out when it answers FALSE; data sections are never written, whatever it leaves set. One
// thread at a time may call it. FALSE when the file could not be written.
BOOL MiniDumpWriteDump(HANDLE process, DWORD processId, HANDLE file, MINIDUMP_TYPE type,
                       PMINIDUMP_EXCEPTION_INFORMATION exception,
                       PMINIDUMP_USER_STREAM_INFORMATION userStreams,
                       PMINIDUMP_CALLBACK_INFORMATION callback);

namespace temvar::posix::minidump {

// Writes the dump to the open, empty file `descriptor`, and to the disk. `exception` and `callback`
// may be null. False when not all of it could be written.
bool WriteDump(int descriptor, const MINIDUMP_EXCEPTION_INFORMATION* exception,
               const MINIDUMP_CALLBACK_INFORMATION* callback);

}  // namespace temvar::posix::minidump

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_DUMP_H_
