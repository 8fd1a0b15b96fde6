#include "faults/failing_allocations.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <new>

#if defined(_WIN32)
#include "support/import_patch.h"
// The DLLs call the functions of this file, which call those that this program imports.
#define TEMVAR_OURS(name) Our_##name
#define TEMVAR_REAL(name) ::name
#else
#include <dlfcn.h>
#include <pthread.h>
// The functions of this file come before those of a sanitizer and of the C library.
#define TEMVAR_OURS(name) name
#define TEMVAR_REAL(name) (__interceptor_##name != nullptr ? __interceptor_##name : __libc_##name)
#define TEMVAR_DECLARE(name)                                              \
  extern "C" decltype(::name) __interceptor_##name __attribute__((weak)); \
  extern "C" decltype(::name) __libc_##name
TEMVAR_DECLARE(malloc);
TEMVAR_DECLARE(calloc);
TEMVAR_DECLARE(realloc);
TEMVAR_DECLARE(free);
auto GetCurrentThreadId = pthread_self;
#endif

namespace {

std::atomic<int> threadsMet{0};
std::atomic<decltype(GetCurrentThreadId())> armedThread{};
std::atomic<bool> failsLater{false};
std::atomic<int> successesLeft{0};
std::atomic<int> failures{0};
std::atomic<int64_t> liveBlocks{0};

// For a block of this size; 0 for the start of a thread.
bool IsToFail(size_t size) {
  using test::Failing;
  const bool isThis = GetCurrentThreadId() == armedThread;
  if ((threadsMet & (isThis ? Failing::kThisThread : Failing::kOthers)) == 0) return false;
  if (test::isSpared != nullptr && test::isSpared(size)) return false;
  const int left = successesLeft.fetch_sub(1);
  if (left > 0 || (left < 0 && !failsLater)) return false;
  ++failures;
  errno = ENOMEM;
  return true;
}

void* Counted(void* block) {
  if (block != nullptr) ++liveBlocks;
  return block;
}

}  // namespace

namespace test {

Failing::Failing(int successes, bool andLater, Threads threads) {
  successesLeft = successes;
  failsLater = andLater;
  failures = 0;
  armedThread = GetCurrentThreadId();
  threadsMet = threads;
#if !defined(_WIN32)
  // A sanitizer allocates when a thread begins, and expects to succeed.
  if (__interceptor_malloc != nullptr) threadsMet = threads & kThisThread;
#endif
}

Failing::~Failing() { threadsMet = 0; }
int Failing::Count() const { return failures; }
int64_t LiveBlocks() { return liveBlocks; }

}  // namespace test

extern "C" {

void* TEMVAR_OURS(malloc)(size_t size) {
  return IsToFail(size) ? nullptr : Counted(TEMVAR_REAL(malloc)(size));
}

void* TEMVAR_OURS(calloc)(size_t count, size_t size) {
  return IsToFail(count * size) ? nullptr : Counted(TEMVAR_REAL(calloc)(count, size));
}

void* TEMVAR_OURS(realloc)(void* block, size_t size) {
  if (IsToFail(size)) return nullptr;
  void* const moved = TEMVAR_REAL(realloc)(block, size);
  return block == nullptr ? Counted(moved) : moved;
}

void TEMVAR_OURS(free)(void* block) {
  if (block != nullptr) --liveBlocks;
  TEMVAR_REAL(free)(block);
}

char* TEMVAR_OURS(strdup)(const char* text) {
  const size_t size = std::strlen(text) + 1;
  void* const copy = TEMVAR_OURS(malloc)(size);
  return static_cast<char*>(copy == nullptr ? nullptr : std::memcpy(copy, text, size));
}

#if defined(_WIN32)

uintptr_t Our__beginthreadex(void* security, unsigned stack, unsigned(__stdcall* start)(void*),
                             void* argument, unsigned flags, unsigned* id) {
  return IsToFail(0) ? 0 : _beginthreadex(security, stack, start, argument, flags, id);
}

}  // extern "C"

// Before main: the DLLs are there already.
[[maybe_unused]] const bool patched = [] {
  for (const char* module : {"libTemvar.dll", "libstdc++-6.dll"}) {
    test::PatchImport(module, "malloc", Our_malloc);
    test::PatchImport(module, "calloc", Our_calloc);
    test::PatchImport(module, "realloc", Our_realloc);
    test::PatchImport(module, "free", Our_free);
    test::PatchImport(module, "_strdup", Our_strdup);
  }
  return test::PatchImport("libwinpthread-1.dll", "_beginthreadex", Our__beginthreadex) != nullptr;
}();

#else

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                   void* argument) {
  static void* const real = dlsym(RTLD_NEXT, "pthread_create");
  if (IsToFail(0)) return EAGAIN;
  return reinterpret_cast<decltype(&pthread_create)>(real)(thread, attributes, start, argument);
}

}  // extern "C"

// A sanitizer's own would not call the functions above.
void* operator new(size_t size) {
  void* const block = malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new[](size_t size) { return operator new(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return malloc(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return malloc(size); }
void operator delete(void* block) noexcept { free(block); }
void operator delete[](void* block) noexcept { free(block); }
void operator delete(void* block, size_t) noexcept { free(block); }
void operator delete[](void* block, size_t) noexcept { free(block); }

#endif
