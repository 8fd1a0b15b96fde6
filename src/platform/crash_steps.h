#ifndef TEMVAR_PLATFORM_CRASH_STEPS_H_
#define TEMVAR_PLATFORM_CRASH_STEPS_H_

namespace temvar {

// Called in a crash before the first use of the heap. Where the heap's lock isn't recursive and the
// crashed code holds it, every use hangs: the process then ends after five seconds, by the signal
// of the crash. On Windows that lock is recursive and nothing is done.
void ExpectHeapInCrash();

}  // namespace temvar

#endif  // TEMVAR_PLATFORM_CRASH_STEPS_H_
