#ifndef TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_CONTEXT_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_CONTEXT_H_

#include <ucontext.h>

#include <cstdint>

#include "platform/posix/crash/minidump/dump_file.h"

#if !defined(__x86_64__)
#error \
    "The minidump writer knows the registers of 64-bit x86 alone: add a context for this processor"
#endif

namespace temvar::posix::minidump {

// Appends the registers that a signal handler got.
Location AppendContext(DumpFile& file, const ucontext_t& machine);

uint64_t StackPointerOf(const ucontext_t& machine);
uint64_t InstructionPointerOf(const ucontext_t& machine);

}  // namespace temvar::posix::minidump

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_CONTEXT_H_
