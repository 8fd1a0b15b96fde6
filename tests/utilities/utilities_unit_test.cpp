// Identifiers, and the size of formatted texts: where numbers wrap that no host waits for.
#include <gmock/gmock.h>
#include <temvar/utility_app.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <thread>
#include <vector>

#include "support/take.h"
#include "utilities/application/identifier_state.h"
#include "utilities/string/text.h"

namespace {

using namespace test;

TMVUtilityApp* const app = TmvUtilityApp();
constexpr int64_t kFactor = 10'000'000'000;

int64_t TimePart(std::time_t time) {
  char text[16];
  std::strftime(text, sizeof(text), "%d%H%M%S", std::localtime(&time));
  return std::atoll(text);
}

// Must be the first use of the process, which it is under CTest.
TEST(Identifiers, FirstOnes) {
  const std::time_t before = std::time(nullptr);
  const int64_t first = app->NewUniqueId();
  const std::time_t after = std::time(nullptr);
  EXPECT_EQ(first % kFactor, 1);
  EXPECT_THAT(first / kFactor, testing::AnyOf(TimePart(before), TimePart(after)));
  EXPECT_EQ(app->NewUniqueId() % kFactor, 2);

  EXPECT_EQ(app->NextSerial(), 3);
  EXPECT_EQ(app->NextSerial(), 5);
  EXPECT_EQ(app->NextSerial(), 7);
}

TEST(Identifiers, PrefixedOnes) {
  const std::pair<const char*, std::string> cases[] = {
      {"job", "job-"}, {nullptr, "-"}, {"\xCE\xB1-", "\xCE\xB1--"}};
  for (const auto& [prefix, start] : cases) {
    const int64_t before = app->NewUniqueId() % kFactor;
    const std::string id = Take(app->NewPrefixedId(prefix));
    ASSERT_EQ(id.substr(0, start.size()), start);
    const std::string number = id.substr(start.size());
    EXPECT_EQ(number, std::to_string(std::atoll(number.c_str())));
    EXPECT_EQ(std::atoll(number.c_str()) % kFactor, before + 1);
  }
}

TEST(Identifiers, UniqueOnManyThreads) {
  constexpr size_t kThreads = 8;
  constexpr size_t kEach = 2000;
  std::vector<int64_t> ids[kThreads];
  std::vector<int64_t> serials[kThreads];
  std::vector<std::thread> threads;
  for (size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      for (size_t n = 0; n < kEach; ++n) {
        ids[i].push_back(app->NewUniqueId() % kFactor);
        serials[i].push_back(app->NextSerial());
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const auto* lists : {&ids, &serials}) {
    std::vector<int64_t> all;
    for (const auto& list : *lists) {
      EXPECT_TRUE(std::is_sorted(list.begin(), list.end()));
      all.insert(all.end(), list.begin(), list.end());
    }
    std::sort(all.begin(), all.end());
    EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
    const int64_t step = lists == &ids ? 1 : 2;
    EXPECT_EQ(all.back() - all.front(), static_cast<int64_t>(kThreads * kEach - 1) * step);
  }
}

// Where the numbers wrap, which no host waits for.
TEST(Identifiers, CounterGoesBackToZeroBeforeTheLargestNumberAndSerialWraps) {
  temvar::GetIdentifierState().counter = std::numeric_limits<int32_t>::max() - 2;
  for (const int64_t counter : {2147483646, 0, 1}) {
    EXPECT_EQ(app->NewUniqueId() % kFactor, counter);
  }
  temvar::GetIdentifierState().serial = std::numeric_limits<int32_t>::max() - 2;
  EXPECT_EQ(app->NextSerial(), std::numeric_limits<int32_t>::max());
  EXPECT_EQ(app->NextSerial(), std::numeric_limits<int32_t>::min() + 1);
}

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
