#include "platform/crash_clock.h"

#include <gtest/gtest.h>

#include <ctime>

#include "temvar/utility_sys.h"

namespace {

// The ordinary clock and the one for crashes agree, across every change of the zone that lies
// ahead. On Windows there is the ordinary clock alone.
TEST(CrashClock, AgreesWithTheOrdinaryClock) {
  temvar::PrepareCrashTime();
  const int64_t now = std::time(nullptr);
  for (int64_t time = now; time < now + 4 * 365 * 86400LL; time += 1801) {
    char text[32] = {};
    if (!temvar::CrashTimeOf(time, text)) GTEST_SKIP() << "the ordinary clock serves here";
    char expected[32] = {};
    TmvUtilitySys()->FormatTime(time, expected, sizeof(expected), "%Y%m%d%H%M%S");
    ASSERT_STREQ(text, expected) << time;
  }
}

}  // namespace
