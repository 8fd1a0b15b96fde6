// Crash handling under the system's names. Signals, and the C++ runtime's call of std::terminate,
// become exceptions:
//
//   SIGSEGV, SIGBUS                        EXCEPTION_ACCESS_VIOLATION       0xC0000005
//   SIGILL                                 EXCEPTION_ILLEGAL_INSTRUCTION    0xC000001D
//   SIGFPE                                 EXCEPTION_INT_DIVIDE_BY_ZERO     0xC0000094
//   an uncaught C++ exception              0xE06D7363, as the Microsoft runtime raises it
//   SIGABRT with a message of the heap     STATUS_HEAP_CORRUPTION           0xC0000374
//   any other SIGABRT                      none: it goes to the handler given to signal()
//
// The vectored handler is asked first, the unhandled filter second, both on the crashing thread, in
// its signal handler and on its alternate stack if it has one (platform/crash_thread.h). Unless one
// of them resumes execution, what handled the signal before this library gets its turn, normally
// the default action: the parent sees the true signal. See posix/crash_signals.h for the rest.
#ifndef TEMVAR_PLATFORM_POSIX_CRASH_EXCEPTIONS_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_EXCEPTIONS_H_

#include "platform/posix/win32_types.h"

// What handlers answer.
inline constexpr LONG EXCEPTION_EXECUTE_HANDLER = 1;  // The filter: end the process.
inline constexpr LONG EXCEPTION_CONTINUE_SEARCH = 0;
inline constexpr LONG EXCEPTION_CONTINUE_EXECUTION = -1;

inline constexpr DWORD EXCEPTION_ACCESS_VIOLATION = 0xC0000005;
inline constexpr DWORD EXCEPTION_ILLEGAL_INSTRUCTION = 0xC000001D;
inline constexpr DWORD EXCEPTION_INT_DIVIDE_BY_ZERO = 0xC0000094;
inline constexpr DWORD STATUS_HEAP_CORRUPTION = 0xC0000374;

inline constexpr DWORD EXCEPTION_MAXIMUM_PARAMETERS = 15;

struct EXCEPTION_RECORD {
  DWORD ExceptionCode;
  DWORD ExceptionFlags;
  EXCEPTION_RECORD* ExceptionRecord;
  PVOID ExceptionAddress;  // The instruction that failed.
  DWORD NumberParameters;
  // Access violation: 0 read, 1 write or 8 execute, then the address.
  ULONG_PTR ExceptionInformation[EXCEPTION_MAXIMUM_PARAMETERS];
};

// The state of the thread at the fault, as the signal handler got it.
struct CONTEXT {
  int SignalNumber;
  const void* SignalInfo;      // siginfo_t
  const void* MachineContext;  // ucontext_t
};

struct EXCEPTION_POINTERS {
  EXCEPTION_RECORD* ExceptionRecord;
  CONTEXT* ContextRecord;
};

using PVECTORED_EXCEPTION_HANDLER = LONG(CALLBACK*)(EXCEPTION_POINTERS*);
using LPTOP_LEVEL_EXCEPTION_FILTER = LONG(CALLBACK*)(EXCEPTION_POINTERS*);

// Registers the handler that sees every exception first. There is room for one, which is all that
// the library needs: the result is null when it is taken, else not null.
PVOID AddVectoredExceptionHandler(DWORD first, PVECTORED_EXCEPTION_HANDLER handler);

// Sets the filter that is asked last; gives the one before, or null.
LPTOP_LEVEL_EXCEPTION_FILTER SetUnhandledExceptionFilter(LPTOP_LEVEL_EXCEPTION_FILTER filter);

namespace temvar {

// The runtime's signal(), of which number 22, the runtime's SIGABRT, is served alone: the handler
// is called for an abort that is no exception, and then the process ends. It stands in a namespace
// because the C library's function has the same name and other numbers. Gives the handler before.
using SignalHandler = void (*)(int);
SignalHandler signal(int number, SignalHandler handler);

}  // namespace temvar

// The kernel's number of the calling thread.
DWORD GetCurrentThreadId();

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

// Writes a minidump of this process to the open file; see posix/minidump/dump.h for what is in it.
// Safe in a signal handler: no heap, no lock of the C library, nothing read that could fault. When
// it returns, the dump is complete and on disk. The callback is asked about each module, which
// stays out when it answers FALSE; data sections are never written, whatever it leaves set. One
// thread at a time may call it. FALSE when the file could not be written.
BOOL MiniDumpWriteDump(HANDLE process, DWORD process_id, HANDLE file, MINIDUMP_TYPE type,
                       PMINIDUMP_EXCEPTION_INFORMATION exception,
                       PMINIDUMP_USER_STREAM_INFORMATION user_streams,
                       PMINIDUMP_CALLBACK_INFORMATION callback);

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_EXCEPTIONS_H_
