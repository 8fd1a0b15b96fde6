#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <setjmp.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <thread>
#include <tuple>

#include "crash/faults.h"

namespace {

void (*foreignLog)(const char*) = nullptr;
sigjmp_buf recovery;

// Handles the signals of a crash by a line in the log and the exit status 42.
void InstallForeignHandler() {
  struct sigaction action = {};
  action.sa_flags = SA_SIGINFO;
  action.sa_sigaction = [](int number, siginfo_t* info, void*) {
    // Only the fault itself has an address, and it is null.
    const bool fault = number == SIGSEGV && info->si_code > 0 && info->si_addr == nullptr;
    foreignLog(fault || number == SIGABRT ? "foreign " : "foreign-wrong ");
    _exit(42);
  };
  sigaction(SIGSEGV, &action, nullptr);
  sigaction(SIGABRT, &action, nullptr);
}

// Looks on and leaves the signal to whoever comes next.
void InstallOnlooker() {
  struct sigaction action = {};
  action.sa_handler = [](int number) {
    foreignLog("onlooker ");
    signal(number, SIG_DFL);
  };
  sigaction(SIGSEGV, &action, nullptr);
}

void BlockSignals() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

void UseUpDescriptors() {
  while (open("/dev/null", O_RDONLY) >= 0) {
  }
}

void LimitFiles() {
  const rlimit limit = {8192, RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &limit);
}

// In a name space of the process's own. Without the rights for that /proc stays.
void HideProc() {
  if (unshare(CLONE_NEWNS) != 0) return;
  mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
  mount("none", "/proc", "tmpfs", 0, nullptr);
}

void StartTimer() {
  signal(SIGALRM, [](int) {});
  const itimerspec often = {{0, 2'000'000}, {0, 2'000'000}};
  timer_t timer = nullptr;
  if (timer_create(CLOCK_MONOTONIC, nullptr, &timer) != 0) std::abort();
  timer_settime(timer, 0, &often, nullptr);
}

void ChangeZone() {
  setenv("TZ", "TST-13:37", 1);
  tzset();
}

void StartThreads() {
  for (int i = 0; i < 600; ++i) {
    std::thread([] { pause(); }).detach();
  }
}

const std::tuple<const char*, bool, void (*)()> kSetUps[] = {
    {"foreign", false, InstallForeignHandler},
    {"foreign-later", true, InstallForeignHandler},
    {"onlooker", false, InstallOnlooker},
    {"signals-blocked", false, BlockSignals},
    {"no-descriptors", true, UseUpDescriptors},
    {"file-limit", true, LimitFiles},
    {"no-proc", true, HideProc},
    {"timer", true, StartTimer},
    {"zone", true, ChangeZone},
    {"many-threads", true, StartThreads},
};

}  // namespace

void DamageHeap() {
  // A block that is freed twice: glibc's free() aborts with a message.
  void* volatile block = std::malloc(2000);
  void* const barrier = std::malloc(2000);
  std::free(block);
  std::free(block);
  std::free(barrier);
}

void CrashUnderHeapLock() {
  // With a second thread in the process glibc takes its locks in earnest.
  std::thread other([] { std::this_thread::sleep_for(std::chrono::minutes(2)); });
  other.detach();
  // A freed block whose back link leads nowhere: the next malloc follows it under its lock.
  // All volatile: an optimising compiler leaves out writes to freed blocks, and blocks without use.
  void* volatile* volatile block = static_cast<void* volatile*>(std::malloc(4000));
  void* const barrier = std::malloc(4000);  // Keeps it apart from the rest of the heap.
  std::free(const_cast<void**>(block));
  block[1] = reinterpret_cast<void*>(0x10);
  void* volatile next = std::malloc(8000);
  std::free(next);
  std::free(barrier);
}

void StopAtBreakpoint() { __asm__ volatile("int3"); }

void CallForbidden() {
  // As the kernel does for a system call that a filter forbids.
  siginfo_t info = {};
  info.si_signo = SIGSYS;
  info.si_code = SI_QUEUE;
  syscall(SYS_rt_tgsigqueueinfo, getpid(), syscall(SYS_gettid), SIGSYS, &info);
}

void CrashOnSmallStack(size_t) {}

void InstallCatcher() {
  signal(SIGSEGV, [](int) { siglongjmp(recovery, 1); });
}

void RunCaught(const std::string& way) {
  if (sigsetjmp(recovery, 1) == 0) CrashBy(way);
}

void SetUp(const std::string& option, bool installed, void (*log)(const char* line)) {
  foreignLog = log;
  for (const auto& [name, afterInstall, setUp] : kSetUps) {
    if (name == option && afterInstall == installed) setUp();
  }
}

void ForkAndCrash() {
  const pid_t child = fork();
  if (child == 0) CrashBy("division");
  waitpid(child, nullptr, 0);
}
