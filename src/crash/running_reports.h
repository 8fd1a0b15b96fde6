// Which threads are making a report, so that none of them ends the process under another.
#ifndef TEMVAR_CRASH_RUNNING_REPORTS_H_
#define TEMVAR_CRASH_RUNNING_REPORTS_H_

#include <cstddef>

namespace temvar {

inline constexpr size_t kMaxReports = 64;  // Reports beyond it are made, but not waited for.

// Lives as long as a report of the calling thread. Safe in a crash.
class RunningReport {
 public:
  RunningReport();
  ~RunningReport();
  RunningReport(const RunningReport&) = delete;
  RunningReport& operator=(const RunningReport&) = delete;

  // A report that crashes is reported, and so is a fault that the host's callback handles. But one
  // that crashes again and again would go on until the thread has no stack left, for minutes:
  // whether this is the third report on this thread, one inside the other.
  bool GoesInCircles() const;

 private:
  size_t place_;
};

// Held by the thread that writes its dump: the system's dump writer is no good at two at a time. A
// turn that is not given back within half a minute is over, and a crash inside a dump is in it.
class DumpTurn {
 public:
  DumpTurn();
  ~DumpTurn();
  DumpTurn(const DumpTurn&) = delete;
  DumpTurn& operator=(const DumpTurn&) = delete;

 private:
  bool held_ = false;
};

// Waits until the reports of the other threads are done, a minute at most: one of them may hang.
void WaitForOtherReports();

}  // namespace temvar

#endif  // TEMVAR_CRASH_RUNNING_REPORTS_H_
