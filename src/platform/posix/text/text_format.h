// Formatting.
#ifndef TEMVAR_PLATFORM_POSIX_TEXT_TEXT_FORMAT_H_
#define TEMVAR_PLATFORM_POSIX_TEXT_TEXT_FORMAT_H_

#include <cstdarg>

#include "platform/posix/win32_types.h"

// printf into narrow text, with the conversions of the C library. _vscprintf returns the length of
// the text without its terminator, _vsnprintf writes at most `capacity` bytes of it, with a
// terminator if that fits; both return -1 for a refused format.
int _vscprintf(const char* format, va_list arguments);
int _vsnprintf(char* target, size_t capacity, const char* format, va_list arguments);

// printf into wide text with the conversions of the Windows runtime: in a wide format %s and %c
// take wide text, %S, %C, %hs and %hc take narrow text, whose bytes become units of the same value;
// the lengths h, hh, l, ll, j, z, t, L, I, I32 and I64 are known. Widths and precisions of texts
// count units. %n and unknown conversions are refused.
//
// _vscwprintf returns the length of the text without its terminator, -1 for a refused format.
// _vsnwprintf writes at most `capacity` units, with a terminator if it fits; its result is the
// length, or -1 for a refused format or a text longer than `capacity`.
int _vscwprintf(const WCHAR* format, va_list arguments);
int _vsnwprintf(WCHAR* target, size_t capacity, const WCHAR* format, va_list arguments);

#endif  // TEMVAR_PLATFORM_POSIX_TEXT_TEXT_FORMAT_H_
