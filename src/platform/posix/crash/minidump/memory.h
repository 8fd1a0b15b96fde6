// Which memory of this process goes into a dump, found by asking the kernel page by page: that
// works without /proc, and costs the same however many mappings there are.
#ifndef TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_MEMORY_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_MEMORY_H_

#include <cstddef>
#include <cstdint>

namespace temvar::posix::minidump {

inline constexpr size_t kPageSize = 4096;

// The part of a stack that belongs into a dump: from the red zone below `stackPointer` up to the
// first page that can't be read, `limit` bytes at most. On an overflown stack the pointer is in or
// below the guard: from the first readable page above it then, if there is one within a megabyte.
// Ends below the arguments and the environment of the program, which the kernel puts at the upper
// end of the first thread's stack. False when there is nothing.
bool FindStack(uint64_t stackPointer, size_t limit, uint64_t& start, size_t& size);

// The readable part of the 256 bytes around an address.
bool FindSurroundings(uint64_t address, uint64_t& start, size_t& size);

// Copies memory of this process. False, without a fault, when not all of it can be read.
bool CopyMemory(uint64_t address, void* to, size_t size);

}  // namespace temvar::posix::minidump

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_MEMORY_H_
