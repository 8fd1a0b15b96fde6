// Ways to crash, and what may be wrong with the process that does, for crash_child.
#ifndef TESTS_CRASH_FAULTS_H_
#define TESTS_CRASH_FAULTS_H_

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
// Stops at a breakpoint; calls the system in a way that it forbids.
void StopAtBreakpoint();
void CallForbidden();
// Writes to address 0 with `left` bytes of the stack left. Windows has its handlers there;
// elsewhere does nothing.
void CrashOnSmallStack(size_t left);
// Takes care of access violations, as a handler of the host does: set before Install, and used.
void InstallCatcher();
void RunCaught(const std::string& way);
// Sets the process up for the option of crash_child called `option`, before Install and after it.
// `log` writes a line.
void SetUp(const std::string& option, bool installed, void (*log)(const char* line));
// Forks a process that crashes, and waits for its end; does nothing on Windows.
void ForkAndCrash();

#endif  // TESTS_CRASH_FAULTS_H_
