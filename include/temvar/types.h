#ifndef TEMVAR_TYPES_H_
#define TEMVAR_TYPES_H_

#include <cstdint>

// One unit of wide text: UTF-16 on every system. On Windows it is the system's own wide character.
#if defined(_WIN32)
using TmvWideChar = wchar_t;
// A literal of wide text: TMV_WIDE("text").
#define TMV_WIDE(text) L##text
#else
using TmvWideChar = char16_t;
// A literal of wide text: TMV_WIDE("text").
#define TMV_WIDE(text) u##text
#endif

#endif  // TEMVAR_TYPES_H_
