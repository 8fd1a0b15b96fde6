#include "platform/posix/crash/terminate.h"

#include <cxxabi.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <exception>

#include "platform/posix/crash/signal_report.h"

namespace temvar::posix {
namespace {

// Its address in a SIGABRT marks the signal as ours.
constinit char mark = 0;
constinit std::terminate_handler handlerBefore = nullptr;

void OnTerminate() {
  if (abi::__cxa_current_exception_type() != nullptr) {
    // Also on a thread that blocks signals: the library knows in time here.
    UnblockCrashSignals();
    siginfo_t info = {};
    info.si_signo = SIGABRT;
    info.si_code = SI_QUEUE;
    info.si_pid = getpid();
    info.si_uid = getuid();
    info.si_value.sival_ptr = &mark;
    syscall(SYS_rt_tgsigqueueinfo, getpid(), syscall(SYS_gettid), SIGABRT, &info);
  }
  if (handlerBefore != nullptr) handlerBefore();
  std::abort();
}

}  // namespace

void HookTerminate() {
  static constinit std::atomic<bool> hooked{false};
  const std::terminate_handler before = std::set_terminate(OnTerminate);
  if (!hooked.exchange(true)) handlerBefore = before;
}

bool IsUncaughtException(const siginfo_t* info) {
  return info->si_code == SI_QUEUE && info->si_pid == getpid() && info->si_value.sival_ptr == &mark;
}

}  // namespace temvar::posix
