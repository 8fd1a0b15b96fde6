#include "crash/faults.h"

#include <temvar/temvar.h>

#include <atomic>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <thread>

#if defined(__clang__)
#define TEST_KEEP_FRAME __attribute__((noinline, optnone))
#else
#define TEST_KEEP_FRAME __attribute__((noinline, optimize("O0")))
#endif

namespace {

using Function = void (*)();

volatile int zero = 0;
volatile int sink = 0;

TEST_KEEP_FRAME void WriteNull() {
  int* volatile nowhere = nullptr;
  *nowhere = 1;
}

TEST_KEEP_FRAME void CallNull() {
  const Function volatile nowhere = nullptr;
  nowhere();
}

TEST_KEEP_FRAME void Divide() { sink = 100 / zero; }

TEST_KEEP_FRAME void RunIllegal() { __builtin_trap(); }

TEST_KEEP_FRAME int Overflow(int depth) {
  volatile char frame[1024];
  frame[0] = static_cast<char>(depth);
  return zero == 0 ? Overflow(depth + 1) + frame[0] : 0;
}

TEST_KEEP_FRAME void OverflowStack() { sink = Overflow(0); }

TEST_KEEP_FRAME void ThrowUncaught() { throw std::runtime_error("nobody catches this"); }

// On a worker of the pool, in the middle of a task.
void CrashOnWorker(Function fault) {
  RkTaskFunc* const func = CreateRkTaskFunc();
  static Function in_task = nullptr;
  in_task = fault;
  func->Bind(
      nullptr, [](RkTask*, RkTaskData*) { in_task(); }, nullptr);
  TmvTaskPool()->Start(2);
  TmvTaskPool()->AddFunc(func);
  std::this_thread::sleep_for(std::chrono::minutes(2));
}

void CrashOnTwoThreads() {
  static std::atomic<int> ready{0};
  const auto crash = [] {
    ++ready;
    while (ready.load() < 2) {
    }
    WriteNull();
  };
  std::thread first(crash);
  std::thread second(crash);
  first.join();
  second.join();
}

// On a thread that the library knows nothing of.
void OverflowThread() { std::thread(OverflowStack).join(); }

TEST_KEEP_FRAME void CallFault(const std::string& way) {
  if (way == "null-write") WriteNull();
  if (way == "null-call") CallNull();
  if (way == "division") Divide();
  if (way == "illegal") RunIllegal();
  if (way == "stack-overflow") OverflowStack();
  if (way == "abort") std::abort();
  if (way == "exception") ThrowUncaught();
  if (way == "terminate") std::terminate();
  if (way == "heap-corruption") DamageHeap();
  if (way == "heap-locked") CrashUnderHeapLock();
  if (way == "worker") CrashOnWorker(WriteNull);
  if (way == "worker-overflow") CrashOnWorker(OverflowStack);
  if (way == "two-threads") CrashOnTwoThreads();
  if (way == "thread-overflow") OverflowThread();
}

}  // namespace

void CrashBy(const std::string& way) { CallFault(way); }

const void* FaultFunction(const std::string& way) {
  if (way == "division") return reinterpret_cast<const void*>(&Divide);
  if (way == "illegal") return reinterpret_cast<const void*>(&RunIllegal);
  if (way == "stack-overflow" || way == "worker-overflow") {
    return reinterpret_cast<const void*>(&Overflow);
  }
  if (way == "null-write" || way == "worker" || way == "two-threads") {
    return reinterpret_cast<const void*>(&WriteNull);
  }
  return nullptr;
}

const void* CallerFunction() { return reinterpret_cast<const void*>(&CallFault); }
