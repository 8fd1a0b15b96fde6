#include "platform/crash_thread.h"

#include "platform/win32.h"

namespace temvar {
namespace {

// The report packs an archive and calls the host on what is left of an overflown stack.
constexpr size_t kKeptStack = 256 * 1024;
// A report took up to 81 KiB to its end, and up to 48 KiB without the archive (32-bit and 64-bit
// Wine 8.0). An overflow in the middle of a report may end the thread alone, with the process
// running on.
constexpr size_t kLeastStack = 64 * 1024;
constexpr size_t kLeastStackOfArchive = 112 * 1024;
constexpr size_t kPageSize = 4096;
// No guard so close below what the thread is using: the system's own way to the handlers.
constexpr size_t kSafeDistance = 64 * 1024;

// The lower end of the calling thread's stack; null if that isn't known.
char* StackBottom() {
  MEMORY_BASIC_INFORMATION stack = {};
  const bool known = VirtualQuery(&stack, &stack, sizeof(stack)) != 0;
  return known ? static_cast<char*>(stack.AllocationBase) : nullptr;
}

size_t BytesAbove(const char* address) {
  const char here = 0;
  return &here > address ? static_cast<size_t>(&here - address) : 0;
}

// Windows keeps the bottom of a stack out of reach until the overflow. Wine 8.0 has all of it in
// reach and guards the last page alone, whatever it was asked to keep: a guard on top of the kept
// part makes it raise the overflow there, with all of that part left.
void GuardKeptStack() {
  char* const bottom = StackBottom();
  if (bottom == nullptr) return;
  char* const guard = bottom + kKeptStack;
  MEMORY_BASIC_INFORMATION page = {};
  if (BytesAbove(guard) < kSafeDistance) return;
  if (VirtualQuery(guard, &page, sizeof(page)) == 0 || page.State != MEM_COMMIT) return;
  DWORD before = 0;
  VirtualProtect(guard, kPageSize, PAGE_READWRITE | PAGE_GUARD, &before);
}

// Opens that guard. Null where there is none: on Windows, on a thread that this library doesn't
// know, and after the overflow, which has opened it.
void* OpenKeptStack(char* bottom) {
  char* const guard = bottom + kKeptStack;
  MEMORY_BASIC_INFORMATION page = {};
  if (VirtualQuery(guard, &page, sizeof(page)) == 0 || page.State != MEM_COMMIT) return nullptr;
  DWORD before = 0;
  if ((page.Protect & PAGE_GUARD) == 0) return nullptr;
  return VirtualProtect(guard, kPageSize, PAGE_READWRITE, &before) ? guard : nullptr;
}

}  // namespace

CrashThreadScope::CrashThreadScope() noexcept { KeepCrashStack(); }

CrashThreadScope::~CrashThreadScope() = default;

void KeepCrashStack() noexcept {
  ULONG size = kKeptStack;
  // Never lowers what the host has asked for: the system keeps the larger of the two.
  if (SetThreadStackGuarantee(&size)) GuardKeptStack();
}

CrashStackUse::CrashStackUse() noexcept {
  char* const bottom = StackBottom();
  if (bottom == nullptr) return;
  isEnough_ = BytesAbove(bottom) >= kLeastStack;
  isEnoughForArchive_ = BytesAbove(bottom) >= kLeastStackOfArchive;
  guard_ = OpenKeptStack(bottom);
}

CrashStackUse::~CrashStackUse() {
  if (guard_ != nullptr) GuardKeptStack();
}

}  // namespace temvar
