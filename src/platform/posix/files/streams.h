// The streams of the C runtime. errno has the reason for a failure.
#ifndef TEMVAR_PLATFORM_POSIX_FILES_STREAMS_H_
#define TEMVAR_PLATFORM_POSIX_FILES_STREAMS_H_

#include <cstdio>

#include "platform/posix/win32_types.h"

// Opens a stream with the mode of fopen. A directory fails with EACCES, a file that a handle
// without sharing holds with EACCES. Text mode changes no byte. Child programs don't inherit it.
FILE* _wfopen(LPCWSTR path, LPCWSTR mode);

// The same; streams deny nobody whatever `share` says.
inline constexpr int _SH_DENYNO = 0x40;
FILE* _wfsopen(LPCWSTR path, LPCWSTR mode, int share);

// 0 if the file or directory exists and allows `mode`: 0 existence, 2 writing, 4 reading, else -1.
int _waccess(LPCWSTR path, int mode);

int _fseeki64(FILE* stream, int64_t offset, int origin);
int64_t _ftelli64(FILE* stream);
int _fileno(FILE* stream);

// Cuts or extends a file with zeros; 0, or the error number, EINVAL for a negative size.
int _chsize_s(int descriptor, int64_t size);

#endif  // TEMVAR_PLATFORM_POSIX_FILES_STREAMS_H_
