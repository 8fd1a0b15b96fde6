// The basic Win32 types and constants that every topic of the stand-in shares.
#ifndef TEMVAR_PLATFORM_POSIX_TYPES_H_
#define TEMVAR_PLATFORM_POSIX_TYPES_H_

#include <cstddef>
#include <cstdint>

#include "temvar/types.h"

using BOOL = int;
using BYTE = uint8_t;
using WORD = uint16_t;
using DWORD = uint32_t;
using DWORD64 = uint64_t;
using UINT = unsigned int;
using LONG = int32_t;
using LONGLONG = int64_t;
using ULONGLONG = uint64_t;
using HRESULT = int32_t;
using ULONG_PTR = uintptr_t;

using CHAR = char;
using WCHAR = TmvWideChar;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = TmvWideChar*;
using LPCWSTR = const TmvWideChar*;

using PVOID = void*;
using LPVOID = void*;
using LPCVOID = const void*;
using HANDLE = void*;
using HWND = void*;
using HMODULE = void*;
using HINSTANCE = void*;

inline constexpr BOOL TRUE = 1;
inline constexpr BOOL FALSE = 0;

// Windows calls its functions with this convention; elsewhere it is the compiler's default.
#define WINAPI
#define CALLBACK

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<intptr_t>(-1));

struct FILETIME {
  DWORD dwLowDateTime;   // 100-nanosecond ticks since 1601-01-01 UTC, low half.
  DWORD dwHighDateTime;  // The same, high half.
};

struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;      // 1 to 12
  WORD wDayOfWeek;  // 0 is Sunday
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
};

struct SECURITY_ATTRIBUTES;
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

// Error codes that the stand-in reports through GetLastError, as Windows numbers them.
inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_NOT_SAME_DEVICE = 17;
inline constexpr DWORD ERROR_NO_MORE_FILES = 18;
inline constexpr DWORD ERROR_WRITE_FAULT = 29;
inline constexpr DWORD ERROR_READ_FAULT = 30;
inline constexpr DWORD ERROR_GEN_FAILURE = 31;
inline constexpr DWORD ERROR_SHARING_VIOLATION = 32;
inline constexpr DWORD ERROR_HANDLE_EOF = 38;
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;
inline constexpr DWORD ERROR_FILE_EXISTS = 80;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_DISK_FULL = 112;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_INVALID_NAME = 123;
inline constexpr DWORD ERROR_NEGATIVE_SEEK = 131;
inline constexpr DWORD ERROR_DIR_NOT_EMPTY = 145;
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;
inline constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;
inline constexpr DWORD ERROR_DIRECTORY = 267;
inline constexpr DWORD ERROR_NO_UNICODE_TRANSLATION = 1113;
inline constexpr DWORD ERROR_CANT_RESOLVE_FILENAME = 1921;

// The calling thread's last error. Both are safe in a signal handler.
DWORD GetLastError();
void SetLastError(DWORD code);

#endif  // TEMVAR_PLATFORM_POSIX_TYPES_H_
