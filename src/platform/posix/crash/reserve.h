#ifndef TEMVAR_PLATFORM_POSIX_CRASH_RESERVE_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_RESERVE_H_

namespace temvar::posix {

// Descriptors in reserve, so that a process that has run out of them can still be reported: half of
// them for the dump, half for archive and callbacks. Nobody can pass a freed descriptor to a given
// call, so another thread may be faster; hence several.
//
// Fills the reserve up.
void FillReserve();

// Closes half of the reserve, or the rest of it. Safe in a signal handler.
void ReleaseReserve();

}  // namespace temvar::posix

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_RESERVE_H_
