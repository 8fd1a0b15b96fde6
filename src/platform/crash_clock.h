// The time stamp of a crash report, where the ordinary clock can't be asked.
#ifndef TEMVAR_PLATFORM_CRASH_CLOCK_H_
#define TEMVAR_PLATFORM_CRASH_CLOCK_H_

#include <cstddef>
#include <cstdint>

namespace temvar {

// Length of "20250131120000".
inline constexpr size_t kCrashTimeLength = 14;

// Notes the offsets of the local time zone for the years to come. Call it before a crash can
// happen, again if the process changes its zone. Not while another thread may crash.
void PrepareCrashTime();

// Writes the local time, year to second in 14 digits with a terminator, by arithmetic alone: the C
// library's conversion takes a lock, which the crashed thread may hold. False, with nothing
// written, where the system has no such trouble and the ordinary clock serves (Windows).
bool CrashTime(char (&text)[32]);

// The same for a given time, in seconds since 1970.
bool CrashTimeOf(int64_t time, char (&text)[32]);

}  // namespace temvar

#endif  // TEMVAR_PLATFORM_CRASH_CLOCK_H_
