// Room for a crash report on a thread that has used up its stack.
#ifndef TEMVAR_PLATFORM_CRASH_THREAD_H_
#define TEMVAR_PLATFORM_CRASH_THREAD_H_

namespace temvar {

// Lives on the stack of a thread, from the thread's first statement to its last, and provides the
// stack that the crash handlers run on there, 256 KiB between two guard pages. Without one, a
// thread still reports every crash but its own stack overflow. On Windows, where the handlers run
// on what is left of the thread's stack, it asks the system to keep as much there.
// A thread that has such a stack already, and a large enough one, keeps it. Never throws: without
// memory the thread goes without.
class CrashThreadScope {
 public:
  CrashThreadScope() noexcept;
  ~CrashThreadScope();
  CrashThreadScope(const CrashThreadScope&) = delete;
  CrashThreadScope& operator=(const CrashThreadScope&) = delete;

 private:
  void* stack_ = nullptr;  // What this scope made; null when there is nothing to free.
};

// The same for a thread that this library did not start: the room stays for the life of the
// process. A second call on one thread does nothing.
void KeepCrashStack() noexcept;

// Lives as long as a report of the calling thread, and lets it use the room that is kept: a report
// that begins with a little more than that left would run into the guard in front of it. Safe in a
// crash.
class CrashStackUse {
 public:
  CrashStackUse() noexcept;
  ~CrashStackUse();
  CrashStackUse(const CrashStackUse&) = delete;
  CrashStackUse& operator=(const CrashStackUse&) = delete;

  // False when so little is left that a report would overflow it, which may end the thread and
  // leave the process running.
  bool IsEnough() const { return isEnough_; }

  // False when what is left is enough for a dump and the callbacks, and not for an archive.
  bool IsEnoughForArchive() const { return isEnoughForArchive_; }

 private:
  // The opened page; null when none was in the way, as everywhere but on Windows.
  [[maybe_unused]] void* guard_ = nullptr;
  bool isEnough_ = true;
  bool isEnoughForArchive_ = true;
};

}  // namespace temvar

#endif  // TEMVAR_PLATFORM_CRASH_THREAD_H_
