// Stops the other threads of the process for the time of a dump, so that their registers and stacks
// can be written.
#ifndef TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_STOPPED_THREADS_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_STOPPED_THREADS_H_

#include <signal.h>
#include <sys/types.h>
#include <ucontext.h>

#include <cstddef>

namespace temvar::posix::minidump {

// Sent to the threads that are to stop. Its default is to be ignored, so one that comes late does
// no harm.
inline constexpr int kStopSignal = SIGURG;

// Each thread is sent kStopSignal and waits in the handler until this object goes; its registers
// are then on its own stack. A thread that blocks the signal, or doesn't come while a fifth of a
// second passes without any other coming, is listed without registers and runs on. One object at a
// time, and only in a signal handler: threads may hold any lock while they are stopped.
class StoppedThreads {
 public:
  StoppedThreads();
  ~StoppedThreads();
  StoppedThreads(const StoppedThreads&) = delete;
  StoppedThreads& operator=(const StoppedThreads&) = delete;

  size_t size() const { return count_; }
  pid_t IdOf(size_t index) const;
  // Null for a thread that did not stop.
  const ucontext_t* MachineOf(size_t index) const;

 private:
  void ListThreads();
  void WaitForThreads();

  size_t count_ = 0;
  struct sigaction before_ = {};
};

}  // namespace temvar::posix::minidump

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_STOPPED_THREADS_H_
