// Conversions between encodings, numbers and paths in wide text.
#ifndef TEMVAR_PLATFORM_POSIX_TEXT_TEXT_CONVERSION_H_
#define TEMVAR_PLATFORM_POSIX_TEXT_TEXT_CONVERSION_H_

#include "platform/posix/win32_types.h"

// Code pages: the system's ANSI code page, which is Windows-1252 here, and UTF-8. No other is
// known.
inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_UTF8 = 65001;

// Flag of MultiByteToWideChar: bytes that are no text make the call fail. Without it each
// ill-formed sequence becomes one U+FFFD.
inline constexpr DWORD MB_ERR_INVALID_CHARS = 8;

// Converts `sourceSize` bytes, or with -1 a whole NUL-terminated text and its terminator, to
// UTF-16. With a capacity of 0 nothing is written. The result is the number of units, written or
// needed; 0 is a failure, which GetLastError reports: ERROR_INVALID_PARAMETER for a null or empty
// source, an unknown code page or a text beyond the range of int, ERROR_NO_UNICODE_TRANSLATION for
// bytes that are no text, ERROR_INSUFFICIENT_BUFFER for a buffer that is too small (its content is
// then undefined). Takes no memory and no lock: safe in a signal handler.
int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int sourceSize, LPWSTR target,
                        int targetCapacity);

// The way back, by the same rules. In UTF-8 an unpaired surrogate becomes U+FFFD; in the ANSI code
// page each unit that it lacks becomes '?'. `flags` must be 0, `defaultChar` and
// `usedDefaultChar` null. Safe in a signal handler.
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR source, int sourceSize, LPSTR target,
                        int targetCapacity, LPCSTR defaultChar, BOOL* usedDefaultChar);

// The number at the start of a wide text: blanks, a sign, decimal digits. 0 without digits, and the
// nearest int for a number beyond its range. A null text returns 0.
int _wtoi(const WCHAR* text);

// Cuts a path into its parts. Each target may be null; else it has room for the 3 (drive) or 256
// (others) units that the path may need, and is cut to that. `fileName` gets the name without its
// extension, `extension` the last dot and what follows it. Slashes and backslashes both separate.
// Safe in a signal handler.
void _wsplitpath(const WCHAR* path, WCHAR* drive, WCHAR* directory, WCHAR* fileName,
                 WCHAR* extension);

#endif  // TEMVAR_PLATFORM_POSIX_TEXT_TEXT_CONVERSION_H_
