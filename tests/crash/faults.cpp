#include "crash/faults.h"

#include <temvar/temvar.h>

#include <atomic>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string_view>
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

TEST_KEEP_FRAME void Overflow() {
  volatile char frame[1024];
  frame[0] = 1;
  if (zero == 0) Overflow();
  sink = frame[0];
}

TEST_KEEP_FRAME void ThrowUncaught() { throw std::runtime_error("nobody catches this"); }

// On a worker of the pool, in the middle of a task.
void CrashOnWorker(Function fault) {
  RkTaskFunc* const func = CreateRkTaskFunc();
  static Function inTask = nullptr;
  inTask = fault;
  func->SetCallback([](RkTask*, RkTaskData*) { inTask(); }, nullptr);
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

const struct {
  const char* name;
  Function crash;
  Function fault = nullptr;
} kWays[] = {
    {"null-write", WriteNull, WriteNull},
    {"null-call", CallNull},
    {"division", Divide, Divide},
    {"illegal", RunIllegal, RunIllegal},
    {"stack-overflow", Overflow, Overflow},
    {"abort", std::abort},
    {"exception", ThrowUncaught},
    {"terminate", std::terminate},
    {"heap-corruption", DamageHeap},
    {"heap-locked", CrashUnderHeapLock},
    {"worker", [] { CrashOnWorker(WriteNull); }, WriteNull},
    {"worker-overflow", [] { CrashOnWorker(Overflow); }, Overflow},
    {"two-threads", CrashOnTwoThreads, WriteNull},
    {"breakpoint", StopAtBreakpoint},
    {"forbidden-call", CallForbidden},
    // On a thread that the library knows nothing of.
    {"thread-overflow", [] { std::thread(Overflow).join(); }},
};

// "stack-left-100": a write to address 0 with 100 KiB of the stack left.
constexpr std::string_view kStackLeft = "stack-left-";

TEST_KEEP_FRAME void CallFault(const std::string& name) {
  if (name.rfind(kStackLeft, 0) == 0) {
    CrashOnSmallStack(1024 * std::stoul(name.substr(kStackLeft.size())));
  }
  for (const auto& way : kWays) {
    if (way.name == name) way.crash();
  }
}

}  // namespace

void CrashBy(const std::string& way) { CallFault(way); }

const void* FaultFunction(const std::string& name) {
  for (const auto& way : kWays) {
    if (way.name == name) return reinterpret_cast<const void*>(way.fault);
  }
  return nullptr;
}
