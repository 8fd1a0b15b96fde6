// What the library asks of threads beyond the standard library.
#ifndef TEMVAR_PLATFORM_THREADS_H_
#define TEMVAR_PLATFORM_THREADS_H_

#include <cstddef>

namespace temvar {

// Names the calling thread, so that a debugger shows which one it is. At most 15 characters.
void SetCurrentThreadName(const char* name);

// The largest stack that is worth asking for: only what is used costs memory, but a 32-bit process
// has few addresses.
inline constexpr size_t kLargestStack = sizeof(void*) == 8 ? size_t{1} << 30 : size_t{1} << 27;

// Calls `function(argument)` on a thread of its own with a stack of at least `size` bytes and waits
// for its end. False, without the call, if the system refuses such a thread. The function must not
// throw.
bool RunOnLargeStack(size_t size, void (*function)(void*), void* argument);

}  // namespace temvar

#endif  // TEMVAR_PLATFORM_THREADS_H_
