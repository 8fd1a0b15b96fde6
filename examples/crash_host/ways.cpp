#include "ways.h"

#include <cstdlib>
#include <stdexcept>

#include "job.h"

namespace crash_host {
namespace {

volatile int zero = 0;
volatile int result = 0;

void WriteNull() {
  // Both volatile: an optimising compiler leaves out a write that nobody reads.
  volatile int* volatile nowhere = nullptr;
  *nowhere = 1;
}

void DivideByZero() { result = 100 / zero; }

int Recurse(int depth) {
  volatile char frame[1024];
  frame[0] = static_cast<char>(depth);
  return zero == 0 ? Recurse(depth + 1) + frame[0] : depth;
}

void OverflowStack() { result = Recurse(0); }

void ThrowUncaught() { throw std::runtime_error("nobody catches this"); }

}  // namespace

const std::vector<Way>& AllWays() {
  static const std::vector<Way> ways = {
      {"null-write", "a write to address 0", WriteNull},
      {"stack-overflow", "a stack overflow", OverflowStack},
      {"abort", "abort(), of which no report is made", std::abort},
      {"exception", "an exception that nobody catches", ThrowUncaught},
      {"heap", "a damaged heap", DamageHeap},
      {"division", "a division by zero", DivideByZero},
      {"worker", "a write to address 0 in the middle of a job", [] { RunJob(WriteNull); }},
  };
  return ways;
}

const Way* FindWay(const std::string& name) {
  for (const Way& way : AllWays()) {
    if (way.name == name) return &way;
  }
  return nullptr;
}

}  // namespace crash_host
