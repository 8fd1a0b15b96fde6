// The stack that parser, writer and document stand on.
#include "settings/rapidjson.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using Stack = rapidjson::internal::Stack<temvar::BoundedAllocator<1000>>;

TEST(SettingsMemory, GrowsToItsLimitAndRefusesCountsThatWrap) {
  Stack stack(nullptr, 16);
  size_t count = 0;
  const auto fill = [&] {
    for (;; ++count) *stack.Push<uint64_t>() = count;
  };
  EXPECT_THROW(fill(), std::bad_alloc);
  EXPECT_EQ(stack.GetSize(), count * sizeof(uint64_t));
  EXPECT_LE(stack.GetCapacity(), 1000u);
  for (const size_t wrong : {SIZE_MAX, SIZE_MAX / 2, SIZE_MAX / 8 + 1, SIZE_MAX / 8 - 9}) {
    EXPECT_THROW(stack.Push<uint64_t>(wrong), std::bad_alloc) << wrong;
  }
  for (size_t left = count; left > 0; --left) EXPECT_EQ(*stack.Pop<uint64_t>(1), left - 1);
}

}  // namespace
