#include "platform/posix/crash/terminate.h"

#include <cxxabi.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <exception>

namespace temvar::posix {
namespace {

// Its address in a SIGABRT marks the signal as ours.
constinit char mark = 0;
constinit std::terminate_handler handler_before = nullptr;

void OnTerminate() {
  if (abi::__cxa_current_exception_type() != nullptr) {
    siginfo_t info = {};
    info.si_signo = SIGABRT;
    info.si_code = SI_QUEUE;
    info.si_pid = getpid();
    info.si_uid = getuid();
    info.si_value.sival_ptr = &mark;
    syscall(SYS_rt_tgsigqueueinfo, getpid(), syscall(SYS_gettid), SIGABRT, &info);
  }
  if (handler_before != nullptr) handler_before();
  std::abort();
}

}  // namespace

void HookTerminate() {
  static constinit std::atomic<bool> hooked{false};
  const std::terminate_handler before = std::set_terminate(OnTerminate);
  if (!hooked.exchange(true)) handler_before = before;
}

bool IsUncaughtException(const siginfo_t* info) {
  return info->si_code == SI_QUEUE && info->si_pid == getpid() && info->si_value.sival_ptr == &mark;
}

}  // namespace temvar::posix
