#ifndef TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_THREAD_STREAM_H_
#define TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_THREAD_STREAM_H_

#include <sys/types.h>
#include <ucontext.h>

#include <cstddef>

#include "platform/posix/crash/minidump/dump_file.h"
#include "platform/posix/crash/minidump/stopped_threads.h"

namespace temvar::posix::minidump {

// Writes the threads, their names and their memory: the crashing thread first, with its whole stack
// up to 256 KiB, then the stopped ones with 16 KiB each, then bare numbers.
class ThreadStreams {
 public:
  // `machine` may be null, when there was no fault.
  ThreadStreams(DumpFile& file, pid_t crashed, const ucontext_t* machine,
                const StoppedThreads& others);
  ~ThreadStreams();
  ThreadStreams(const ThreadStreams&) = delete;
  ThreadStreams& operator=(const ThreadStreams&) = delete;

  // Thread list and names, without stacks yet. Returns where the crashing thread's registers are.
  Location WriteThreads();

  // The stacks, and the code around the fault, at the end of the file: the bulk comes last.
  void WriteMemory();

 private:
  pid_t IdOf(size_t index) const;
  const ucontext_t* MachineOf(size_t index) const;
  void WriteNames();
  // Appends memory and enters it in the list. Bytes listed already are cut off: an address that
  // comes twice spoils the list for readers. `range` is what was added; false for nothing.
  bool AddMemory(uint64_t start, size_t size, MemoryRange& range);

  DumpFile& file_;
  const pid_t crashed_;
  const ucontext_t* const machine_;
  const StoppedThreads& others_;
  const size_t count_;
  uint32_t list_ = 0;  // Offset of the thread list.
  // The memory list: a stack for each thread, and the code around the fault.
  MemoryRange* ranges_;
  size_t rangeRoom_;
  uint32_t rangeCount_ = 0;
};

}  // namespace temvar::posix::minidump

#endif  // TEMVAR_PLATFORM_POSIX_CRASH_MINIDUMP_THREAD_STREAM_H_
