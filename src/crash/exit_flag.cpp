#include "crash/exit_flag.h"

#include <atomic>

#include "temvar/dbg_report.h"

namespace temvar {
namespace {

constinit bool own_flag = false;
constinit std::atomic<bool*> flag{&own_flag};

// The host's flag is a plain bool, which it may change while another thread crashes.
std::atomic_ref<bool> Flag() {
  return std::atomic_ref<bool>(*flag.load(std::memory_order_acquire));
}

}  // namespace

bool IsExiting() { return Flag().load(std::memory_order_relaxed); }

void SetExiting() { Flag().store(true, std::memory_order_relaxed); }

}  // namespace temvar

void SetExitProgram(bool* flag) {
  temvar::flag.store(flag != nullptr ? flag : &temvar::own_flag, std::memory_order_release);
}
