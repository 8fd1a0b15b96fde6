#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

#include "utilities/string/text.h"

namespace {

// No runtime can be relied on to format this much: the size by itself.
TEST(FormatBlock, LongestTextNeverWrapsAround) {
  EXPECT_EQ(temvar::FormatBlockUnits<char>(0), 2u);
  EXPECT_EQ(temvar::FormatBlockUnits<TmvWideChar>(INT_MAX), size_t{1} << 31);
  if (sizeof(size_t) == 4) {
    EXPECT_THROW(temvar::FormatBlockUnits<char>(INT_MAX), std::bad_alloc);
  } else {
    EXPECT_EQ(temvar::FormatBlockUnits<char>(INT_MAX), uint64_t{1} << 32);
  }
}

}  // namespace
