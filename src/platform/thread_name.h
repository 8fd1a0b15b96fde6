// Names the calling thread, so that a debugger shows which one it is. At most 15 characters.
#ifndef TEMVAR_PLATFORM_THREAD_NAME_H_
#define TEMVAR_PLATFORM_THREAD_NAME_H_

namespace temvar {

void SetCurrentThreadName(const char* name);

}  // namespace temvar

#endif  // TEMVAR_PLATFORM_THREAD_NAME_H_
