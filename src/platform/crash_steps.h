// The steps of a crash report that may fail where the process is damaged: its files, the use of the
// heap, and the host's callbacks. None of them takes the rest of the report down.
#ifndef TEMVAR_PLATFORM_CRASH_STEPS_H_
#define TEMVAR_PLATFORM_CRASH_STEPS_H_

#include <cstddef>

#include "platform/win32.h"
#include "temvar/types.h"

namespace temvar {

// SIGABRT of the Windows runtime, which signal() takes on every system.
inline constexpr int kAbortSignal = 22;

// Makes ready what can't be had in a crash: descriptors in reserve, and this library in memory to
// the end of the process, since handlers that lead into unmapped code would end it. Call it before
// a crash can happen. Never fails: what can't be had is done without.
void PrepareCrashSteps() noexcept;

// Creates the file of a dump, or empties it. Elsewhere than on Windows nobody else may read it, and
// what has the name already is removed, so that nothing is written through a link.
// INVALID_HANDLE_VALUE on failure. Safe in a crash.
HANDLE CreateDumpFile(const TmvWideChar* path) noexcept;

// The same for an archive, which its writer opens by name later. False when the name is taken by
// something that can't be removed: nothing may be written there. Safe in a crash.
bool PrepareArchiveFile(const TmvWideChar* path) noexcept;

// Whether `path` is a file of its own: no link leads to it from the directory whose path makes up
// its first `directoryLength` units, and reading it can't wait for anybody (a FIFO).
bool IsPlainFile(const TmvWideChar* path, size_t directoryLength);

// Called when the dump is on disk, before the first step. False when the crashed code holds the
// lock of the heap, which isn't recursive on Linux: what uses the heap would hang. From then on
// each step has five seconds. On Windows that lock is recursive: always true.
bool HeapServesInCrash() noexcept;

// Where the heap doesn't serve: packs the plain files of a directory, but for archives, into an
// archive that PrepareArchiveFile has made, without the heap and uncompressed. Safe in a crash.
void PackWithoutHeap(const TmvWideChar* directory, const TmvWideChar* archive) noexcept;

// Runs one step. False when it ended early: by an exception, and elsewhere than on Windows also by
// a fault, an abort, or because its time was over, a minute for all steps together and then five
// seconds for each that is left. Its frames are then left without destructors.
bool RunCrashStep(void (*step)(void*), void* argument) noexcept;

// The same for a function object.
template <typename Step>
bool RunCrashStep(Step step) noexcept {
  return RunCrashStep([](void* argument) { (*static_cast<Step*>(argument))(); }, &step);
}

}  // namespace temvar

#endif  // TEMVAR_PLATFORM_CRASH_STEPS_H_
