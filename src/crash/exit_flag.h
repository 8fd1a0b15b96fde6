#ifndef TEMVAR_CRASH_EXIT_FLAG_H_
#define TEMVAR_CRASH_EXIT_FLAG_H_

namespace temvar {

// The exit flag, through the pointer of this moment. Any thread, and safe in a crash.
bool IsExiting();
void SetExiting();

}  // namespace temvar

#endif  // TEMVAR_CRASH_EXIT_FLAG_H_
