// Crash handling under the system's names. Signals, and the C++ runtime's call of std::terminate,
// become exceptions:
//
//   SIGSEGV, SIGBUS                        EXCEPTION_ACCESS_VIOLATION       0xC0000005
//   SIGTRAP                                EXCEPTION_BREAKPOINT             0x80000003
//   SIGILL                                 EXCEPTION_ILLEGAL_INSTRUCTION    0xC000001D
//   SIGSYS                                 STATUS_INVALID_SYSTEM_SERVICE    0xC000001C
//   SIGFPE                                 EXCEPTION_INT_DIVIDE_BY_ZERO     0xC0000094
//   an uncaught C++ exception              0xE06D7363, as the Microsoft runtime raises it
//   SIGABRT with a message of the heap     STATUS_HEAP_CORRUPTION           0xC0000374
//   any other SIGABRT                      none: it goes to the handler given to signal()
//
// The vectored handler is asked first, then a signal handler that was there before this library, in
// the place of a structured handler, and where nobody took the signal the unhandled filter: all on
// the crashing thread, in its signal handler and on its alternate stack if it has one
// (platform/crash_thread.h). The process then ends by the default action: the parent sees the true
// signal. posix/crash/signals.h has the rest.
#ifndef TEMVAR_PLATFORM_POSIX_CRASH_EXCEPTIONS_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_EXCEPTIONS_H_

#include "platform/posix/win32_types.h"

// What handlers return.
inline constexpr LONG EXCEPTION_EXECUTE_HANDLER = 1;  // The filter: end the process.
inline constexpr LONG EXCEPTION_CONTINUE_SEARCH = 0;
inline constexpr LONG EXCEPTION_CONTINUE_EXECUTION = -1;

inline constexpr DWORD EXCEPTION_BREAKPOINT = 0x80000003;
inline constexpr DWORD EXCEPTION_ACCESS_VIOLATION = 0xC0000005;
inline constexpr DWORD STATUS_INVALID_SYSTEM_SERVICE = 0xC000001C;
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

// Sets the filter that is asked last. Returns the one before, or null.
LPTOP_LEVEL_EXCEPTION_FILTER SetUnhandledExceptionFilter(LPTOP_LEVEL_EXCEPTION_FILTER filter);

namespace temvar {

// The runtime's signal(), of which number 22, the runtime's SIGABRT, is served alone: the handler
// is called for an abort that is no exception, and then the process ends. It is in a namespace
// because the C library's function has the same name and other numbers. Returns the handler before.
using SignalHandler = void (*)(int);
SignalHandler signal(int number, SignalHandler handler);

namespace posix {

// What the functions above have registered; null where nothing is. Safe in a crash.
struct ExceptionHandlers {
  PVECTORED_EXCEPTION_HANDLER vectored;
  LPTOP_LEVEL_EXCEPTION_FILTER unhandled;
  SignalHandler abort;
};
ExceptionHandlers GetExceptionHandlers();

}  // namespace posix
}  // namespace temvar

// The kernel's number of the calling thread.
DWORD GetCurrentThreadId();

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_EXCEPTIONS_H_
