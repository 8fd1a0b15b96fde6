// Runs a function that recurses deeply where it has the room.
#ifndef TEMVAR_PLATFORM_LARGE_STACK_H_
#define TEMVAR_PLATFORM_LARGE_STACK_H_

#include <cstddef>

namespace temvar {

// The largest stack that is worth asking for: only what is used costs memory, but a 32-bit process
// has few addresses.
inline constexpr size_t kLargestStack = sizeof(void*) == 8 ? size_t{1} << 30 : size_t{1} << 27;

// Calls `function(argument)` on a thread of its own with a stack of at least `size` bytes and waits
// for its end. False, without the call, if the system refuses such a thread. The function must not
// throw.
bool RunOnLargeStack(size_t size, void (*function)(void*), void* argument);

}  // namespace temvar

#endif  // TEMVAR_PLATFORM_LARGE_STACK_H_
