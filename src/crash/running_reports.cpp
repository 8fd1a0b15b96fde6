#include "crash/running_reports.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <iterator>
#include <thread>

#include "platform/win32.h"

namespace temvar {
namespace {

constexpr int kMaxDepth = 2;  // Of reports inside each other.
constexpr std::chrono::milliseconds kPause{5};
constexpr int kPauses = 60 * 200;
constexpr int kPausesOfTurn = 30 * 200;

// Numbers of the threads, 0 for a free place.
constinit std::atomic<DWORD> threads[kMaxReports] = {};

// The thread whose turn it is, 0 for none.
constinit std::atomic<DWORD> turn{0};

bool OthersRun() {
  const DWORD self = GetCurrentThreadId();
  return std::any_of(std::begin(threads), std::end(threads), [self](const auto& place) {
    const DWORD thread = place.load();
    return thread != 0 && thread != self;
  });
}

// The process that the tables are about. A child that was forked during a report has its parent's,
// and would wait for threads that it doesn't have.
constinit std::atomic<DWORD> owner{0};

void ForgetParent() {
  const DWORD process = GetCurrentProcessId();
  const DWORD before = owner.exchange(process);
  if (before == process || before == 0) return;
  for (std::atomic<DWORD>& place : threads) place.store(0);
  turn.store(0);
}

size_t TakePlace() {
  ForgetParent();
  for (size_t i = 0; i < kMaxReports; ++i) {
    DWORD free = 0;
    if (threads[i].compare_exchange_strong(free, GetCurrentThreadId())) return i;
  }
  return kMaxReports;
}

}  // namespace

RunningReport::RunningReport() : place_(TakePlace()) {}

RunningReport::~RunningReport() {
  if (place_ < kMaxReports) threads[place_].store(0);
}

bool RunningReport::GoesInCircles() const {
  const DWORD self = GetCurrentThreadId();
  return std::count_if(std::begin(threads), std::end(threads),
                       [self](const auto& place) { return place.load() == self; }) > kMaxDepth;
}

DumpTurn::DumpTurn() {
  const DWORD self = GetCurrentThreadId();
  for (int i = 0; i < kPausesOfTurn && turn.load() != self; ++i) {
    DWORD none = 0;
    held_ = turn.compare_exchange_strong(none, self);
    if (!held_) std::this_thread::sleep_for(kPause);
  }
}

DumpTurn::~DumpTurn() {
  if (held_) turn.store(0);
}

void WaitForOtherReports() {
  for (int i = 0; i < kPauses && OthersRun(); ++i) std::this_thread::sleep_for(kPause);
}

}  // namespace temvar
