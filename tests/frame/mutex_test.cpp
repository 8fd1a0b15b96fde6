#include "frame/mutex.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace temvar;

bool Throw() { throw std::runtime_error("no memory for the test"); }

TEST(EventCount, ATestThatThrowsLeavesNoWaiterBehind) {
  EventCount count;
  EXPECT_THROW(count.Await(Throw), std::runtime_error);
  EXPECT_FALSE(count.HasWaiters());
}

TEST(Condition, APredicateThatThrowsLeavesTheMutexToItsGuard) {
  Mutex mutex;
  Condition condition;
  const auto wait = [&] {
    MutexLock lock(mutex);
    condition.Wait(mutex, Throw);
  };
  EXPECT_THROW(wait(), std::runtime_error);
  MutexLock free(mutex);
}

}  // namespace
