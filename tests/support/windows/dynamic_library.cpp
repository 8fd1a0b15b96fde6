#include "support/dynamic_library.h"

// clang-format off
#include <windows.h>
#include <tlhelp32.h>
// clang-format on

#include <gtest/gtest.h>

#include <cstdint>

namespace test {

DynamicLibrary::DynamicLibrary(const char* file) : handle_(LoadLibraryA(file)) {
  if (handle_ == nullptr) ADD_FAILURE() << "LoadLibrary: error " << GetLastError();
}

DynamicLibrary::~DynamicLibrary() { EXPECT_TRUE(FreeLibrary(static_cast<HMODULE>(handle_))); }

DynamicLibrary::AnyFunction DynamicLibrary::Find(const char* name) const {
  const FARPROC function = GetProcAddress(static_cast<HMODULE>(handle_), name);
  EXPECT_NE(function, nullptr) << name;
  return reinterpret_cast<AnyFunction>(function);
}

bool IsLoaded(const char* file) { return GetModuleHandleA(file) != nullptr; }

std::size_t CountThreads() {
  std::size_t count = 0;
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  EXPECT_NE(snapshot, INVALID_HANDLE_VALUE);
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof entry;
  for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
    if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++count;
  }
  CloseHandle(snapshot);
  return count;
}

// Tries each value that a handle can have, for Wine 8 gives 0 for GetProcessHandleCount. Handles
// are multiples of four, and the lowest free one is taken first.
std::size_t CountHandles() {
  constexpr std::uintptr_t kHighest = 4 * 4096;
  std::size_t count = 0;
  for (std::uintptr_t value = 4; value <= kHighest; value += 4) {
    DWORD flags = 0;
    if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) ++count;
  }
  return count;
}

}  // namespace test
