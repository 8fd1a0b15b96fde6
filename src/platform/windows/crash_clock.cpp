#include "platform/crash_clock.h"

namespace temvar {

void PrepareCrashTime() {}
bool CrashTime(char (&)[32]) { return false; }
bool CrashTimeOf(int64_t, char (&)[32]) { return false; }

}  // namespace temvar
