#include "platform/posix/crash/watchdog.h"

#include <pthread.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <ctime>

#include "platform/crash_steps.h"

namespace temvar::posix {
namespace {

constexpr size_t kMaxReports = 64;

// Kernel numbers of the threads inside a report, 0 for a free place.
constinit std::array<std::atomic<long>, kMaxReports> threads{};

constexpr unsigned kReportSeconds = 60;
constexpr unsigned kHeapSeconds = 5;
// Larger than what glibc keeps for each thread without a lock.
constexpr size_t kProbeSize = 16 * 1024;

constinit std::atomic<int> watched{0};
constinit std::atomic<int> signal_of_watchdog{0};
constinit struct sigaction alarm_before = {};

long ThreadId() { return syscall(SYS_gettid); }

void SleepTenMilliseconds() {
  const timespec pause = {0, 10'000'000};
  nanosleep(&pause, nullptr);
}

bool TakePlace(long thread) {
  for (std::atomic<long>& place : threads) {
    long free = 0;
    if (place.compare_exchange_strong(free, thread)) return true;
  }
  return false;
}

void OnAlarm(int) { DieOf(signal_of_watchdog.load()); }

}  // namespace

bool EnterReport() {
  const long thread = ThreadId();
  for (const std::atomic<long>& place : threads) {
    if (place.load() == thread) return false;
  }
  while (!TakePlace(thread)) SleepTenMilliseconds();
  return true;
}

void LeaveReport() {
  const long thread = ThreadId();
  for (std::atomic<long>& place : threads) {
    if (place.load() == thread) place.store(0);
  }
}

void ArmWatchdog(int signal_number) {
  signal_of_watchdog.store(signal_number);
  if (watched.fetch_add(1) == 0) {
    struct sigaction action = {};
    action.sa_handler = OnAlarm;
    action.sa_flags = SA_ONSTACK;
    sigaction(SIGALRM, &action, &alarm_before);
  }
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGALRM);
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
  alarm(kReportSeconds);
}

void DisarmWatchdog() {
  if (watched.fetch_sub(1) != 1) return;
  alarm(0);
  sigaction(SIGALRM, &alarm_before, nullptr);
}

void DieOf(int signal_number) {
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  sigaction(signal_number, &action, nullptr);
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, signal_number);
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
  syscall(SYS_tgkill, getpid(), ThreadId(), signal_number);
  _exit(128 + signal_number);
}

}  // namespace temvar::posix

namespace temvar {

void ExpectHeapInCrash() {
  alarm(posix::kHeapSeconds);
  void* volatile block = std::malloc(posix::kProbeSize);
  std::free(block);
  alarm(posix::kReportSeconds);
}

}  // namespace temvar
