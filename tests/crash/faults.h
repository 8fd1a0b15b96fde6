// Ways to crash, for crash_child.
#ifndef TEMVAR_TESTS_CRASH_FAULTS_H_
#define TEMVAR_TESTS_CRASH_FAULTS_H_

#include <string>

// Crashes the process in the way called `way`, one of the table in faults.cpp. Comes back only if
// somebody took care of the fault, or for a way that doesn't exist here.
void CrashBy(const std::string& way);

// The function in which the fault of that way happens; null where it is in the runtime's code.
const void* FaultFunction(const std::string& way);

// The system's part: faults_posix.cpp, faults_windows.cpp.

// Lets the runtime find a damaged heap.
void DamageHeap();
// Crashes inside malloc, under its lock; where that can't be had, does nothing.
void CrashUnderHeapLock();
// Skips faulting instructions from now on, as a structured handler of the host may. Windows only.
void CatchFaults();
// Handles the signals of a crash by a line in the log and the exit status 42. Not on Windows.
void InstallForeignHandler(void (*log)(const char* line));

#endif  // TEMVAR_TESTS_CRASH_FAULTS_H_
