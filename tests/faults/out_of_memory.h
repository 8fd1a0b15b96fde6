// Runs operations again and again, each time with one more allocation before the one that fails.
#ifndef TESTS_FAULTS_OUT_OF_MEMORY_H_
#define TESTS_FAULTS_OUT_OF_MEMORY_H_

#include <gtest/gtest.h>
#include <temvar/temvar.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "faults/failing_allocations.h"
#include "support/dynamic_library.h"

namespace test {

inline constexpr char kLongText[] =
    "a text that is too long for the room that a string has in itself";

// What an operation returns, as a number that is made without memory. Text and bytes are released.
struct Result {
  template <typename Value, typename = std::enable_if_t<std::is_arithmetic_v<Value>>>
  Result(Value number) : value(static_cast<int64_t>(number)) {}
  template <typename Unit>
  Result(Unit* text) {
    for (const Unit* unit = text; unit != nullptr && *unit != 0; ++unit) Add(*unit);
    TmvUtilityString()->FreeString(text);
  }
  Result(bool isFilled, BinaryDataResult& bytes) {
    if (!isFilled) return;
    for (uint32_t i = 0; i < bytes.Size; ++i) Add(bytes.Data[i]);
    FreeBinayDataResult(&bytes);
  }
  void Add(int64_t unit) { value = (value * 31 + unit) % 1'000'000'007; }

  int64_t value = 0;
};

// What an operation may do when memory is short, besides throwing with nothing changed.
enum Allowances {
  kNever = 1,         // It needs no memory.
  kFalse = 2,         // Its result is false, 0, -1, null or an empty text.
  kSilent = 4,        // It does nothing, and has no result to say so.
  kKeepsPart = 8,     // An exception leaves something changed, as documented,
  kKeepsMemory = 16,  // or memory taken.
};

struct OutOfMemory {
  std::function<void()> setUp = [] {};  // Before each call, and before that of the operation.
  std::function<std::string()> state = [] { return std::string(); };
  Failing::Threads threads = Failing::kAllThreads;
  int failures = 0;  // Points at which memory ran out.
  int thrown = 0;
  int64_t lost = 0;  // Blocks of memory, in one sweep.
  int64_t expected = 0;
  std::string expectedState = {};

  ~OutOfMemory() { std::printf("%d failures, %d with an exception\n", failures, thrown); }

  struct Operation {
    const char* code;
    std::function<Result()> run;
    int allowed = 0;
    std::function<void()> setUp = [] {};
  };

  void Run(const Operation& operation) {
    SCOPED_TRACE(operation.code);
    Prepare(operation);
    expected = operation.run().value;
    expectedState = state();
    size_t handles = 0;
    for (const int sweep : {0, 1, 2}) {
      Prepare(operation);
      const int64_t before = LiveBlocks();
      int successes = 0;
      lost = 0;
      while (successes < 5000 && Fails(operation, successes, sweep != 1)) ++successes;
      Prepare(operation);
      // What caches keep, in the first sweep or for a while, and the objects is not lost.
      lost = std::min(lost, LiveBlocks() - before);
      EXPECT_TRUE(lost <= 0 || sweep == 0) << lost << " blocks of memory are lost";
      if (sweep == 0) handles = CountHandles();
    }
    // Those of threads come and go on Windows.
    EXPECT_TRUE(threads != Failing::kAllThreads || CountHandles() <= handles) << "left open";
  }

  void Prepare(const Operation& operation) const {
    setUp();
    operation.setUp();
  }

  // Whether an allocation has failed. What has changed nothing can be done again.
  bool Fails(const Operation& operation, int successes, bool andLater) {
    SCOPED_TRACE(std::to_string(successes) + (andLater ? " successes, then none" : " successes"));
    Prepare(operation);
    const std::string before = state();
    const int64_t blocks = LiveBlocks();
    int64_t result = 0;
    bool hasThrown = false;
    bool hasFailed = false;
    {
      const Failing failing(successes, andLater, threads);
      try {
        result = operation.run().value;
      } catch (const std::bad_alloc&) {
        hasThrown = true;
      } catch (const std::runtime_error&) {
        hasThrown = true;  // A thread that the system refuses, and what can't be done without it.
      }
      hasFailed = failing.Count() > 0;
    }
    const int64_t kept = LiveBlocks() - blocks;
    const auto allows = [&](int allowance) { return (operation.allowed & allowance) != 0; };
    const std::string after = state();
    failures += hasFailed;
    thrown += hasThrown;
    EXPECT_FALSE(hasFailed && allows(kNever));
    if (!hasThrown && result == expected) {
      EXPECT_TRUE(after == expectedState || allows(kSilent)) << after;
      return hasFailed;
    }
    EXPECT_TRUE(hasFailed);
    if (hasThrown) {
      EXPECT_TRUE(after == before || allows(kKeepsPart)) << before << " became " << after;
    } else {
      EXPECT_TRUE((result == 0 || result == -1) && allows(kFalse)) << result;
    }
    if (!allows(kKeepsPart | kKeepsMemory)) lost += kept;
    if (after == before) {
      EXPECT_EQ(operation.run().value, expected);
      EXPECT_EQ(state(), expectedState);
    }
    return hasFailed;
  }
};

// A row of the table `memory`: calls, of which TRY keeps the result, then the allowances and what
// to set up.
#define TRY(call, ...) memory.Run({#call, [&]() -> test::Result { return call; }, __VA_ARGS__})
#define DO(calls, ...)                \
  memory.Run({#calls,                 \
              [&]() -> test::Result { \
                calls;                \
                return 1;             \
              },                      \
              __VA_ARGS__})

}  // namespace test

#endif  // TESTS_FAULTS_OUT_OF_MEMORY_H_
