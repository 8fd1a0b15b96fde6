#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "temvar/utility_app.h"
#include "utilities/identifier_state.h"

namespace {

constexpr int64_t kFactor = 10'000'000'000;

// Where the numbers wrap, which no host waits for.
TEST(IdentifierState, CounterGoesBackToZeroBeforeTheLargestNumber) {
  temvar::GetIdentifierState().counter = std::numeric_limits<int32_t>::max() - 2;
  EXPECT_EQ(TmvUtilityApp()->NewUniqueId() % kFactor, 2147483646);
  EXPECT_EQ(TmvUtilityApp()->NewUniqueId() % kFactor, 0);
  EXPECT_EQ(TmvUtilityApp()->NewUniqueId() % kFactor, 1);
}

TEST(IdentifierState, SerialWrapsIn32Bits) {
  temvar::GetIdentifierState().serial = std::numeric_limits<int32_t>::max() - 2;
  EXPECT_EQ(TmvUtilityApp()->NextSerial(), std::numeric_limits<int32_t>::max());
  EXPECT_EQ(TmvUtilityApp()->NextSerial(), std::numeric_limits<int32_t>::min() + 1);
}

}  // namespace
