#include "platform/posix/crash/minidump/stopped_threads.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>

namespace temvar::posix::minidump {
namespace {

constexpr int kStopSignal = SIGURG;
constexpr int kWaitRounds = 100;  // Of two milliseconds.

struct Slot {
  std::atomic<pid_t> id{0};
  std::atomic<const ucontext_t*> machine{nullptr};
};

constinit Slot slots[StoppedThreads::kMaxThreads];
// Odd while threads are to stand; a standing thread leaves when it changes.
constinit std::atomic<uint32_t> round_number{0};

pid_t ThreadId() { return static_cast<pid_t>(syscall(SYS_gettid)); }

void OnStop(int, siginfo_t*, void* context) {
  const int saved_errno = errno;
  const uint32_t round = round_number.load();
  const pid_t id = ThreadId();
  for (Slot& slot : slots) {
    if (round % 2 == 0) break;  // Too late, or not sent by us.
    if (slot.id.load() != id) continue;
    slot.machine.store(static_cast<const ucontext_t*>(context));
    while (round_number.load() == round) {
      syscall(SYS_futex, &round_number, FUTEX_WAIT_PRIVATE, round, nullptr, nullptr, 0);
    }
    break;
  }
  errno = saved_errno;
}

struct KernelDirent {  // What getdents64 gives.
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

}  // namespace

StoppedThreads::StoppedThreads() {
  ListThreads();
  struct sigaction action = {};
  action.sa_sigaction = OnStop;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESTART;
  sigfillset(&action.sa_mask);
  sigaction(kStopSignal, &action, &before_);
  round_number.fetch_add(1);
  for (size_t i = 0; i < count_; ++i) syscall(SYS_tgkill, getpid(), IdOf(i), kStopSignal);
  WaitForThreads();
}

StoppedThreads::~StoppedThreads() {
  round_number.fetch_add(1);
  syscall(SYS_futex, &round_number, FUTEX_WAKE_PRIVATE, INT32_MAX, nullptr, nullptr, 0);
  // With a default of ignoring it, a signal that comes late does no harm.
  sigaction(kStopSignal, &before_, nullptr);
}

pid_t StoppedThreads::IdOf(size_t index) const { return slots[index].id.load(); }

const ucontext_t* StoppedThreads::MachineOf(size_t index) const {
  return slots[index].machine.load();
}

void StoppedThreads::ListThreads() {
  const int directory = open("/proc/self/task", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory < 0) return;
  alignas(KernelDirent) char buffer[2048];
  const pid_t self = ThreadId();
  for (;;) {
    const long filled = syscall(SYS_getdents64, directory, buffer, sizeof(buffer));
    if (filled <= 0) break;
    for (long at = 0; at < filled;) {
      const auto* entry = reinterpret_cast<const KernelDirent*>(buffer + at);
      at += entry->length;
      const pid_t id = NumberOf(buffer + (at - entry->length) + offsetof(KernelDirent, name));
      if (id == 0 || id == self || count_ == kMaxThreads) continue;
      slots[count_].machine.store(nullptr);
      slots[count_].id.store(id);
      ++count_;
    }
  }
  close(directory);
  for (size_t i = count_; i < kMaxThreads; ++i) slots[i].id.store(0);
}

void StoppedThreads::WaitForThreads() {
  const timespec pause = {0, 2'000'000};
  for (int round = 0; round < kWaitRounds; ++round) {
    size_t standing = 0;
    for (size_t i = 0; i < count_; ++i) standing += MachineOf(i) != nullptr ? 1 : 0;
    if (standing == count_) return;
    nanosleep(&pause, nullptr);
  }
}

}  // namespace temvar::posix::minidump
