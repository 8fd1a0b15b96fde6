#include "platform/crash_thread.h"

#include "platform/win32.h"

namespace temvar {
namespace {

// The report packs an archive and calls the host on what is left of an overflown stack.
constexpr ULONG kGuaranteedStack = 256 * 1024;

}  // namespace

CrashThreadScope::CrashThreadScope() noexcept { KeepCrashStack(); }

CrashThreadScope::~CrashThreadScope() = default;

void KeepCrashStack() noexcept {
  ULONG size = kGuaranteedStack;
  // Never lowers what the host has asked for: the system keeps the larger of the two.
  SetThreadStackGuarantee(&size);
}

}  // namespace temvar
