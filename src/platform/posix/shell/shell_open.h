// Opening files, folders and addresses with what the desktop has for them.
#ifndef TEMVAR_PLATFORM_POSIX_SHELL_SHELL_OPEN_H_
#define TEMVAR_PLATFORM_POSIX_SHELL_SHELL_OPEN_H_

#include "platform/posix/win32_types.h"

// Hands `file`, a path or an address with a scheme, to the desktop's opener (xdg-open on PATH)
// without waiting for it; "open" and "explore" mean the same. Parameters and directory must be
// null. The result is above 32 if the opener was started, else a code of an error. No shell reads
// the text, and the opener is nobody's zombie afterwards. The A form takes ANSI text.
inline constexpr int SW_SHOWNORMAL = 1;
HINSTANCE ShellExecuteW(HWND window, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters,
                        LPCWSTR directory, int show);
HINSTANCE ShellExecuteA(HWND window, LPCSTR verb, LPCSTR file, LPCSTR parameters, LPCSTR directory,
                        int show);

#endif  // TEMVAR_PLATFORM_POSIX_SHELL_SHELL_OPEN_H_
