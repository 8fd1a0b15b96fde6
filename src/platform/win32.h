// The Win32 and C-runtime surface that the library calls. This is the only header through which any
// code reaches it: on Windows it is the system's headers and nothing else; elsewhere it declares
// just the subset that the library calls, with the same names, types, constants and results, and
// src/platform/posix implements it, one pair of files a topic.
#ifndef TEMVAR_PLATFORM_WIN32_H_
#define TEMVAR_PLATFORM_WIN32_H_

#if defined(_WIN32)

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
// clang-format off
#include <windows.h>
#include <dbghelp.h>
#include <io.h>
#include <objbase.h>
#include <share.h>
#include <shellapi.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <wincrypt.h>
// clang-format on

#else

#include "platform/posix/clock.h"
#include "platform/posix/crash/exceptions.h"
#include "platform/posix/crash/minidump/dump.h"
#include "platform/posix/crypto.h"
#include "platform/posix/errors.h"
#include "platform/posix/files/file_io.h"
#include "platform/posix/files/files.h"
#include "platform/posix/files/find_files.h"
#include "platform/posix/files/streams.h"
#include "platform/posix/shell/shell_folders.h"
#include "platform/posix/shell/shell_open.h"
#include "platform/posix/shell/shell_trees.h"
#include "platform/posix/system.h"
#include "platform/posix/text/text_conversion.h"
#include "platform/posix/text/text_format.h"
#include "platform/posix/win32_types.h"

#endif

#endif  // TEMVAR_PLATFORM_WIN32_H_
