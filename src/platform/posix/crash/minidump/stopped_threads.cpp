#include "platform/posix/crash/minidump/stopped_threads.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <new>

namespace temvar::posix::minidump {
namespace {

constexpr int kPatience = 100;  // Pauses of two milliseconds in which no thread stops.
constexpr int kMostPauses = 1000;

// One thread, and where its handler leaves the registers.
struct Slot {
  std::atomic<pid_t> id{0};
  std::atomic<const ucontext_t*> machine{nullptr};
};

// More threads than this need a mapping, which may not be had in a process without memory.
constexpr size_t kReadySlots = 512;
constinit Slot readySlots[kReadySlots];
// Both written before the signals are sent, by the one thread that makes a dump.
constinit std::atomic<Slot*> slots{readySlots};
constinit std::atomic<size_t> slotCount{0};

// Odd while threads are to stay stopped; a stopped thread leaves when it changes.
constinit std::atomic<uint32_t> roundNumber{0};

pid_t ThreadId() { return static_cast<pid_t>(syscall(SYS_gettid)); }

void OnStop(int, siginfo_t*, void* context) {
  const int savedErrno = errno;
  const uint32_t round = roundNumber.load();
  const pid_t id = ThreadId();
  const size_t count = slotCount.load();
  for (size_t i = 0; i < count && round % 2 != 0; ++i) {
    Slot& slot = slots.load()[i];
    if (slot.id.load() != id) continue;
    slot.machine.store(static_cast<const ucontext_t*>(context));
    while (roundNumber.load() == round) {
      syscall(SYS_futex, &roundNumber, FUTEX_WAIT_PRIVATE, round, nullptr, nullptr, 0);
    }
    break;
  }
  errno = savedErrno;
}

struct KernelDirent {  // A record of getdents64.
  uint64_t inode;
  int64_t offset;
  uint16_t length;
  uint8_t type;
  char name[1];
};

pid_t NumberOf(const char* text) {
  pid_t number = 0;
  for (; *text >= '0' && *text <= '9'; ++text) number = number * 10 + (*text - '0');
  return number;
}

// Calls `visit` with the number of each thread but the calling one.
template <typename Visit>
void VisitThreads(const Visit& visit) {
  const int directory = open("/proc/self/task", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory < 0) return;
  alignas(KernelDirent) char buffer[2048];
  const pid_t self = ThreadId();
  for (;;) {
    const long filled = syscall(SYS_getdents64, directory, buffer, sizeof(buffer));
    if (filled <= 0) break;
    for (long at = 0; at < filled;) {
      const auto* entry = reinterpret_cast<const KernelDirent*>(buffer + at);
      const pid_t id = NumberOf(buffer + at + offsetof(KernelDirent, name));
      at += entry->length;
      if (id != 0 && id != self) visit(id);
    }
  }
  close(directory);
}

// Room for `wanted` slots, or for as many as can be had.
size_t MakeSlots(size_t wanted) {
  slotCount.store(0);
  slots.store(readySlots);
  if (wanted <= kReadySlots) return wanted;
  void* const memory = mmap(nullptr, wanted * sizeof(Slot), PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return kReadySlots;
  // Never unmapped: a thread that stops late still looks at it.
  slots.store(new (memory) Slot[wanted]);
  return wanted;
}

}  // namespace

StoppedThreads::StoppedThreads() {
  ListThreads();
  struct sigaction action = {};
  action.sa_sigaction = OnStop;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESTART;
  sigfillset(&action.sa_mask);
  sigaction(kStopSignal, &action, &before_);
  // The next odd number, also in a process that was forked during a dump.
  roundNumber.store((roundNumber.load() + 1) | 1);
  for (size_t i = 0; i < count_; ++i) syscall(SYS_tgkill, getpid(), IdOf(i), kStopSignal);
  WaitForThreads();
}

StoppedThreads::~StoppedThreads() {
  roundNumber.fetch_add(1);
  syscall(SYS_futex, &roundNumber, FUTEX_WAKE_PRIVATE, INT32_MAX, nullptr, nullptr, 0);
  sigaction(kStopSignal, &before_, nullptr);
}

pid_t StoppedThreads::IdOf(size_t index) const { return slots.load()[index].id.load(); }

const ucontext_t* StoppedThreads::MachineOf(size_t index) const {
  return slots.load()[index].machine.load();
}

void StoppedThreads::ListThreads() {
  size_t wanted = 0;
  VisitThreads([&](pid_t) { ++wanted; });
  // Some more: threads may start while they are counted.
  const size_t room = MakeSlots(wanted + wanted / 8 + 16);
  Slot* const made = slots.load();
  VisitThreads([&](pid_t id) {
    if (count_ == room) return;
    made[count_].machine.store(nullptr);
    made[count_].id.store(id);
    ++count_;
  });
  slotCount.store(count_);
}

void StoppedThreads::WaitForThreads() {
  const timespec pause = {0, 2'000'000};
  size_t before = 0;
  int idle = 0;
  for (int i = 0; i < kMostPauses && idle < kPatience; ++i) {
    size_t stopped = 0;
    for (size_t at = 0; at < count_; ++at) stopped += MachineOf(at) != nullptr ? 1 : 0;
    if (stopped == count_) return;
    idle = stopped == before ? idle + 1 : 0;
    before = stopped;
    nanosleep(&pause, nullptr);
  }
}

}  // namespace temvar::posix::minidump
