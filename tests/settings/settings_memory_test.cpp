// The stack that parser, writer and document stand on.
#include "settings/rapidjson.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using Stack = rapidjson::internal::Stack<temvar::BoundedAllocator<1000>>;

TEST(SettingsMemory, GrowsToItsLimitAndKeepsWhatItHolds) {
  Stack stack(nullptr, 16);
  size_t count = 0;
  const auto fill = [&] {
    for (;; ++count) *stack.Push<uint64_t>() = count;
  };
  EXPECT_THROW(fill(), std::bad_alloc);
  EXPECT_EQ(stack.GetSize(), count * sizeof(uint64_t));
  EXPECT_GE(count, 1000 / 3 * 2 / sizeof(uint64_t));
  EXPECT_LE(stack.GetCapacity(), 1000u);
  for (size_t left = count; left > 0; --left) EXPECT_EQ(*stack.Pop<uint64_t>(1), left - 1);
  EXPECT_TRUE(stack.Empty());
  stack.ShrinkToFit();
  EXPECT_EQ(stack.GetCapacity(), 0u);
  EXPECT_EQ(*(*stack.Push<char>() = 'x', stack.Top<char>()), 'x');
}

TEST(SettingsMemory, RefusesCountsThatWrap) {
  Stack stack(nullptr, 16);
  stack.Push<char>(10);
  for (const size_t count : {SIZE_MAX, SIZE_MAX / 2, SIZE_MAX / 8 + 1, SIZE_MAX / 8 - 9}) {
    EXPECT_THROW(stack.Push<uint64_t>(count), std::bad_alloc) << count;
  }
  EXPECT_EQ(stack.GetSize(), 10u);
}

TEST(SettingsMemory, ThrowsBeyondTheLimitOfABlock) {
  temvar::BoundedAllocator<100> heap;
  EXPECT_EQ(heap.Malloc(0), nullptr);
  EXPECT_THROW(heap.Malloc(101), std::bad_alloc);
  void* block = heap.Malloc(10);
  EXPECT_THROW(heap.Realloc(block, 10, 101), std::bad_alloc);
  block = heap.Realloc(block, 10, 100);
  EXPECT_NE(block, nullptr);
  EXPECT_EQ(heap.Realloc(block, 100, 0), nullptr);
}

}  // namespace
