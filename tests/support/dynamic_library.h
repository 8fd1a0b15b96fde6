// Loading a library by hand, and what a process holds of the system.
#ifndef TEMVAR_TESTS_SUPPORT_DYNAMIC_LIBRARY_H_
#define TEMVAR_TESTS_SUPPORT_DYNAMIC_LIBRARY_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>

#if defined(_WIN32)
// clang-format off
#include <windows.h>
#include <tlhelp32.h>
// clang-format on
#else
#include <dlfcn.h>
#endif

namespace test {

#if defined(_WIN32)

inline void* Load(const char* file) { return LoadLibraryA(file); }
inline bool Unload(void* library) { return FreeLibrary(static_cast<HMODULE>(library)) != 0; }
inline bool IsLoaded(const char* file) { return GetModuleHandleA(file) != nullptr; }
inline void* Find(void* library, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

inline std::size_t CountThreads() {
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

// Tries each value that a handle can have, for Wine 8 returns 0 from GetProcessHandleCount. Handles
// are multiples of four, and the lowest free one is taken first.
inline std::size_t CountHandles() {
  constexpr std::uintptr_t kHighest = 4 * 1024;
  std::size_t count = 0;
  for (std::uintptr_t value = 4; value <= kHighest; value += 4) {
    DWORD flags = 0;
    if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) ++count;
  }
  return count;
}

#else

inline void* Load(const char* file) { return dlopen(file, RTLD_NOW | RTLD_LOCAL); }
inline bool Unload(void* library) { return dlclose(library) == 0; }
inline bool IsLoaded(const char* file) {
  void* const handle = dlopen(file, RTLD_NOW | RTLD_NOLOAD);
  return handle != nullptr && Unload(handle);
}

inline void* Find(void* library, const char* name) { return dlsym(library, name); }

inline std::size_t CountEntries(const char* folder) {
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

inline std::size_t CountThreads() { return CountEntries("/proc/self/task"); }
inline std::size_t CountHandles() { return CountEntries("/proc/self/fd"); }

#endif

}  // namespace test

#endif  // TEMVAR_TESTS_SUPPORT_DYNAMIC_LIBRARY_H_
