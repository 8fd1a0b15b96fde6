// The basic Win32 types and constants that every subject of the stand-in shares.
#ifndef TEMVAR_PLATFORM_POSIX_WIN32_TYPES_H_
#define TEMVAR_PLATFORM_POSIX_WIN32_TYPES_H_

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

inline constexpr HRESULT S_OK = 0;

inline constexpr size_t MAX_PATH = 260;

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

#endif  // TEMVAR_PLATFORM_POSIX_WIN32_TYPES_H_
