#include <windows.h>

#include "ways.h"

// What the heap of the system raises when it finds damage.
void crash_host::DamageHeap() { RaiseException(0xC0000374, EXCEPTION_NONCONTINUABLE, 0, nullptr); }
