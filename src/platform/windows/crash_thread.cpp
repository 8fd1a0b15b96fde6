#include "platform/crash_thread.h"

#include "platform/win32.h"

namespace temvar {
namespace {

// The report packs an archive and calls the host on what is left of an overflown stack.
constexpr ULONG kKeptStack = 256 * 1024;
// With this much a report came no further than its dump, and 64-bit not as far (Wine 8.0).
constexpr size_t kLeastStack = 32 * 1024;
constexpr size_t kPageSize = 4096;
// No guard so close below what the thread is using.
constexpr size_t kSafeDistance = 64 * 1024;

// Windows keeps the bottom of a stack out of reach until the overflow. Wine 8.0 has all of it in
// reach and guards the last page alone, whatever it was asked to keep: a guard on top of the kept
// part makes it raise the overflow there, with all of that part left.
void GuardKeptStack() {
  MEMORY_BASIC_INFORMATION stack = {};
  MEMORY_BASIC_INFORMATION page = {};
  if (VirtualQuery(&stack, &stack, sizeof(stack)) == 0) return;
  char* const guard = static_cast<char*>(stack.AllocationBase) + kKeptStack;
  if (reinterpret_cast<char*>(&stack) < guard + kSafeDistance) return;
  if (VirtualQuery(guard, &page, sizeof(page)) == 0 || page.State != MEM_COMMIT) return;
  DWORD before = 0;
  VirtualProtect(guard, kPageSize, PAGE_READWRITE | PAGE_GUARD, &before);
}

}  // namespace

CrashThreadScope::CrashThreadScope() noexcept { KeepCrashStack(); }

CrashThreadScope::~CrashThreadScope() = default;

void KeepCrashStack() noexcept {
  ULONG size = kKeptStack;
  // Never lowers what the host has asked for: the system keeps the larger of the two.
  if (SetThreadStackGuarantee(&size)) GuardKeptStack();
}

bool HasCrashStack() noexcept {
  MEMORY_BASIC_INFORMATION stack = {};
  if (VirtualQuery(&stack, &stack, sizeof(stack)) == 0) return true;
  return reinterpret_cast<char*>(&stack) - static_cast<char*>(stack.AllocationBase) >=
         static_cast<ptrdiff_t>(kLeastStack);
}

}  // namespace temvar
